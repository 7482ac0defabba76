#include <gtest/gtest.h>
#include <veldt20/geometry.h>

#include <array>
#include <bit>
#include <utility>
#include <vector>

#include "platform.h"

namespace {

using Numbers = std::vector<int>;

/// The fields of a record in their order in memory.
template <class Field, class Record>
Numbers InOrder(const Record& record) {
    const auto fields = std::bit_cast<std::array<Field, sizeof(Record) / sizeof(Field)>>(record);
    return {fields.begin(), fields.end()};
}
Numbers Short(const auto& record) {
    return InOrder<std::int16_t>(record);
}
Numbers Long(const auto& record) {
    return InOrder<std::int32_t>(record);
}

/// What a conversion writes to its second argument.
template <class From, class To>
To Made(void (*convert)(const From&, To&) noexcept, const From& from) {
    To to{};
    convert(from, to);
    return to;
}

TEST(NativeGeometry, CornersLieInTheRectangle) {
    XNRect rect{1, 2, 3, 4};
    EXPECT_EQ(Short(TopLeft(std::as_const(rect))), (Numbers{1, 2}));
    EXPECT_EQ(Short(BotRight(std::as_const(rect))), (Numbers{3, 4}));
    TopLeft(rect) = XNPoint{-1, -2};
    BotRight(rect).x = 9;
    EXPECT_EQ(Short(rect), (Numbers{-1, -2, 3, 9}));
}

TEST(NativeGeometry, PlatformRecordsByName) {
    const auto wide = std::bit_cast<tagRECT>(std::array{65537, -1, 0x12348000, 70000});
    const XNRect rect = Made(RECTToXNRect, wide);
    EXPECT_EQ(Short(rect), (Numbers{-1, 1, 4464, -32768}));
    EXPECT_EQ(Short(XRect(wide)), Short(rect));
    const Numbers swapped{1, -1, -32768, 4464};
    EXPECT_EQ(Long(Made(XNRectToRECT, rect)), swapped);
    const _SMALL_RECT console = Made(XNRectToSRect, rect);
    EXPECT_EQ(Short(console), swapped);
    EXPECT_EQ(Long(Made(SRectToRECT, console)), swapped);
    EXPECT_EQ(Short(Made(SRectToXNRect, console)), Short(rect));

    const auto place = std::bit_cast<tagPOINT>(std::array{70000, -1});
    const XNPoint point = Made(POINTToXNPoint, place);
    EXPECT_EQ(Short(point), (Numbers{-1, 4464}));
    EXPECT_EQ(Short(XPoint(place)), Short(point));
    EXPECT_EQ(Long(Made(XNPointToPOINT, point)), (Numbers{4464, -1}));
}

TEST(NativeGeometry, ClassesTakeAndGiveNativeRecords) {
    EXPECT_EQ(Short(XPoint(XNPoint{-1, 2})), (Numbers{-1, 2}));
    EXPECT_EQ(Long(XLongPoint(XNPoint{-1, 2})), (Numbers{-1, 2}));
    const XNRect native{-1, 2, -3, 4};
    EXPECT_EQ(Short(XRect(native)), (Numbers{-1, 2, -3, 4}));
    EXPECT_EQ(Long(XLongRect(native)), (Numbers{-1, 2, -3, 4}));
    XNRect back{};
    XLongRect(70000, 65537, -65537, 4).ToNativeRect(back);
    EXPECT_EQ(Short(back), (Numbers{4464, 1, -1, 4}));
}

}  // namespace
