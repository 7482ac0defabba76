// The orders of the three forms of text: of signed bytes up to the first zero byte, and of unsigned
// bytes up to the length.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <string>

#include "strings/orders.h"
#include "support/seed.h"

namespace {

using veldt::tests::Lower;
using veldt::tests::OperatorsAgree;

/// The difference of the first two bytes that differ, in texts that end with their first zero byte.
int SignedDifference(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    while (i < a.size() && a[i] == b[i]) ++i;
    return static_cast<signed char>(a[i]) - static_cast<signed char>(b[i]);
}

/// Where none differ, the difference of the lengths.
int UnsignedDifference(const std::string& a, const std::string& b) {
    const auto [x, y] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return x == a.end() || y == b.end()
               ? static_cast<int>(a.size()) - static_cast<int>(b.size())
               : static_cast<unsigned char>(*x) - static_cast<unsigned char>(*y);
}

int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}

const unsigned char* Bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

TEST(Orders, AgreeWithPlainOnes) {
    std::mt19937 random(veldt::tests::Seed());
    for (int round = 0; round < 50000 && !HasFailure(); ++round) {
        const auto [a, b] = veldt::tests::TwoTexts(random);
        SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
        const int sizeA = static_cast<int>(a.size()), sizeB = static_cast<int>(b.size());
        // What the calls see that stop at a zero byte.
        const std::string headA = veldt::tests::Terminated(a), headB = veldt::tests::Terminated(b);
        const XCString s(a.data(), sizeA), t(b.data(), sizeB);
        const int order = SignedDifference(headA, headB);
        EXPECT_EQ(s.Compare(t), Sign(order));
        EXPECT_EQ(s.CompareNoCase(t), SignedDifference(Lower(headA), Lower(headB)));
        EXPECT_TRUE(OperatorsAgree(s, t, order));
        EXPECT_TRUE(OperatorsAgree(s, b.c_str(), order));
        EXPECT_TRUE(OperatorsAgree(a.c_str(), t, order));

        EXPECT_EQ(XCompareBytes(Bytes(a), Bytes(b), sizeA, sizeB), UnsignedDifference(a, b));
        const std::string cutA = a.substr(0, 255), cutB = b.substr(0, 255);
        const XStr<255> x(cutA.data(), std::min(sizeA, 255)), y(cutB.data(), std::min(sizeB, 255));
        const int difference = UnsignedDifference(cutA, cutB);
        const int toText = UnsignedDifference(cutA, headB);
        const int ofText = UnsignedDifference(headA, cutB);
        EXPECT_EQ(XPascalStrCmp(x.GetPStr(), y.GetPStr()), difference);
        EXPECT_EQ(XPascalStrCmp(x.GetPStr(), b.c_str()), toText);
        EXPECT_EQ(XPascalStrCmp(a.c_str(), y.GetPStr()), ofText);
        EXPECT_EQ(x.Compare(y, 1), Sign(difference));
        EXPECT_EQ(x.DoCompare(y.GetPStr() + 1, y.GetLength(), 0),
                  Sign(UnsignedDifference(Lower(cutA), Lower(cutB))));
        EXPECT_TRUE(OperatorsAgree(x, y, difference));
        EXPECT_TRUE(OperatorsAgree(x, b.c_str(), toText));
        EXPECT_TRUE(OperatorsAgree(a.c_str(), y, ofText));
    }
}

}  // namespace
