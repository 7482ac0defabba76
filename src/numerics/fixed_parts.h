// A fixed value as sign and magnitude, the form in which all rounding and overflow is told.
#pragma once

#include <cstdint>

namespace veldt::numerics {

inline constexpr std::int32_t kFixedOne = 0x00010000;
inline constexpr std::int32_t kFixedLargest = 0x7FFFFFFF;

constexpr std::uint32_t Magnitude(std::int32_t x) {
    const auto bits = static_cast<std::uint32_t>(x);
    return x < 0 ? 0 - bits : bits;
}

constexpr bool SignsDiffer(std::int32_t a, std::int32_t b) {
    return (a ^ b) < 0;
}

/// Wraps for a magnitude above 31 bits.
constexpr std::int32_t Signed(std::uint32_t magnitude, bool negative) {
    return static_cast<std::int32_t>(negative ? 0 - magnitude : magnitude);
}

}  // namespace veldt::numerics
