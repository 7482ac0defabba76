#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <ostream>

#include "geometry/coordinates.h"
#include "support/seed.h"

namespace veldt::tests {

void PrintTo(const Wide& w, std::ostream* stream) {
    *stream << w.top << ", " << w.left << ", " << w.bottom << ", " << w.right;
}

template <class Kind>
class Rectangles : public testing::Test {};

using Kinds = testing::Types<Short, Long, Fixed>;
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

TYPED_TEST(Rectangles, FieldsAreTakenInTheirOrder) {
    using Rect = typename TypeParam::Rect;
    using Fields = std::array<typename TypeParam::Coordinate, 4>;
    using Corner = std::array<typename TypeParam::Coordinate, 2>;
    Rect rect(1, 2, 3, 4);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{1, 2, 3, 4}));
    rect.Set(5, 6, 7, 8);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{5, 6, 7, 8}));
    EXPECT_EQ(std::bit_cast<Corner>(rect.TopLeft()), (Corner{5, 6}));
    if constexpr (requires { rect.BotRight(); }) {
        EXPECT_EQ(std::bit_cast<Corner>(rect.BotRight()), (Corner{7, 8}));
    }
    if constexpr (requires { rect == rect; }) {
        EXPECT_EQ(rect == Rect(5, 6, 7, 8), 1);
        EXPECT_EQ(rect != Rect(5, 6, 7, 8), 0);
        for (std::size_t field = 0; field < 4; ++field) {
            Fields other{5, 6, 7, 8};
            ++other[field];
            EXPECT_EQ(rect == std::bit_cast<Rect>(other), 0);
            EXPECT_EQ(rect != std::bit_cast<Rect>(other), 1);
        }
    }
}

}  // namespace veldt::tests
