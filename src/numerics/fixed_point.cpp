// The plain family of fixed-point functions.
#include <veldt20/fixed_point.h>

#include <algorithm>

#include "numerics/fixed_parts.h"
#include "numerics/truncation.h"

using namespace veldt::numerics;

std::int32_t FixMul(std::int32_t a, std::int32_t b) noexcept {
    const std::uint32_t m = Magnitude(a);
    const std::uint32_t n = Magnitude(b);
    const bool negative = SignsDiffer(a, b);
    if ((m >> 16) * (n >> 16) > 0x7FFF) {
        return Signed(kFixedLargest, negative);
    }
    const std::uint64_t product = std::uint64_t{m} * n;
    return Signed(static_cast<std::uint32_t>((product + 0x8000) >> 16), negative);
}

// A quotient that is no whole number of steps lies at least 1/|b| of a step off the next one, and
// a double's spacing there is at most 1/32 of that. So the division never rounds up to a step that
// the exact quotient doesn't reach, whatever the rounding mode.
std::int32_t FixDiv(std::int32_t a, std::int32_t b) noexcept {
    if (b == 0) {
        return a < 0 ? INT32_MIN : kFixedLargest;
    }
    return X2Fix(Fix2X(a) / Fix2X(b));
}

std::int32_t FixRatio(std::int16_t a, std::int16_t b) noexcept {
    if (b == 0) {
        return Signed(kFixedLargest, a < 0);
    }
    const bool negative = SignsDiffer(a, b);
    const std::uint32_t quotient = (Magnitude(a) << 16) / Magnitude(b);
    return quotient > kFixedLargest && !negative ? kFixedLargest : Signed(quotient, negative);
}

std::int16_t FixRound(std::int32_t x) noexcept {
    return static_cast<std::int16_t>(Signed((Magnitude(x) + 0x8000) >> 16, x < 0));
}

std::int32_t Fix2Long(std::int32_t x) noexcept {
    return FixRound(x);
}

std::int32_t Long2Fix(std::int32_t x) noexcept {
    return std::clamp(x, -32767, 32767) * kFixedOne;
}

double Fix2X(std::int32_t x) noexcept {
    return x * 0x1p-16;
}

std::int32_t X2Fix(double d) noexcept {
    return LowBitsTruncated(d * 0x1p16);
}
