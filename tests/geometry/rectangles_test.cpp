#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "geometry/coordinates.h"
#include "support/seed.h"

namespace veldt::tests {

void PrintTo(const Wide& w, std::ostream* stream) {
    *stream << w.top << ", " << w.left << ", " << w.bottom << ", " << w.right;
}

template <class Kind>
class Rectangles : public testing::Test {};

using Kinds = testing::Types<Short, Long>;
TYPED_TEST_SUITE(Rectangles, Kinds);

// In all of these: top, left, bottom, right.
struct Case {
    Wide a, b, common;
    bool sect;
};

constexpr Case kCases[] = {
    {{0, 0, 10, 10}, {5, 5, 20, 20}, {5, 5, 10, 10}, true},
    {{0, 0, 10, 10}, {0, 10, 10, 20}, {0, 10, 10, 10}, true},
    {{0, 0, 10, 10}, {10, 10, 20, 20}, {10, 10, 10, 10}, true},
    {{0, 0, 10, 10}, {20, 20, 30, 30}, {0, 0, 0, 0}, false},
    {{0, 0, 10, 10}, {2, 11, 8, 12}, {0, 0, 0, 0}, false},
    {{0, 0, 10, 10}, {4, 4, 4, 8}, {4, 4, 4, 8}, true},
    {{0, 0, 10, 10}, {8, 0, 2, 10}, {0, 0, 0, 0}, false},
    {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, true},
};

TYPED_TEST(Rectangles, IntersectionTable) {
    using Rect = typename TypeParam::Rect;
    for (const Case& c : kCases) {
        Rect rect = FromWide<Rect>(c.a);
        EXPECT_EQ(&(rect &= FromWide<Rect>(c.b)), &rect);
        EXPECT_EQ(Widen(rect), c.common);
        if constexpr (requires(XNRect & out) { rect.SectRect(rect, out); }) {
            rect = FromWide<Rect>(c.a);
            XNRect out{77, 77, 77, 77};
            EXPECT_EQ(rect.SectRect(FromWide<Rect>(c.b), out), c.sect ? 1 : 0);
            EXPECT_EQ(Widen(rect), c.common);
            EXPECT_EQ(Widen(out), c.sect ? c.common : (Wide{77, 77, 77, 77}));
        }
    }
}

TYPED_TEST(Rectangles, RandomAgainstWideArithmetic) {
    using Rect = typename TypeParam::Rect;
    using Point = typename TypeParam::Point;
    using Coordinate = typename TypeParam::Coordinate;
    std::mt19937 random(Seed());
    const auto any = [&] { return AnyCoordinate<Coordinate>(random); };
    for (int run = 0; run < 20000 && !this->HasFailure(); ++run) {
        const Wide a{any(), any(), any(), any()};
        const Wide b{any(), any(), any(), any()};
        const Rect rect = FromWide<Rect>(a);
        EXPECT_EQ(rect.IsValid(), a.Valid() ? 1 : 0);
        EXPECT_EQ(rect.IsEmpty(), a.Empty() ? 1 : 0);

        Wide common{std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
                    std::min(a.right, b.right)};
        if (!common.Valid()) {
            common = {};
        }
        Rect changed = rect;
        EXPECT_EQ(Widen(changed &= FromWide<Rect>(b)), common);

        const Point distance(any(), any());
        const auto [dx, dy] = std::pair<std::int64_t, std::int64_t>(distance.x, distance.y);
        changed = rect;
        EXPECT_EQ(Widen(changed += distance),
                  Wrapped<Coordinate>({a.top + dy, a.left + dx, a.bottom + dy, a.right + dx}));
        EXPECT_EQ(Widen(changed -= distance), a);
        EXPECT_EQ(Widen(changed -= distance),
                  Wrapped<Coordinate>({a.top - dy, a.left - dx, a.bottom - dy, a.right - dx}));
    }
}

TEST(RectangleFields, AreTakenInTheirOrder) {
    XRect shortRect(1, 2, 3, 4);
    EXPECT_EQ(Widen(shortRect), (Wide{1, 2, 3, 4}));
    shortRect.Set(5, 6, 7, 8);
    EXPECT_EQ(Widen(shortRect), (Wide{5, 6, 7, 8}));
    EXPECT_EQ(shortRect.TopLeft().y, 5);
    EXPECT_EQ(shortRect.TopLeft().x, 6);
    EXPECT_EQ(shortRect.BotRight().y, 7);
    EXPECT_EQ(shortRect.BotRight().x, 8);
    XLongRect longRect(1, 2, 3, 4);
    EXPECT_EQ(Widen(longRect), (Wide{1, 2, 3, 4}));
    longRect.Set(5, 6, 7, 8);
    EXPECT_EQ(Widen(longRect), (Wide{5, 6, 7, 8}));
    EXPECT_EQ(longRect.TopLeft().y, 5);
    EXPECT_EQ(longRect.TopLeft().x, 6);
    EXPECT_EQ(longRect.BotRight().y, 7);
    EXPECT_EQ(longRect.BotRight().x, 8);
}

TEST(RectangleFields, LongOnesAreEqualInAllFour) {
    const XLongRect rect(1, 2, 3, 4);
    EXPECT_EQ(rect == XLongRect(1, 2, 3, 4), 1);
    EXPECT_EQ(rect != XLongRect(1, 2, 3, 4), 0);
    for (const XLongRect& other : {XLongRect(0, 2, 3, 4), XLongRect(1, 0, 3, 4),
                                   XLongRect(1, 2, 0, 4), XLongRect(1, 2, 3, 0)}) {
        EXPECT_EQ(rect == other, 0);
        EXPECT_EQ(rect != other, 1);
    }
}

}  // namespace veldt::tests
