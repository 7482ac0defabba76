#include "numerics/text_rounding.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <limits>
#include <span>
#include <string_view>

namespace veldt::numerics {
namespace {

constexpr std::uint64_t kInfinityBits = 0x7FF0000000000000;

/// Above 0 if the number is the larger one, below 0 if `x` is, 0 if they are equal. `x` isn't
/// negative.
int Compare(const DecimalNumber& number, double x) {
    if (number.count == 0 || x == 0) {
        return number.count != 0 ? 1 : 0;
    }
    if (x == std::numeric_limits<double>::infinity()) {
        return -1;
    }
    // No double has more digits than these, before and behind the point together.
    constexpr int kMostDigits = 767;
    char buffer[kMostDigits + 16];
    const char* const end = std::to_chars(buffer, buffer + sizeof(buffer), x,
                                          std::chars_format::scientific, kMostDigits - 1)
                                .ptr;
    const char* const exponentSign = buffer + kMostDigits + 2;
    int exponent = 0;
    std::from_chars(exponentSign + 1, end, exponent);
    const int point = (*exponentSign == '-' ? -exponent : exponent) + 1;
    if (number.point != point) {
        return number.point - point;
    }
    buffer[1] = buffer[0];
    const std::string_view exact(buffer + 1, kMostDigits);
    const auto digits = std::span(number.digits).first(number.count);
    if (const auto [ours, theirs] = std::ranges::mismatch(digits, exact); ours != digits.end()) {
        return *ours - *theirs;
    }
    return exact.find_first_not_of('0', digits.size()) == std::string_view::npos ? 0 : -1;
}

}  // namespace

double Directed(double neighbour, const DecimalNumber& number, Direction direction) {
    if (direction == Direction::kNearest) {
        return neighbour;
    }
    // The doubles from 0 to infinity are in the order of their bits.
    auto bits = std::bit_cast<std::uint64_t>(neighbour);
    const int order = Compare(number, neighbour);
    if (order > 0 && direction == Direction::kAway) {
        ++bits;
    } else if (order < 0 && direction == Direction::kTowardZero) {
        --bits;
    }
    return std::bit_cast<double>(bits);
}

double Rounded(BinaryNumber number, Direction direction) {
    constexpr int kFractionBits = 52;
    constexpr int kSmallestExponent = -1074;
    if (number.significand == 0) {
        return 0;
    }
    const int shift = std::countl_zero(number.significand);
    const std::uint64_t significand = number.significand << shift;
    const int exponent = number.exponent - shift;

    // Split after the bits that the result has: `rest` is what a unit in its last place is 2^64 of.
    const int bits = std::clamp(exponent + 64 - kSmallestExponent, -1, kFractionBits + 1);
    std::uint64_t kept = bits > 0 ? significand >> (64 - bits) : 0;
    std::uint64_t rest = bits < 0 ? 1 : significand << bits;
    rest |= number.more;
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
    const bool up = direction == Direction::kNearest
                        ? rest > kHalf || (rest == kHalf && kept % 2 != 0)
                        : rest != 0 && direction == Direction::kAway;
    kept += up;

    // A normal significand's leading bit, and a carry, add themselves to the exponent field.
    const int field = std::max(exponent + 64 - bits - kSmallestExponent, 0);
    if (field < 0x7FE) {
        kept += static_cast<std::uint64_t>(field) << kFractionBits;
    } else {
        kept = direction == Direction::kTowardZero ? kInfinityBits - 1 : kInfinityBits;
    }
    return std::bit_cast<double>(kept);
}

}  // namespace veldt::numerics
