// The power of a positive number, with the same bits on every target.
#pragma once

#include "numerics/double_double.h"

namespace veldt::numerics {

/// A number as parts * 2^exponent.
struct ScaledParts {
    DoubleDouble parts;  ///< between 1/2 and 2
    int exponent;        ///< from -1200 to 1200, which stand for all that is further out
};

/// x to the power y within about 2^-70 of itself for finite x > 0 and finite y; what a double
/// holds exactly comes out exactly. Wants rounding to nearest.
ScaledParts Power(double x, double y);

}  // namespace veldt::numerics
