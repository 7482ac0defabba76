// Text in its three forms: the reference-counted XCString, the fixed-capacity XStr<N>, and plain
// length-prefixed byte arrays, with the conversions between them and to numbers.
#pragma once

#include <veldt20/strings_pascal.h>
#include <veldt20/strings_xcstring.h>
#include <veldt20/strings_xstring.h>
