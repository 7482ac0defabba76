// The decimal digits of a double, rounded to where they are wanted.
#pragma once

#include <array>
#include <string_view>

namespace veldt::numerics {

/// No more digits than these are ever significant.
inline constexpr int kSignificantDigits = 15;

/// The number 0.d1d2d3... times 10^point, or what is no finite number.
struct Digits {
    bool negative;
    std::string_view token;  ///< of an infinity or a NaN; empty for a number
    int point = 0;
    int length = 0;  ///< the digits that are wanted, those of a carry included; may be 0
    int stored = 0;  ///< how many of them stand in `text`: all others are 0
    std::array<char, kSignificantDigits + 1> text;

    char At(int index) const { return index < stored ? text[static_cast<unsigned>(index)] : '0'; }
};

/// `count` significant digits, or one more when rounding carries: 9.996 to three gives 1000.
Digits FloatDigits(double x, int count);

/// The digits down to `places` behind the point. 0.06 to one place gives 1 by a carry; a number
/// that has no digit there gives none.
Digits FixedDigits(double x, int places);

}  // namespace veldt::numerics
