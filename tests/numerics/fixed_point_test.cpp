// Fixed point: rounding, saturation and wrapping, case by case. The differential program holds the
// same functions against exact arithmetic on random operands.
#include <gtest/gtest.h>
#include <veldt20/numerics.h>

#include <cmath>
#include <utility>

namespace {

constexpr std::int32_t Raw(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}

/// Two operands, and what each of the two families makes of them.
struct Row {
    std::uint32_t a, b, plain, shortcut;
};

TEST(FixedPoint, BothFamiliesMultiplyAndDivideAtTheirLimits) {
    const Row products[] = {{0xFFFFFFFD, 0x00008000, 0xFFFFFFFE, 0xFFFFFFFF},
                            {0xFF380000, 0x00C80000, 0x80000001, 0x80000001},
                            {0x80000000, 0xFFFF0000, 0x7FFFFFFF, 0x80000000},
                            {0x80000000, 0x80000000, 0x7FFFFFFF, 0x00000000}};
    for (const Row& row : products) {
        EXPECT_EQ(FixMul(Raw(row.a), Raw(row.b)), Raw(row.plain)) << row.a;
        EXPECT_EQ(XFixMultiply(Raw(row.a), Raw(row.b)), Raw(row.shortcut)) << row.a;
    }
    const Row quotients[] = {{0xFFFF0000, 0x00000000, 0x80000000, 0x80000000},
                             {0x00000000, 0x00000000, 0x7FFFFFFF, 0x00000000},
                             {0x80000000, 0xFFFF0000, 0x80000000, 0x80000000},
                             {0x80000000, 0x80000000, 0x00010000, 0x00010000}};
    for (const Row& row : quotients) {
        EXPECT_EQ(FixDiv(Raw(row.a), Raw(row.b)), Raw(row.plain)) << row.b;
        EXPECT_EQ(XFixDivide(Raw(row.a), Raw(row.b)), Raw(row.shortcut)) << row.b;
    }
    EXPECT_EQ(FixRatio(0, 0), INT32_MAX);
    EXPECT_EQ(FixRatio(-5, 0), -INT32_MAX);
    EXPECT_EQ(FixRatio(-32768, -1), INT32_MAX);
    EXPECT_EQ(FixRatio(-32768, -32768), 0x10000);
    EXPECT_EQ(FixRatio(1, -32768), -2);
}

TEST(FixedPoint, ConvertsToAndFromWholeNumbersAndDoubles) {
    const std::pair<std::uint32_t, std::int32_t> rounded[] = {
        {0x00008000, 1},  {0x00007FFF, 0},      {0xFFFF8000, -1},
        {0xFFFF8001, 0},  {0xFFFE8000, -2},     {0x7FFF8000, -32768},
        {0xFFFEC000, -1}, {0x80000000, -32768}, {0x80007FFF, -32768}};
    for (const auto& [x, whole] : rounded) {
        EXPECT_EQ(FixRound(Raw(x)), whole) << x;
        EXPECT_EQ(Fix2Long(Raw(x)), whole) << x;
    }
    const std::pair<std::int32_t, std::uint32_t> whole[] = {{40000, 0x7FFF0000},
                                                            {-3, 0xFFFD0000},
                                                            {-32767, 0x80010000},
                                                            {-32768, 0x80010000},
                                                            {-70000, 0x80010000}};
    for (const auto& [x, fixed] : whole) EXPECT_EQ(Long2Fix(x), Raw(fixed)) << x;
    EXPECT_EQ(Fix2X(INT32_MIN), -32768.0);
    EXPECT_EQ(Fix2X(1), 0x1p-16);
    const std::pair<double, std::uint32_t> doubles[] = {
        {1.5, 0x18000},      {-1.5, 0xFFFE8000},
        {40000, 0x9C400000}, {0x1p46 + 0x1p-5, 0x800},
        {-0.00001, 0},       {0x1.fffffffffffffp46, 0xFFFFFC00},
        {0x1p47, 0},         {-0x1p47, 0},
        {1e300, 0},          {HUGE_VAL, 0},
        {-HUGE_VAL, 0},      {NAN, 0}};
    for (const auto& [x, fixed] : doubles) EXPECT_EQ(X2Fix(x), Raw(fixed)) << x;
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
