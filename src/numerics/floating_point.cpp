// XFp but for the rounding mode and the decimal conversions.
#include <veldt20/floating_point.h>

#include <cmath>
#include <limits>
#include <numbers>

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

// The power function for doubles has its own algorithm on each target, and up to one result in
// thirty differs in the last bit. The extended one is the same wherever the C library is.
double XFp::XpwrY(double x, double y) {
    if (IsNan(x) || IsNan(y) || (x < 0 && std::trunc(y) != y) || (x == 0 && y < 0)) {
        return kNanSentinel;
    }
    return static_cast<double>(std::pow(static_cast<long double>(x), static_cast<long double>(y)));
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
