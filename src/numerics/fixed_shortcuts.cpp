// The family of fixed-point functions that computes only where a copy or a shift won't do.
#include <veldt20/fixed_point.h>

#include <bit>

#include "numerics/fixed_parts.h"

namespace veldt::numerics {
namespace {

constexpr std::int32_t Negated(std::int32_t x) {
    return Signed(Magnitude(x), x >= 0);
}

/// x times the power of two `exponent` (-31 to 31), cut toward zero, the bits above bit 31 lost.
constexpr std::int32_t Scaled(std::int32_t x, std::int32_t exponent, bool negative) {
    const std::uint32_t magnitude = Magnitude(x);
    return Signed(exponent >= 0 ? magnitude << exponent : magnitude >> -exponent, negative);
}

/// Whether `x` is a power of two or the negation of one.
int TestMagnitude(std::int32_t x, std::int32_t& exponent) {
    return XFixTestForPowerOf2(static_cast<std::int32_t>(Magnitude(x)), exponent);
}

}  // namespace
}  // namespace veldt::numerics

using namespace veldt::numerics;

int XFixTestForPowerOf2(std::int32_t v, std::int32_t& exponent) noexcept {
    const auto bits = static_cast<std::uint32_t>(v);
    if (!std::has_single_bit(bits)) {
        return 0;
    }
    exponent = std::countr_zero(bits) - 16;
    return 1;
}

std::int32_t XFixMultiply(std::int32_t a, std::int32_t b) noexcept {
    if (a == 0 || b == 0) {
        return 0;
    }
    if (a == kFixedOne) {
        return b;
    }
    if (b == kFixedOne) {
        return a;
    }
    if (b == -kFixedOne) {
        return Negated(a);
    }
    if (a == -kFixedOne) {
        return Negated(b);
    }
    std::int32_t exponent;
    if (TestMagnitude(b, exponent)) {
        return Scaled(a, exponent, SignsDiffer(a, b));
    }
    if (TestMagnitude(a, exponent)) {
        return Scaled(b, exponent, SignsDiffer(a, b));
    }
    return FixMul(a, b);
}

std::int32_t XFixDivide(std::int32_t a, std::int32_t b) noexcept {
    if (a == 0) {
        return 0;
    }
    if (b == kFixedOne) {
        return a;
    }
    if (b == -kFixedOne) {
        return Negated(a);
    }
    if (Magnitude(a) == Magnitude(b)) {
        return Signed(kFixedOne, SignsDiffer(a, b));
    }
    std::int32_t exponent;
    if (TestMagnitude(b, exponent)) {
        return Scaled(a, -exponent, SignsDiffer(a, b));
    }
    return FixDiv(a, b);
}
