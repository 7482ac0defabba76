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

TEST(Geometry, ShortRectanglesMeet) {
    const XRect made(0, 0, 10, 20);
    const tagRECT wide{0, 0, 20, 10};
    EXPECT_EQ(XRect(wide).right, 20);
    XRect rect(XNRect{made.top, made.left, made.bottom, made.right});
    EXPECT_EQ(rect.TopLeft().x, 0);
    EXPECT_EQ(rect.BotRight().y, 10);
    rect += XPoint(5, 5);
    rect -= XPoint(XNPoint{1, 2});
    rect -= XPoint(tagPOINT{1, 2});
    XNRect common{};
    EXPECT_EQ(rect.SectRect(made, common), 1);
    EXPECT_EQ(common.top, 2);
    EXPECT_EQ(common.left, 2);
    rect &= made;
    EXPECT_EQ(rect.bottom, 10);
    EXPECT_EQ(rect.IsEmpty(), 0);
    EXPECT_EQ(rect.IsValid(), 1);
    rect.Set(3, 3, 3, 3);
    EXPECT_EQ(rect.IsEmpty(), 1);
}

TEST(Geometry, LongRectanglesMeet) {
    const XLongRect made(0, 0, 100000, 200000);
    XLongRect rect(XNRect{0, 0, 10, 20});
    rect.Set(0, 0, 100000, 200000);
    EXPECT_EQ(rect == made, 1);
    EXPECT_EQ(rect != made, 0);
    rect += XLongPoint(5, 5);
    rect -= XLongPoint(XNPoint{1, 2});
    EXPECT_EQ(rect.TopLeft().x, 3);
    EXPECT_EQ(rect.BotRight().y, 100004);
    XNRect common{};
    EXPECT_EQ(rect.SectRect(made, common), 1);
    EXPECT_EQ(common.top, 4);
    rect &= XLongRect(0, 0, 10, 10);
    EXPECT_EQ(rect.IsEmpty(), 0);
    EXPECT_EQ(rect.IsValid(), 1);
    rect.ToNativeRect(common);
    EXPECT_EQ(common.right, 10);
}

constexpr std::int32_t kOne = 0x10000;

TEST(Geometry, FixedPointsCompute) {
    XFixPoint point(2 * kOne, 3 * kOne);
    const XFixPoint two(2 * kOne, 2 * kOne);
    point += two;
    point -= two;
    point *= two;
    point /= two;
    EXPECT_EQ(point == XFixPoint(2 * kOne, 3 * kOne), 1);
    EXPECT_EQ(point != two, 1);
    EXPECT_EQ(point < two, 0);
    EXPECT_EQ(point > two, 0);
    EXPECT_EQ(two <= two, 1);
    EXPECT_EQ(two >= two, 1);
    EXPECT_EQ((point + two).x, 4 * kOne);
    EXPECT_EQ((point - two).y, kOne);
    EXPECT_EQ((point * two).y, 6 * kOne);
    EXPECT_EQ((point / two).x, kOne);
    point.Set(1, 2);
    EXPECT_EQ(point.y, 2);
}

TEST(Geometry, FixedRectanglesMeet) {
    const XFixRect made(0, 0, 20 * kOne, 10 * kOne);
    XFixRect rect;
    rect.Set(0, 0, 20 * kOne, 10 * kOne);
    EXPECT_EQ(rect == made, 1);
    rect.Set(made.TopLeft(), made.BottomRight());
    EXPECT_EQ(rect != made, 0);
    rect.PtToRect(made.BottomLeft(), made.TopRight());
    EXPECT_EQ(rect == made, 1);
    rect.TopLeft(XFixPoint(kOne, kOne));
    rect.BottomRight(XFixPoint(5 * kOne, 5 * kOne));
    EXPECT_EQ(rect.Width(), 4 * kOne);
    rect.TopRight(XFixPoint(6 * kOne, kOne));
    rect.BottomLeft(XFixPoint(kOne, 7 * kOne));
    EXPECT_EQ(rect.Height(), 6 * kOne);
    rect.Inset(kOne, kOne);
    rect.Offset(kOne, kOne);
    EXPECT_EQ(rect.top, 3 * kOne);
    const XFixPoint one(kOne, kOne);
    rect += one;
    rect -= one;
    EXPECT_EQ(rect == (rect + one) - one, 1);
    EXPECT_EQ((rect & made) == rect, 1);
    EXPECT_EQ((rect | made) == made, 1);
    rect &= made;
    rect |= made;
    EXPECT_EQ(rect.Contains(one), 1);
    EXPECT_EQ(rect.IsEmpty(), 0);
    EXPECT_EQ(rect.IsValid(), 1);
}

}  // namespace
