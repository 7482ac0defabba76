// Fixed point on random operands against exact 64-bit arithmetic, in every floating-point mode.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>
#include <utility>

#include "numerics/rounding.h"
#include "numerics/rounds.h"
#include "support/seed.h"

namespace {

std::int32_t Low(std::int64_t wide) {
    return static_cast<std::int32_t>(wide);
}

/// Often a limit, near a power of two, whole or small, else anything.
std::int32_t Operand(std::mt19937& random) {
    const std::int64_t bits = random();
    const std::int64_t power = std::int64_t{1} << bits % 32, off = bits / 32 % 3 - 1;
    const std::int64_t limits[] = {0, 65536, -65536, INT32_MIN};
    const std::int64_t choice[] = {limits[bits % 4],       power + off,
                                   -power - off,           bits & ~0xFFFFLL,
                                   Low(bits) >> bits % 32, bits};
    return Low(choice[random() % std::size(choice)]);
}

std::int32_t Product(std::int64_t a, std::int64_t b) {
    if ((std::abs(a) / 65536) * (std::abs(b) / 65536) > 32767) {
        return (a < 0) == (b < 0) ? INT32_MAX : -INT32_MAX;
    }
    return Low((a * b + (a * b < 0 ? -32768 : 32768)) / 65536);
}

std::int32_t Quotient(std::int64_t a, std::int64_t b) {
    return b == 0 ? (a < 0 ? INT32_MIN : INT32_MAX) : Low(a * 65536 / b);
}

std::int32_t Ratio(std::int64_t a, std::int64_t b) {
    if (b == 0) return a < 0 ? -INT32_MAX : INT32_MAX;
    return Low(std::min<std::int64_t>(a * 65536 / b, INT32_MAX));
}

bool IsPowerOfTwo(std::int64_t x) {
    return std::has_single_bit(static_cast<std::uint64_t>(std::abs(x)));
}

TEST(FixedPoint, RandomAgainstExactArithmetic) {
    std::mt19937 random(veldt::tests::Seed());
    for (int round = 0; round < veldt::tests::Rounds(100000) && !HasFailure(); ++round) {
        const std::int32_t a = Operand(random), b = Operand(random);
        const std::int64_t wide = a;
        SCOPED_TRACE(testing::Message() << a << " and " << b);
        const Rounding rounding(round % 4);
        const bool cut = IsPowerOfTwo(a) || IsPowerOfTwo(b);
        EXPECT_EQ(FixMul(a, b), Product(a, b));
        EXPECT_EQ(XFixMultiply(a, b), cut ? Low(wide * b / 65536) : Product(a, b));
        EXPECT_EQ(FixDiv(a, b), Quotient(a, b));
        EXPECT_EQ(XFixDivide(a, b), a == 0 ? 0 : Quotient(a, b));
        const auto c = static_cast<std::int16_t>(a >> 16), d = static_cast<std::int16_t>(b >> 16);
        EXPECT_EQ(FixRatio(c, d), Ratio(c, d));

        const auto whole = static_cast<std::int16_t>((wide + (a < 0 ? -32768 : 32768)) / 65536);
        EXPECT_EQ(FixRound(a), whole);
        EXPECT_EQ(Fix2Long(a), whole);
        EXPECT_EQ(Long2Fix(a), std::clamp(a, -32767, 32767) * 65536);
        EXPECT_EQ(Fix2X(a), a / 65536.0);
        std::int32_t exponent = 99;
        const auto bits = static_cast<std::uint32_t>(a);
        const bool single = std::popcount(bits) == 1;
        EXPECT_EQ(XFixTestForPowerOf2(a, exponent), single ? 1 : 0);
        EXPECT_EQ(exponent, single ? std::countr_zero(bits) - 16 : 99);
    }
}

TEST(FixedPoint, TakesTheLowBitsOfDoubles) {
    const std::pair<double, std::int64_t> cases[] = {
        {-1.5, -0x18000},        {40000, 0x9C400000}, {0x1p46 + 0x1p-5, 0x800},
        {-0.00001, 0},           {0x1p47, 0},         {0x1.fffffffffffffp46, 0xFFFFFC00},
        {-0x1p46 - 2, -0x20000}, {-0x1p47, 0},        {1e300, 0},
        {HUGE_VAL, 0},           {-HUGE_VAL, 0},      {NAN, 0}};
    for (const auto& [x, fixed] : cases) EXPECT_EQ(X2Fix(x), Low(fixed)) << x;
}

}  // namespace
