// Numbers: 16.16 fixed point, and the floating-point toolbox XFp with its decimal conversions.
//
// Nothing here allocates, locks or reports: a failure shows in the value alone.
#pragma once

#include <veldt20/decimal_records.h>
#include <veldt20/fixed_point.h>
#include <veldt20/floating_point.h>
