// Where the library meets the C++ standard library: string views, hashes, streams and formats,
// iterators, owners that dispose, locks that end with their scope, and a memory resource. Headers
// only, and opt-in: veldt20.h doesn't bring them.
#pragma once

#include <veldt20/std_memory.h>
#include <veldt20/std_ranges.h>
#include <veldt20/std_strings.h>
