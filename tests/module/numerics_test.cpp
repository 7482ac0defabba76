#include <gtest/gtest.h>
#include <veldt20/numerics.h>

namespace {

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

TEST(FloatingPoint, TakesDoublesAsTheyCome) {
    EXPECT_EQ(XFp::Num2Double(7.5), 7.5);
    XFp one;
    EXPECT_EQ(&(one = XFp()), &one);
}

}  // namespace
