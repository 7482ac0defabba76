#include <gtest/gtest.h>
#include <veldt20/geometry.h>

#include "platform.h"

namespace {

TEST(Geometry, NativeRecordsConvert) {
    XNRect rect{1, 2, 3, 4};
    const XNRect& fixed = rect;
    EXPECT_EQ(&TopLeft(rect), &TopLeft(fixed));
    EXPECT_EQ(TopLeft(rect).y, 1);
    EXPECT_EQ(&BotRight(rect), &BotRight(fixed));
    EXPECT_EQ(BotRight(fixed).x, 4);

    tagRECT wide{};
    _SMALL_RECT small{};
    XNRect back{};
    XNRectToRECT(rect, wide);
    EXPECT_EQ(wide.left, 2);
    RECTToXNRect(wide, back);
    EXPECT_EQ(back.bottom, 3);
    XNRectToSRect(rect, small);
    EXPECT_EQ(small.Bottom, 3);
    SRectToXNRect(small, back);
    EXPECT_EQ(back.right, 4);
    wide = {};
    SRectToRECT(small, wide);
    EXPECT_EQ(wide.right, 4);
    tagPOINT point{};
    XNPoint native{};
    XNPointToPOINT({5, 6}, point);
    EXPECT_EQ(point.x, 6);
    POINTToXNPoint(point, native);
    EXPECT_EQ(native.y, 5);
}

TEST(Geometry, RectanglesComeFromAndGoToRecords) {
    EXPECT_EQ(XRect(tagRECT{0, 0, 20, 10}).right, 20);
    XRect rect(XNRect{0, 0, 10, 20});
    rect += XPoint(XNPoint{1, 2});
    rect += XPoint(tagPOINT{1, 2});
    EXPECT_EQ(rect.left, 3);
    XLongRect wide(XNRect{0, 0, 10, 20});
    wide += XLongPoint(XNPoint{1, 2});
    XNRect back{};
    wide.ToNativeRect(back);
    EXPECT_EQ(back.right, 22);
}

TEST(Geometry, FixedPointsChangeInPlace) {
    constexpr std::int32_t kOne = 0x10000;
    XFixPoint point;
    point.Set(2 * kOne, 3 * kOne);
    const XFixPoint two(2 * kOne, 2 * kOne);
    point += two;
    point *= two;
    point -= two;
    point /= two;
    EXPECT_EQ(point == XFixPoint(3 * kOne, 4 * kOne), 1);
    XFixRect rect(0, 0, kOne, kOne);
    rect |= XFixRect(0, 0, 2 * kOne, kOne);
    EXPECT_EQ(rect.Width(), 2 * kOne);
}

}  // namespace
