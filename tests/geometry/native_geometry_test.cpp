#include <gtest/gtest.h>
#include <veldt20/geometry_long.h>
#include <veldt20/geometry_short.h>

#include <array>

#include "platform/platform.h"

namespace {

using Corners = std::array<int, 4>;  // top, left, bottom, right
using Place = std::array<int, 2>;    // y, x

Corners Of(const auto& r) {
    return {int{r.top}, int{r.left}, int{r.bottom}, int{r.right}};
}
Corners Of(const _SMALL_RECT& r) {
    return {r.Top, r.Left, r.Bottom, r.Right};
}

Place At(const auto& p) {
    return {static_cast<int>(p.y), static_cast<int>(p.x)};
}

TEST(NativeGeometry, CornersLieInTheRectangle) {
    XNRect rect{1, 2, 3, 4};
    const XNRect& constant = rect;
    EXPECT_EQ(At(TopLeft(constant)), (Place{1, 2}));
    EXPECT_EQ(At(BotRight(constant)), (Place{3, 4}));
    TopLeft(rect) = XNPoint{-1, -2};
    BotRight(rect).x = 9;
    EXPECT_EQ(Of(rect), (Corners{-1, -2, 3, 9}));
}

TEST(NativeGeometry, PlatformRectanglesByName) {
    tagRECT wide{};
    wide.left = 65537;
    wide.top = -1;
    wide.right = 0x12348000;
    wide.bottom = 70000;
    XNRect rect{};
    RECTToXNRect(wide, rect);
    EXPECT_EQ(Of(rect), (Corners{-1, 1, 4464, -32768}));
    EXPECT_EQ(Of(XRect(wide)), Of(rect));
    XNRectToRECT(rect, wide);
    EXPECT_EQ(Of(wide), Of(rect));

    _SMALL_RECT console{};
    XNRectToSRect(rect, console);
    EXPECT_EQ(Of(console), Of(rect));
    rect = {};
    SRectToXNRect(console, rect);
    EXPECT_EQ(Of(rect), Of(console));
    wide = {};
    SRectToRECT(console, wide);
    EXPECT_EQ(Of(wide), Of(console));
}

TEST(NativeGeometry, PlatformPointsByName) {
    tagPOINT wide{};
    wide.x = 70000;
    wide.y = -1;
    XNPoint point{};
    POINTToXNPoint(wide, point);
    EXPECT_EQ(At(point), (Place{-1, 4464}));
    EXPECT_EQ(At(XPoint(wide)), (Place{-1, 4464}));
    XNPointToPOINT(XNPoint{-2, 5}, wide);
    EXPECT_EQ(At(wide), (Place{-2, 5}));
}

TEST(NativeGeometry, PointsTakeTheHorizontalFirstAndStoreItSecond) {
    EXPECT_EQ(At(XPoint(3, 4)), (Place{4, 3}));
    EXPECT_EQ(At(XLongPoint(3, 4)), (Place{4, 3}));
}

TEST(NativeGeometry, NativeRecordsWidenWithTheirSignAndNarrowWithout) {
    const XNRect native{-1, 2, -3, 4};
    EXPECT_EQ(Of(XRect(native)), Of(native));
    EXPECT_EQ(Of(XLongRect(native)), Of(native));
    EXPECT_EQ(At(XPoint(XNPoint{-1, 2})), (Place{-1, 2}));
    EXPECT_EQ(At(XLongPoint(XNPoint{-1, 2})), (Place{-1, 2}));
    XNRect back{};
    XLongRect(70000, 65537, -65537, 4).ToNativeRect(back);
    EXPECT_EQ(Of(back), (Corners{4464, 1, -1, 4}));
}

}  // namespace
