// XFp but for the rounding mode and the decimal conversions.
#include <veldt20/floating_point.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

#include "numerics/nearest_rounding.h"
#include "numerics/power.h"
#include "numerics/truncation.h"

namespace veldt::numerics {
namespace {

constexpr double kNanSentinel = -12345679012345.0;

/// Where finding a present value gives up: powers of usual growth factors overflow not far beyond.
constexpr double kFewestPeriods = -644.0;

constexpr double kMultiplier = 16807.0;
constexpr double kModulus = 2147483647.0;

/// `scale` times log2(x), one instruction of 64 significant bits in every precision setting.
double ScaledLog2(double x, long double scale) {
    if (!(x > 0)) {
        return kNanSentinel;
    }
    long double result;
    asm("fyl2x" : "=t"(result) : "0"(static_cast<long double>(x)), "u"(scale) : "st(1)");
    return static_cast<double>(result);
}

double PowerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

/// The double in the current rounding mode.
double Delivered(const ScaledParts& number, double sign) {
    const double high = number.parts.high * sign;
    const double low = number.parts.low * sign;
    double sum = high + low;
    // A subnormal result has fewer bits. The power of two whose last place is the result's takes
    // the sum with it, which so is rounded there, once.
    constexpr int kSmallestNormal = -1022;
    if (number.exponent <= kSmallestNormal &&
        std::abs(sum) < PowerOfTwo(kSmallestNormal - number.exponent)) {
        const double rounder = PowerOfTwo(kSmallestNormal - number.exponent) * sign;
        sum = rounder + high;
        sum = (sum + (high - (sum - rounder) + low)) - rounder;
    }
    const int half = number.exponent / 2;
    const double scaled = sum * PowerOfTwo(half) * PowerOfTwo(number.exponent - half);
    return std::copysign(scaled, sign);
}

}  // namespace
}  // namespace veldt::numerics

using namespace veldt::numerics;

double XFp::Inf() {
    return std::numeric_limits<double>::infinity();
}

double XFp::Nan(unsigned char) {
    return kNanSentinel;
}

int XFp::IsNan(double x) {
    return std::isnan(x) || x == kNanSentinel;
}

std::int32_t XFp::Num2LongInt(double x) {
    return LowBitsTruncated(x);
}

double XFp::Num2Double(double x) {
    return x;
}

double XFp::RInt(double x) {
    return std::rint(x);
}

std::int32_t XFp::RIntToL(double x) {
    return LowBitsTruncated(RInt(x));
}

double XFp::Ln(double x) {
    return ScaledLog2(x, std::numbers::ln2_v<long double>);
}

double XFp::Log2(double x) {
    return ScaledLog2(x, 1);
}

// The C libraries' power functions differ between targets in the last bit of up to one result in
// thirty. What they do with zeros and infinities is laid down.
double XFp::XpwrY(double x, double y) {
    if (IsNan(x) || IsNan(y) || (x < 0 && std::trunc(y) != y) || (x == 0 && y < 0)) {
        return kNanSentinel;
    }
    if (x == 0 || std::isinf(x) || std::isinf(y)) {
        return std::pow(x, y);
    }
    ScaledParts power;
    {
        const NearestRounding nearest;
        power = Power(std::abs(x), y);
    }
    const bool negative = x < 0 && std::fmod(y, 2.0) != 0;
    return Delivered(power, negative ? -1 : 1);
}

double XFp::Compound(double r, double n) {
    return IsNan(r) || IsNan(n) ? kNanSentinel : XpwrY(1.0 + r, n);
}

double XFp::Annuity(double r, double n) {
    if (IsNan(r) || IsNan(n)) {
        return kNanSentinel;
    }
    if (r == 0) {
        return n;
    }
    if (n < kFewestPeriods) {
        return kNanSentinel;
    }
    const double discount = XpwrY(1.0 + r, -n);
    return IsNan(discount) ? kNanSentinel : (1.0 - discount) / r;
}

double XFp::Randomx(double* x) {
    return *x = std::fmod(*x * kMultiplier, kModulus);
}

XFp& XFp::operator=(const XFp&) {
    return *this;
}
