// The records of XFp's decimal conversions.
#pragma once

#include <cstdint>

/// How many digits are wanted, and in which style.
struct XNDecForm {
    std::uint8_t style;       ///< 0 is floating style, anything else fixed style
    std::int16_t digitCount;  ///< floating: significant digits; fixed: digits behind the point,
                              ///< below 0 to round to tens, hundreds and so on
};

/// A number in decimal: the digits, read as a whole number, times 10 to the power `exponent`.
struct XNDecimal {
    std::uint8_t sign;         ///< bit 0 is set for a negative number
    std::int16_t exponent;     ///< to the base 10
    unsigned char digits[24];  ///< length-prefixed: ASCII digits, most significant first, or one of
                               ///< the tokens "INF" and "NAN"
};
