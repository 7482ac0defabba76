// Fixed point: rounding, saturation and wrapping, case by case. The differential program holds the
// same functions against exact arithmetic on random operands.
#include <gtest/gtest.h>
#include <veldt20/numerics.h>

#include <array>
#include <cmath>
#include <limits>
#include <sstream>
#include <vector>

namespace {

constexpr std::int32_t Raw(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}

/// Cases of N raw values, in hexadecimal.
template <std::size_t N>
std::vector<std::array<std::int32_t, N>> Cases(const char* text) {
    std::vector<std::array<std::int32_t, N>> cases;
    std::istringstream in(text);
    std::uint32_t value;
    for (std::size_t i = 0; in >> std::hex >> value; ++i) {
        if (i % N == 0) {
            cases.emplace_back();
        }
        cases.back()[i % N] = Raw(value);
    }
    return cases;
}

TEST(FixedPoint, BothFamiliesMultiplyAndDivide) {
    // Operands, FixMul, XFixMultiply
    for (const auto& [a, b, plain, shortcut] :
         Cases<4>("00000003 00008000  00000002 00000001   FFFFFFFD 00008000  FFFFFFFE FFFFFFFF "
                  "00C80000 00C80000  7FFFFFFF 7FFFFFFF   FF380000 00C80000  80000001 80000001 "
                  "80000000 00010000  80000001 80000000   80000000 FFFF0000  7FFFFFFF 80000000 "
                  "80000000 80000000  7FFFFFFF 00000000   80000000 00008000  C0000000 C0000000 "
                  "7FFFFFFF 00018000  BFFFFFFF BFFFFFFF   7FFF0000 0001FFFF  FFFD8001 FFFD8001 ")) {
        SCOPED_TRACE(testing::Message() << std::hex << a << " * " << b);
        EXPECT_EQ(FixMul(a, b), plain);
        EXPECT_EQ(XFixMultiply(a, b), shortcut);
    }
    // Operands, FixDiv, XFixDivide
    for (const auto& [a, b, plain, shortcut] :
         Cases<4>("FFFE0000 00030000  FFFF5556 FFFF5556   00010000 00000000  7FFFFFFF 7FFFFFFF "
                  "FFFF0000 00000000  80000000 80000000   00000000 00000000  7FFFFFFF 00000000 "
                  "7FFFFFFF 00000001  FFFF0000 FFFF0000   80000000 FFFF0000  80000000 80000000 "
                  "80000000 80000000  00010000 00010000   FFFFFFF9 00020000  FFFFFFFD FFFFFFFD ")) {
        SCOPED_TRACE(testing::Message() << std::hex << a << " / " << b);
        EXPECT_EQ(FixDiv(a, b), plain);
        EXPECT_EQ(XFixDivide(a, b), shortcut);
    }
    // FixRatio of two halves
    for (const auto& [a, b, ratio] :
         Cases<3>("0002 0003 0000AAAA   FFFE 0003 FFFF5556   0000 0000 7FFFFFFF "
                  "0005 0000 7FFFFFFF   FFFB 0000 80000001   8000 0001 80000000 "
                  "8000 FFFF 7FFFFFFF   8000 8000 00010000   0001 8000 FFFFFFFE ")) {
        EXPECT_EQ(FixRatio(static_cast<std::int16_t>(a), static_cast<std::int16_t>(b)), ratio)
            << std::hex << a << " / " << b;
    }
}

TEST(FixedPoint, ConvertsToAndFromWholeNumbers) {
    for (const auto& [x, rounded] :
         Cases<2>("00008000 00000001   00007FFF 00000000   FFFF8000 FFFFFFFF "
                  "FFFF8001 00000000   FFFE8000 FFFFFFFE   7FFF8000 FFFF8000 "
                  "FFFEC000 FFFFFFFF   80000000 FFFF8000   80007FFF FFFF8000 ")) {
        EXPECT_EQ(FixRound(x), rounded) << std::hex << x;
        EXPECT_EQ(Fix2Long(x), rounded) << std::hex << x;
    }
    EXPECT_EQ(Long2Fix(40000), 0x7FFF0000);
    EXPECT_EQ(Long2Fix(-3), -0x30000);
    for (const std::int32_t x : {-32767, -32768, -70000}) {
        EXPECT_EQ(Long2Fix(x), Raw(0x80010000));
    }
}

TEST(FixedPoint, ConvertsToAndFromDoubles) {
    EXPECT_EQ(Fix2X(INT32_MIN), -32768.0);
    EXPECT_EQ(Fix2X(1), 0x1p-16);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double d : {-0.00001, 0x1p47, -0x1p47, 1e300, kInfinity, -kInfinity, double{NAN}}) {
        EXPECT_EQ(X2Fix(d), 0) << d;
    }
    EXPECT_EQ(X2Fix(1.5), 0x18000);
    EXPECT_EQ(X2Fix(-1.5), Raw(0xFFFE8000));
    EXPECT_EQ(X2Fix(40000.0), Raw(0x9C400000));
    EXPECT_EQ(X2Fix(0x1p46 + 0x1p-5), 0x800);
    EXPECT_EQ(X2Fix(0x1.fffffffffffffp46), Raw(0xFFFFFC00));
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
