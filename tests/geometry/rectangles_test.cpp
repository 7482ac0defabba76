#include <gtest/gtest.h>
#include <veldt20/geometry.h>

#include <algorithm>
#include <array>
#include <bit>

#include "geometry/coordinates.h"
#include "support/seed.h"

namespace veldt::tests {

template <class Rect>
class Rectangles : public testing::Test {};

using Classes = testing::Types<XRect, XLongRect, XFixRect>;
TYPED_TEST_SUITE(Rectangles, Classes);

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
    for (const Case& c : kCases) {
        auto rect = Narrow<TypeParam>(c.a);
        EXPECT_EQ(&(rect &= Narrow<TypeParam>(c.b)), &rect);
        EXPECT_EQ(Widen(rect), c.common);
        if constexpr (requires(XNRect & out) { rect.SectRect(rect, out); }) {
            rect = Narrow<TypeParam>(c.a);
            XNRect out{77, 77, 77, 77};
            EXPECT_EQ(rect.SectRect(Narrow<TypeParam>(c.b), out), c.sect ? 1 : 0);
            EXPECT_EQ(Widen(rect), c.common);
            EXPECT_EQ(Widen(out), c.sect ? c.common : (Wide{77, 77, 77, 77}));
        }
    }
}

TYPED_TEST(Rectangles, RandomAgainstWideArithmetic) {
    std::mt19937 random(Seed());
    const auto any = [&] { return AnyCoordinate<decltype(TypeParam::top)>(random); };
    for (int run = 0; run < 20000 && !this->HasFailure(); ++run) {
        const Wide a{any(), any(), any(), any()}, b{any(), any(), any(), any()};
        const auto rect = Narrow<TypeParam>(a);
        const bool valid = a.left <= a.right && a.top <= a.bottom;
        EXPECT_EQ(rect.IsValid(), valid ? 1 : 0);
        EXPECT_EQ(rect.IsEmpty(), !valid || a.left == a.right || a.top == a.bottom ? 1 : 0);

        const Wide common{std::max(a.top, b.top), std::max(a.left, b.left),
                          std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
        auto changed = rect;
        changed &= Narrow<TypeParam>(b);
        EXPECT_EQ(Widen(changed),
                  common.top <= common.bottom && common.left <= common.right ? common : Wide{});

        const decltype(rect.TopLeft()) distance(any(), any());
        const std::int64_t dx = distance.x, dy = distance.y;
        changed = rect;
        EXPECT_EQ(Widen(changed += distance),
                  Wrapped<TypeParam>({a.top + dy, a.left + dx, a.bottom + dy, a.right + dx}));
        changed = rect;
        EXPECT_EQ(Widen(changed -= distance),
                  Wrapped<TypeParam>({a.top - dy, a.left - dx, a.bottom - dy, a.right - dx}));
    }
}

TYPED_TEST(Rectangles, FieldsAreTakenInTheirOrder) {
    using Fields = std::array<decltype(TypeParam::top), 4>;
    using Corner = std::array<decltype(TypeParam::top), 2>;
    TypeParam rect(1, 2, 3, 4);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{1, 2, 3, 4}));
    rect.Set(5, 6, 7, 8);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{5, 6, 7, 8}));
    EXPECT_EQ(std::bit_cast<Corner>(rect.TopLeft()), (Corner{5, 6}));
    if constexpr (requires { rect.BotRight(); }) {
        EXPECT_EQ(std::bit_cast<Corner>(rect.BotRight()), (Corner{7, 8}));
    }
    if constexpr (requires { rect == rect; }) {
        EXPECT_EQ(rect == TypeParam(5, 6, 7, 8), 1);
        EXPECT_EQ(rect != TypeParam(5, 6, 7, 8), 0);
        for (const TypeParam& other : {TypeParam(4, 6, 7, 8), TypeParam(5, 4, 7, 8),
                                       TypeParam(5, 6, 4, 8), TypeParam(5, 6, 7, 4)}) {
            EXPECT_EQ(rect == other, 0);
            EXPECT_EQ(rect != other, 1);
        }
    }
}

}  // namespace veldt::tests
