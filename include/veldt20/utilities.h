// Small things that objects are built on, and the byte order of what goes in and out.
#pragma once

#include <veldt20/utilities_byte_order.h>
#include <veldt20/utilities_objects.h>
