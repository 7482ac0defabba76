// Numbers of some 106 significant bits as the unevaluated sum of two doubles. All of it wants
// rounding to nearest, magnitudes far from overflow, and no contraction of products and sums.
#pragma once

namespace veldt::numerics {

struct DoubleDouble {
    double high;
    double low;  ///< at most half a unit in the last place of `high`
};

/// a + b exactly, where a is 0 or not the smaller in magnitude.
constexpr DoubleDouble FastSum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

/// a + b exactly.
constexpr DoubleDouble ExactSum(double a, double b) {
    const double sum = a + b;
    const double shareOfB = sum - a;
    return {sum, (a - (sum - shareOfB)) + (b - shareOfB)};
}

/// a * b exactly, through halves of 26 bits, whose products are exact.
constexpr DoubleDouble ExactProduct(double a, double b) {
    constexpr double kSplitter = 0x1p27 + 1;
    const double wideA = a * kSplitter;
    const double wideB = b * kSplitter;
    const double highA = wideA - (wideA - a);
    const double highB = wideB - (wideB - b);
    const double lowA = a - highA;
    const double lowB = b - highB;
    const double product = a * b;
    return {product, ((highA * highB - product) + highA * lowB + lowA * highB) + lowA * lowB};
}

/// Where a is 0, not the smaller in magnitude, or nearly the negation of b.
constexpr DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble sum = FastSum(a.high, b.high);
    return FastSum(sum.high, sum.low + (a.low + b.low));
}

constexpr DoubleDouble operator*(DoubleDouble a, double b) {
    const DoubleDouble product = ExactProduct(a.high, b);
    return FastSum(product.high, product.low + a.low * b);
}

constexpr DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble product = ExactProduct(a.high, b.high);
    return FastSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
    const double quotient = a.high / b.high;
    const DoubleDouble rest = a + b * -quotient;
    const double correction = rest.high / b.high;
    const DoubleDouble finer = rest + b * -correction;
    return FastSum(quotient, correction) + DoubleDouble{finer.high / b.high, 0};
}

}  // namespace veldt::numerics
