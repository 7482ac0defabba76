// Fixed point: rounding, saturation and wrapping, case by case. The differential program holds the
// same functions against exact arithmetic on random operands.
#include <gtest/gtest.h>
#include <veldt20/numerics.h>

#include <limits>

namespace {

constexpr std::int32_t Raw(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}
constexpr std::int32_t kMost = Raw(0x80000000);

constexpr std::int32_t k200 = 200 << 16;

struct Case {
    std::int32_t a, b;
    std::uint32_t plain, shortcut;
};

TEST(FixedPoint, MultipliesInBothFamilies) {
    const Case cases[] = {{0x18000, 0x18000, 0x24000, 0x24000},
                          {3, 0x8000, 2, 1},
                          {-3, 0x8000, 0xFFFFFFFE, 0xFFFFFFFF},
                          {-3, -0x8000, 2, 1},
                          {k200, k200, 0x7FFFFFFF, 0x7FFFFFFF},
                          {-k200, k200, 0x80000001, 0x80000001},
                          {kMost, 0x10000, 0x80000001, 0x80000000},
                          {kMost, -0x10000, 0x7FFFFFFF, 0x80000000},
                          {-0x10000, kMost, 0x7FFFFFFF, 0x80000000},
                          {kMost, 0x8000, 0xC0000000, 0xC0000000},
                          {0x8000, kMost, 0xC0000000, 0xC0000000},
                          {kMost, kMost, 0x7FFFFFFF, 0},
                          {0x7FFFFFFF, 0x18000, 0xBFFFFFFF, 0xBFFFFFFF},
                          {0x40000000, 0x40000, 0x7FFFFFFF, 0},
                          {kMost, 0, 0, 0},
                          {0x7FFF0000, 0x1FFFF, 0xFFFD8001, 0xFFFD8001}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.a << " * " << c.b);
        EXPECT_EQ(FixMul(c.a, c.b), Raw(c.plain));
        EXPECT_EQ(XFixMultiply(c.a, c.b), Raw(c.shortcut));
    }
}

TEST(FixedPoint, DividesInBothFamilies) {
    const Case cases[] = {{0x10000, 0x30000, 0x5555, 0x5555},
                          {0x20000, 0x30000, 0xAAAA, 0xAAAA},
                          {-0x20000, 0x30000, 0xFFFF5556, 0xFFFF5556},
                          {0x10000, 0, 0x7FFFFFFF, 0x7FFFFFFF},
                          {-0x10000, 0, 0x80000000, 0x80000000},
                          {0, 0, 0x7FFFFFFF, 0},
                          {0, -5, 0, 0},
                          {0x7FFFFFFF, 0x8000, 0xFFFFFFFE, 0xFFFFFFFE},
                          {0x7FFFFFFF, 1, 0xFFFF0000, 0xFFFF0000},
                          {kMost, -1, 0, 0},
                          {kMost, -0x10000, 0x80000000, 0x80000000},
                          {kMost, kMost, 0x10000, 0x10000},
                          {kMost, 0x20000, 0xC0000000, 0xC0000000},
                          {1, kMost, 0, 0},
                          {0x30000, -0x30000, 0xFFFF0000, 0xFFFF0000},
                          {7, 0x20000, 3, 3},
                          {-7, 0x20000, 0xFFFFFFFD, 0xFFFFFFFD}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << c.a << " / " << c.b);
        EXPECT_EQ(FixDiv(c.a, c.b), Raw(c.plain));
        EXPECT_EQ(XFixDivide(c.a, c.b), Raw(c.shortcut));
    }
}

TEST(FixedPoint, RatioCutsTowardZero) {
    const struct {
        std::int16_t a, b;
        std::uint32_t result;
    } cases[] = {{1, 3, 0x5555},
                 {2, 3, 0xAAAA},
                 {-2, 3, 0xFFFF5556},
                 {2, -3, 0xFFFF5556},
                 {-2, -3, 0xAAAA},
                 {0, 0, 0x7FFFFFFF},
                 {5, 0, 0x7FFFFFFF},
                 {-5, 0, 0x80000001},
                 {0, 7, 0},
                 {32767, 1, 0x7FFF0000},
                 {-32768, 1, 0x80000000},
                 {-32768, -1, 0x7FFFFFFF},
                 {-32768, 2, 0xC0000000},
                 {-32768, -32768, 0x10000},
                 {1, -32768, 0xFFFFFFFE}};
    for (const auto& c : cases) {
        EXPECT_EQ(FixRatio(c.a, c.b), Raw(c.result)) << c.a << " / " << c.b;
    }
}

TEST(FixedPoint, ConvertsToAndFromOtherNumbers) {
    const struct {
        std::uint32_t x;
        int rounded;
    } roundings[] = {{0x8000, 1},      {0x7FFF, 0},          {0xFFFF8000, -1},
                     {0xFFFF8001, 0},  {0xFFFE8000, -2},     {0x7FFF8000, -32768},
                     {0xFFFEC000, -1}, {0x80000000, -32768}, {0x80007FFF, -32768}};
    for (const auto& c : roundings) {
        EXPECT_EQ(FixRound(Raw(c.x)), c.rounded) << std::hex << c.x;
        EXPECT_EQ(Fix2Long(Raw(c.x)), c.rounded) << std::hex << c.x;
    }
    EXPECT_EQ(Long2Fix(40000), 0x7FFF0000);
    EXPECT_EQ(Long2Fix(-3), -0x30000);
    for (const std::int32_t x : {-32767, -32768, -70000}) {
        EXPECT_EQ(Long2Fix(x), Raw(0x80010000));
    }
    EXPECT_EQ(Fix2X(kMost), -32768.0);
    EXPECT_EQ(Fix2X(1), 0x1p-16);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const struct {
        double d;
        std::uint32_t x;
    } conversions[] = {{1.5, 0x18000},
                       {-1.5, 0xFFFE8000},
                       {-0.00001, 0},
                       {40000.0, 0x9C400000},
                       {0x1p46 + 0x1p-5, 0x800},
                       {0x1.fffffffffffffp46, 0xFFFFFC00},
                       {0x1p47, 0},
                       {-0x1p47, 0},
                       {1e300, 0},
                       {kInfinity, 0},
                       {-kInfinity, 0},
                       {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& c : conversions) {
        EXPECT_EQ(X2Fix(c.d), Raw(c.x)) << c.d;
    }
}

TEST(FixedPoint, KnowsPowersOfTwo) {
    for (int bit = 0; bit < 32; ++bit) {
        std::int32_t exponent = 99;
        EXPECT_EQ(XFixTestForPowerOf2(Raw(1u << bit), exponent), 1);
        EXPECT_EQ(exponent, bit - 16);
    }
    for (const std::uint32_t v : {0u, 3u, 0x80000001u, 0xFFFF0000u}) {
        std::int32_t exponent = 99;
        EXPECT_EQ(XFixTestForPowerOf2(Raw(v), exponent), 0);
        EXPECT_EQ(exponent, 99);
    }
}

}  // namespace
