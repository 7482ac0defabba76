#include <gtest/gtest.h>
#include <veldt20/numerics.h>

#include <cmath>

namespace {

constexpr std::int32_t kOne = 0x10000;

TEST(Fixed, MultipliesDividesAndConverts) {
    EXPECT_EQ(Long2Fix(3), 3 * kOne);
    EXPECT_EQ(Fix2Long(3 * kOne), 3);
    EXPECT_EQ(FixRound(3 * kOne + kOne / 4), 3);
    EXPECT_EQ(FixMul(3 * kOne, kOne / 2), 3 * kOne / 2);
    EXPECT_EQ(FixDiv(3 * kOne, 2 * kOne), 3 * kOne / 2);
    EXPECT_EQ(FixRatio(3, 2), 3 * kOne / 2);
    EXPECT_EQ(Fix2X(3 * kOne / 2), 1.5);
    EXPECT_EQ(X2Fix(1.5), 3 * kOne / 2);
    EXPECT_EQ(XFixMultiply(3 * kOne, 3 * kOne), 9 * kOne);
    EXPECT_EQ(XFixDivide(9 * kOne, 3 * kOne), 3 * kOne);
    std::int32_t exponent = 0;
    EXPECT_NE(XFixTestForPowerOf2(2 * kOne, exponent), 0);
    EXPECT_EQ(XFixTestForPowerOf2(3 * kOne, exponent), 0);
}

TEST(FloatingPoint, RoundsAsTheModeSays) {
    const std::int16_t mode = XFp::GetRound();
    EXPECT_EQ(XFp::RInt(2.5), 2.0);
    EXPECT_EQ(XFp::RIntToL(2.75), 3);
    XFp::SetRound(1);
    EXPECT_EQ(XFp::GetRound(), 1);
    XFp::FESetRound(mode);
    EXPECT_EQ(XFp::GetRound(), mode);
    EXPECT_EQ(XFp::Num2LongInt(7.0), 7);
    EXPECT_EQ(XFp::Num2Double(7.5), 7.5);
}

TEST(FloatingPoint, ComputesLogarithmsPowersAndInterest) {
    EXPECT_TRUE(std::isinf(XFp::Inf()));
    EXPECT_NE(XFp::IsNan(XFp::Nan(1)), 0);
    EXPECT_EQ(XFp::IsNan(1.0), 0);
    EXPECT_NEAR(XFp::Ln(2.718281828459045), 1.0, 1e-15);
    EXPECT_EQ(XFp::Log2(8.0), 3.0);
    EXPECT_EQ(XFp::XpwrY(2.0, 10.0), 1024.0);
    EXPECT_NEAR(XFp::Compound(0.5, 2.0), 2.25, 1e-15);
    EXPECT_NEAR(XFp::Annuity(1.0, 1.0), 0.5, 1e-15);
    double seed = 1.0;
    EXPECT_EQ(XFp::Randomx(&seed), seed);
    EXPECT_EQ(seed, 16807.0);
    XFp one;
    const XFp other;
    EXPECT_EQ(&(one = other), &one);
}

TEST(FloatingPoint, GoesToDecimalAndBack) {
    XNDecForm form = {0, 6};
    XNDecimal decimal = {};
    XFp::Num2Dec(&form, 3.14159, &decimal);
    EXPECT_EQ(decimal.exponent, -5);
    EXPECT_EQ(decimal.digits[0], 6);
    EXPECT_EQ(XFp::Dec2Num(&decimal), 3.14159);
    unsigned char text[256];
    XFp::Num2Str(&form, 3.14159, text);
    double back = 0;
    XFp::Str2Num(text, &back);
    EXPECT_EQ(back, 3.14159);
}

}  // namespace
