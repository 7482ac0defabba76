// XFp without its decimal conversions.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <thread>
#include <utility>

#include "numerics/rounding.h"

namespace {

const double kSentinel = XFp::Nan(0);
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kIeeeNan = std::numeric_limits<double>::quiet_NaN();

TEST(FloatingPoint, RoundingModeIsNumberedOurWay) {
    const Rounding restored(0);
    EXPECT_EQ(XFp::FESetRound(2), 0);
    EXPECT_EQ(XFp::GetRound(), 2);
    XFp::SetRound(4);
    EXPECT_EQ(XFp::FESetRound(-1), 2);
    std::thread([] { XFp::SetRound(3); }).join();
    EXPECT_EQ(XFp::GetRound(), 2) << "another thread's mode came through";
    // The arithmetic of both units obeys.
    volatile double one = 1, three = 3;
    volatile long double wideOne = 1, wideThree = 3;
    const double below = one / three;
    const long double wideBelow = wideOne / wideThree;
    XFp::SetRound(1);
    EXPECT_GT(one / three, below);
    EXPECT_GT(wideOne / wideThree, wideBelow);
}

TEST(FloatingPoint, RoundsToWholeNumbers) {
    for (double x = -5; x <= 5; x += 0.25) {
        const double wholes[] = {x - std::remainder(x, 1), std::ceil(x), std::floor(x),
                                 std::trunc(x)};
        for (int mode = 0; mode < 4; ++mode) {
            const Rounding rounding(mode);
            EXPECT_EQ(XFp::RInt(x), wholes[mode]) << x << " in mode " << mode;
            EXPECT_EQ(XFp::RIntToL(x), wholes[mode]) << x << " in mode " << mode;
            EXPECT_EQ(XFp::Num2LongInt(x), wholes[3]) << x << " in mode " << mode;
        }
    }
    EXPECT_TRUE(std::signbit(XFp::RInt(-0.25)));
    EXPECT_EQ(XFp::Num2LongInt(-0x1p32 - 5), -5);
    EXPECT_EQ(XFp::RIntToL(0x1p62 + 0x1p10), 1024);
    EXPECT_EQ(XFp::RIntToL(kIeeeNan), 0);
    EXPECT_EQ(XFp::Num2Double(7.5), 7.5);
    XFp one;
    EXPECT_EQ(&(one = XFp()), &one);
}

TEST(FloatingPoint, NotANumberIsAFiniteOne) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(XFp::Nan(200)), 0xC2A674E79FC3F200);
    EXPECT_EQ(XFp::Inf(), kInfinity);
    for (const double x : {XFp::Nan(0), XFp::Nan(200), -12345679012345.0, kIeeeNan, -kIeeeNan}) {
        EXPECT_EQ(XFp::IsNan(x), 1) << x;
    }
    for (const double x : {kInfinity, -kInfinity, kSentinel + 1, -kSentinel, 0.0}) {
        EXPECT_EQ(XFp::IsNan(x), 0) << x;
    }
}

TEST(FloatingPoint, LogarithmsAreExactWhereTheyCanBe) {
    for (const double x : {0.0, -0.0, -1.0, kIeeeNan, kSentinel, -kInfinity}) {
        EXPECT_EQ(XFp::Ln(x), kSentinel) << x;
        EXPECT_EQ(XFp::Log2(x), kSentinel) << x;
    }
    EXPECT_EQ(XFp::Ln(kInfinity), kInfinity);
    EXPECT_EQ(XFp::Ln(1.0), 0.0);
    for (int power = -1074; power <= 1023; ++power) {
        ASSERT_EQ(XFp::Log2(std::ldexp(1.0, power)), power);
    }
    // The nearest doubles to the true values.
    EXPECT_EQ(XFp::Ln(10.0), 2.302585092994045684);
    EXPECT_EQ(XFp::Ln(5e-324), -744.4400719213812622);
    EXPECT_EQ(XFp::Log2(10.0), 3.321928094887362348);
    EXPECT_EQ(XFp::Ln(1.0 + 0x1p-52), 2.220446049250312834e-16);
}

TEST(FloatingPoint, PowersAtTheEdges) {
    const double cases[][3] = {{-8, 0.5, kSentinel},
                               {0, -1, kSentinel},
                               {-0.0, -1, kSentinel},
                               {0, -kInfinity, kSentinel},
                               {kSentinel, 2, kSentinel},
                               {2, kSentinel, kSentinel},
                               {kIeeeNan, 0, kSentinel},
                               {1, kIeeeNan, kSentinel},
                               {-2, 3, -8},
                               {-2, -1, -0.5},
                               {0, 0, 1},
                               {-1, kInfinity, 1},
                               {-2, kInfinity, kInfinity},
                               {-2, -kInfinity, 0},
                               {10, -400, 0},
                               {-10, 401, -kInfinity},
                               {2, -1074, 0x1p-1074},
                               {10, 22, 1e22}};
    for (const auto& [x, y, result] : cases) {
        EXPECT_EQ(XFp::XpwrY(x, y), result) << x << " to the power " << y;
    }
}

// The true values were found with 300 bits.
TEST(FloatingPoint, PowersAreRoundedOnceInEveryMode) {
    const struct {
        double x, y, nearest, above, below;
    } cases[] = {
        {1.1, 1000, 0x1.6aec8cd64aba1p+137, 0x1.6aec8cd64aba2p+137, 0x1.6aec8cd64aba1p+137},
        {7.25e-5, 77.7, 0x2dp-1074, 0x2ep-1074, 0x2dp-1074},
        {5e-324, 0.3, 0x1.bdb8cdadbe161p-323, 0x1.bdb8cdadbe161p-323, 0x1.bdb8cdadbe160p-323},
        {3, 33, 0x1.3bfefa65abb83p+52, 0x1.3bfefa65abb83p+52, 0x1.3bfefa65abb83p+52},
        {2, -1022 - 0x6p-12, 0x0.ffbd7ddc30bb3p-1022, 0x0.ffbd7ddc30bb3p-1022,
         0x0.ffbd7ddc30bb2p-1022},
        {10, 309, kInfinity, kInfinity, std::numeric_limits<double>::max()},
        {10, -324, 0, 0x1p-1074, 0}};
    for (const auto& c : cases) {
        const bool odd = std::fmod(c.y, 2) != 0 && std::trunc(c.y) == c.y;
        const double results[] = {c.nearest, c.above, c.below, c.below};
        const double negated[] = {c.nearest, c.below, c.above, c.below};
        for (int mode = 0; mode < 4; ++mode) {
            const Rounding rounding(mode);
            EXPECT_EQ(XFp::XpwrY(c.x, c.y), results[mode]) << c.x << ' ' << c.y << " mode " << mode;
            if (odd) {
                EXPECT_EQ(XFp::XpwrY(-c.x, c.y), -negated[mode]) << c.x << ' ' << c.y;
            }
        }
    }
}

TEST(FloatingPoint, GrowthAndPresentValue) {
    EXPECT_EQ(XFp::Compound(0.05, 10.0), 1.628894626777442);
    EXPECT_EQ(XFp::Compound(-1.0, 0.0), 1.0);
    EXPECT_EQ(XFp::Annuity(0.05, 10.0), 7.721734929184818);
    EXPECT_EQ(XFp::Annuity(0.0, -700.0), -700.0);
    EXPECT_LT(XFp::Annuity(0.05, -644.0), -8e14);
    for (const double refused :
         {XFp::Compound(-1.0, -1.0), XFp::Compound(-2.0, 0.5), XFp::Compound(kSentinel, 1),
          XFp::Compound(1, kIeeeNan), XFp::Annuity(0.05, -644.5), XFp::Annuity(-1.0, 2.0),
          XFp::Annuity(kSentinel, 1), XFp::Annuity(0.0, kIeeeNan)}) {
        EXPECT_EQ(refused, kSentinel);
    }
}

TEST(FloatingPoint, RandomSequence) {
    double state = 1;
    for (int step = 0; step < 10000; ++step) {
        const double next = XFp::Randomx(&state);
        ASSERT_EQ(next, state);
    }
    EXPECT_EQ(state, 1043618065.0) << "the published check value of this generator";
    state = -200000.25;
    EXPECT_EQ(XFp::Randomx(&state), -1213920554.75);
}

// What this is compared with was computed by 64-bit code.
TEST(FloatingPoint, SameBitsOnEveryTarget) {
    std::mt19937_64 random(20);
    std::uint64_t hash = 0;
    for (int i = 0; i < 40000; ++i) {
        const double any = std::bit_cast<double>(random());
        const double x = std::ldexp(static_cast<double>(random() >> 11), -50);
        const double y = std::ldexp(static_cast<double>(random() >> 11), -46) - 64;
        const Rounding rounding(i % 4);
        double state = y;
        for (const double result : {XFp::Ln(any), XFp::Log2(x), XFp::XpwrY(any, y),
                                    XFp::XpwrY(x, y), XFp::Compound(x / 64, y),
                                    XFp::Annuity(x / 64, y), XFp::Randomx(&state), XFp::RInt(y)}) {
            hash = std::rotl(hash, 5) * 0x9E3779B97F4A7C15 + std::bit_cast<std::uint64_t>(result);
        }
    }
    EXPECT_EQ(hash, 0xADC8A59DC37D3A39);
}

}  // namespace
