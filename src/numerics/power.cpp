// x^y as 2^(y * log2 x). The product reaches 1075, so the logarithm needs eleven bits more than the
// result. Both functions look up the nearest of 64 points in a table and add a short series around
// it, in double-doubles as far as their error would show.
#include "numerics/power.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace veldt::numerics {
namespace {

constexpr int kSteps = 64;

constexpr DoubleDouble kOne = {1, 0};
constexpr DoubleDouble kLn2 = {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

/// The logarithm to base 2 as twice the series of the inverse hyperbolic tangent, for 0.7 < v
/// < 1.5.
constexpr DoubleDouble Log2BySeries(double v) {
    const DoubleDouble s = DoubleDouble{v - 1, 0} / ExactSum(v, 1);
    const DoubleDouble square = s * s;
    DoubleDouble sum = {0, 0};
    for (int n = 47; n >= 1; n -= 2) {
        sum = kOne / DoubleDouble{static_cast<double>(n), 0} + sum * square;
    }
    return sum * s * 2 / kLn2;
}

constexpr DoubleDouble Exp2BySeries(double v) {
    const DoubleDouble t = kLn2 * v;
    DoubleDouble sum = kOne;
    for (int n = 30; n >= 1; --n) {
        sum = kOne + sum * t / DoubleDouble{static_cast<double>(n), 0};
    }
    return sum;
}

/// Around 1 + i/64, or half of that from 1.42 on, so that no argument near 1 is told as the
/// difference of two logarithms.
struct LogPoint {
    double inverse;     ///< about the point's inverse, in 20 bits: times 32 bits it is exact
    DoubleDouble log2;  ///< of 1 / inverse
    bool halved;
};

constexpr auto kLogPoints = [] {
    std::array<LogPoint, kSteps + 1> points{};
    for (int i = 0; i <= kSteps; ++i) {
        const bool halved = i >= 27;
        const double point = (halved ? 0.5 : 1.0) * (1.0 + i / static_cast<double>(kSteps));
        const double inverse = static_cast<double>(static_cast<int>(0x1p19 / point)) * 0x1p-19;
        points[static_cast<unsigned>(i)] = {inverse, Log2BySeries(inverse) * -1, halved};
    }
    return points;
}();

constexpr auto kExpPoints = [] {
    std::array<DoubleDouble, kSteps> points{};
    for (unsigned i = 0; i < kSteps; ++i) {
        points[i] = Exp2BySeries(i / static_cast<double>(kSteps));
    }
    return points;
}();

/// log2(1 + r) / r is the sum of these times r^n.
constexpr auto kLogSeries = [] {
    std::array<DoubleDouble, 12> terms{};
    for (unsigned n = 0; n < terms.size(); ++n) {
        terms[n] = DoubleDouble{n % 2 ? -1.0 : 1.0, 0} / (kLn2 * (n + 1.0));
    }
    return terms;
}();

/// (2^r - 1) / r is the sum of these times r^n.
constexpr auto kExpSeries = [] {
    std::array<DoubleDouble, 10> terms{};
    terms[0] = kLn2;
    for (unsigned n = 1; n < terms.size(); ++n) {
        terms[n] = terms[n - 1] * kLn2 / DoubleDouble{n + 1.0, 0};
    }
    return terms;
}();

/// The sum of terms[n] * r^n for |r| <= 2^-7: plain doubles serve from the fifth term on.
template <std::size_t N>
DoubleDouble Series(const std::array<DoubleDouble, N>& terms, DoubleDouble r) {
    constexpr std::size_t kExactTerms = 4;
    double tail = 0;
    for (std::size_t n = N - 1; n >= kExactTerms; --n) {
        tail = tail * r.high + terms[n].high;
    }
    DoubleDouble sum = {tail, 0};
    for (std::size_t n = kExactTerms; n-- > 0;) {
        sum = terms[n] + sum * r;
    }
    return sum;
}

DoubleDouble Log2(double x) {
    constexpr std::uint64_t kFraction = 0xFFFFFFFFFFFFF;
    constexpr double kTwo54 = 0x1p54;
    int exponent = -1023;
    if (x < 0x1p-1022) {
        x *= kTwo54;
        exponent -= 54;
    }
    const auto bits = std::bit_cast<std::uint64_t>(x);
    exponent += static_cast<int>(bits >> 52);
    const std::uint64_t fraction = bits & kFraction;
    const auto nearest = static_cast<unsigned>((fraction >> 45) + 1) >> 1;
    const LogPoint& point = kLogPoints[nearest];
    const std::uint64_t biased = std::uint64_t{point.halved ? 1022u : 1023u} << 52;
    exponent += point.halved;

    const double mantissa = std::bit_cast<double>(biased | fraction);
    const double front = std::bit_cast<double>(biased | (fraction & 0xFFFFF00000000));
    const double back = mantissa - front;
    const DoubleDouble r = ExactSum(front * point.inverse - 1, back * point.inverse);
    return DoubleDouble{static_cast<double>(exponent), 0} +
           (point.log2 + Series(kLogSeries, r) * r);
}

/// 2^p.
ScaledParts Exp2(DoubleDouble p) {
    const double steps = std::floor(p.high * kSteps + 0.5);
    const DoubleDouble r = ExactSum(p.high - steps / kSteps, p.low);
    const int count = static_cast<int>(steps);
    const DoubleDouble point = kExpPoints[static_cast<unsigned>(count) % kSteps];
    DoubleDouble parts = point + point * (Series(kExpSeries, r) * r);
    // So near to a double only what is one comes; the rest of the error would show in the modes
    // that round one way.
    if (std::abs(parts.low) < parts.high * 0x1p-72) {
        parts.low = 0;
    }
    return {parts, count >> 6};
}

}  // namespace

ScaledParts Power(double x, double y) {
    constexpr double kFarOut = 1200;
    const DoubleDouble log = Log2(x);
    const double estimate = log.high * y;
    if (std::abs(estimate) >= kFarOut) {
        return {{1, 0}, estimate > 0 ? 1200 : -1200};
    }
    return Exp2(log * y);
}

}  // namespace veldt::numerics
