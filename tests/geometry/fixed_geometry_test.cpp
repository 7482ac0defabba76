#include <gtest/gtest.h>
#include <veldt20/geometry_fixed.h>

#include <algorithm>
#include <array>
#include <bit>

#include "geometry/coordinates.h"
#include "support/seed.h"

namespace veldt::tests {

constexpr std::int32_t k1 = 0x00010000;

using Pair = std::array<std::int32_t, 2>;

Pair Of(const XFixPoint& p) {
    return std::bit_cast<Pair>(p);
}

TEST(FixPoint, ProductsAndQuotientsAreTheShortcuts) {
    EXPECT_EQ(Of(XFixPoint(2 * k1, 3 * k1) * XFixPoint(k1 / 2, 2 * k1)), (Pair{k1, 6 * k1}));
    // Half of three steps is cut off where FixMul would round it.
    EXPECT_EQ(Of(XFixPoint(3, -3) * XFixPoint(k1 / 2, k1 / 2)), (Pair{1, -1}));
    EXPECT_EQ(Of(XFixPoint(k1, 0) / XFixPoint(0, k1)), (Pair{0x7FFFFFFF, 0}));
    EXPECT_EQ(Of(XFixPoint(0, 5 * k1) / XFixPoint(0, -5 * k1)), (Pair{0, -k1}));
}

TEST(FixPoint, OrdersAskBothCoordinates) {
    for (const XFixPoint a : {XFixPoint(1, 5), XFixPoint(2, 4), XFixPoint(2, 5), XFixPoint(1, 4)}) {
        for (const XFixPoint b : {XFixPoint(1, 5), XFixPoint(2, 4), XFixPoint(2, 5)}) {
            EXPECT_EQ(a == b, Of(a) == Of(b) ? 1 : 0);
            EXPECT_EQ(a != b, Of(a) != Of(b) ? 1 : 0);
            EXPECT_EQ(a < b, std::max(a.x - b.x, a.y - b.y) < 0 ? 1 : 0);
            EXPECT_EQ(a > b, std::min(a.x - b.x, a.y - b.y) > 0 ? 1 : 0);
            EXPECT_EQ(a <= b, std::max(a.x - b.x, a.y - b.y) <= 0 ? 1 : 0);
            EXPECT_EQ(a >= b, std::min(a.x - b.x, a.y - b.y) >= 0 ? 1 : 0);
        }
    }
}

TEST(FixRect, CornersAreReadAndWritten) {
    XFixRect r(1, 2, 3, 4);
    EXPECT_EQ(Of(r.TopRight()), (Pair{3, 2}));
    EXPECT_EQ(Of(r.BottomRight()), (Pair{3, 4}));
    EXPECT_EQ(Of(r.BottomLeft()), (Pair{1, 4}));
    r.TopRight(XFixPoint(30, 20));
    r.BottomLeft(XFixPoint(10, 40));
    EXPECT_EQ(r == XFixRect(10, 20, 30, 40), 1);
    r.TopLeft(XFixPoint(-1, -2));
    r.BottomRight(XFixPoint(-3, -4));
    EXPECT_EQ(r != XFixRect(-1, -2, -3, -4), 0);
    r.Set(XFixPoint(8, 7), XFixPoint(6, 5));
    EXPECT_EQ(r == XFixRect(8, 7, 6, 5), 1);
}

TEST(FixRect, RandomAgainstWideArithmetic) {
    std::mt19937 random(Seed());
    const auto any = [&] { return AnyCoordinate<std::int32_t>(random); };
    for (int run = 0; run < 20000 && !HasFailure(); ++run) {
        const XFixRect rect(any(), any(), any(), any()), other(any(), any(), any(), any());
        const Wide a = Widen(rect), b = Widen(other);
        EXPECT_EQ(Widen(rect | other),
                  (Wide{std::min(a.top, b.top), std::min(a.left, b.left),
                        std::max(a.bottom, b.bottom), std::max(a.right, b.right)}));
        XFixRect changed = rect;
        EXPECT_EQ(Widen(rect & other), Widen(changed &= other));
        EXPECT_EQ(rect.Width(), static_cast<std::int32_t>(a.right - a.left));
        EXPECT_EQ(rect.Height(), static_cast<std::int32_t>(a.bottom - a.top));

        const XFixPoint p(any(), any());
        const std::int64_t x = p.x, y = p.y;
        EXPECT_EQ(rect.Contains(p),
                  a.left <= x && x <= a.right && a.top <= y && y <= a.bottom ? 1 : 0);
        changed.PtToRect(p, rect.TopLeft());
        EXPECT_EQ(Widen(changed), (Wide{std::min(y, a.top), std::min(x, a.left), std::max(y, a.top),
                                        std::max(x, a.left)}));
        changed = rect;
        changed.Inset(p.x, p.y);
        EXPECT_EQ(Widen(changed),
                  Wrapped<XFixRect>({a.top + y, a.left + x, a.bottom - y, a.right - x}));
        changed = rect;
        changed.Offset(p.x, p.y);
        EXPECT_EQ(Widen(changed), Widen(rect + p));
        EXPECT_EQ(Widen(changed - p), a);
        EXPECT_EQ(Of(rect.TopLeft() + p), Of((rect + p).TopLeft()));
        EXPECT_EQ(Of(rect.TopLeft() - p), Of((rect - p).TopLeft()));
    }
}

}  // namespace veldt::tests
