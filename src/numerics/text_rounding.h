// Rounding of numbers that were read exactly.
#pragma once

#include <array>
#include <cstdint>

namespace veldt::numerics {

/// Which way a magnitude is rounded.
enum class Direction { kNearest, kAway, kTowardZero };

constexpr Direction DirectionOf(std::int16_t mode, bool negative) {
    if (mode == 0) {
        return Direction::kNearest;
    }
    return mode == (negative ? 2 : 1) ? Direction::kAway : Direction::kTowardZero;
}

/// The significand times 2^exponent, and a little more if `more` is set. That needs a significand
/// of at least 61 bits.
struct BinaryNumber {
    std::uint64_t significand;
    int exponent;
    bool more;
};

double Rounded(BinaryNumber number, Direction direction);

/// 0.d1d2d3... times 10^point, where d1 isn't 0; the number 0 has no digits.
struct DecimalNumber {
    std::array<char, 288> digits;
    unsigned count;
    int point;
};

/// The neighbour of the number that lies in the direction, given either of the two. To nearest, the
/// one given.
double Directed(double neighbour, const DecimalNumber& number, Direction direction);

}  // namespace veldt::numerics
