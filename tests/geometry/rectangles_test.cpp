// Points and rectangles of all widths, on random coordinates against 64-bit arithmetic.
#include <gtest/gtest.h>
#include <veldt20/geometry.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <random>

#include "support/seed.h"

namespace veldt::tests {

/// A rectangle in a width where nothing under test can overflow.
struct Wide {
    std::int64_t top, left, bottom, right;

    bool operator==(const Wide&) const = default;
};

Wide Widen(const auto& r) {
    return {r.top, r.left, r.bottom, r.right};
}

/// What fits of 64-bit coordinates, whatever the order in which the class takes them.
template <class Rect>
Rect Narrow(const Wide& w) {
    using Coordinate = decltype(Rect::top);
    Rect r;
    r.top = static_cast<Coordinate>(w.top);
    r.left = static_cast<Coordinate>(w.left);
    r.bottom = static_cast<Coordinate>(w.bottom);
    r.right = static_cast<Coordinate>(w.right);
    return r;
}

/// The same in 64 bits again.
template <class Rect>
Wide Wrapped(const Wide& w) {
    return Widen(Narrow<Rect>(w));
}

template <class Rect>
class Rectangles : public testing::Test {
  protected:
    using Coordinate = decltype(Rect::top);

    /// Often the same or near another, often at the ends of the range, else anything.
    Coordinate Any() {
        using Limits = std::numeric_limits<Coordinate>;
        const auto few = static_cast<Coordinate>(random_() % 2);
        const Coordinate choice[] = {few, static_cast<Coordinate>(Limits::min() + few),
                                     static_cast<Coordinate>(Limits::max() - few),
                                     static_cast<Coordinate>(random_())};
        return choice[random_() % 4];
    }
    Wide AnyWide() { return {Any(), Any(), Any(), Any()}; }

  private:
    std::mt19937 random_{Seed()};
};

using Classes = testing::Types<XRect, XLongRect, XFixRect>;
TYPED_TEST_SUITE(Rectangles, Classes);

TYPED_TEST(Rectangles, RandomAgainstWideArithmetic) {
    for (int run = 0; run < 20000 && !this->HasFailure(); ++run) {
        const Wide a = this->AnyWide(), b = this->AnyWide();
        const auto rect = Narrow<TypeParam>(a), other = Narrow<TypeParam>(b);
        const bool valid = a.left <= a.right && a.top <= a.bottom;
        EXPECT_EQ(rect.IsValid(), valid ? 1 : 0);
        EXPECT_EQ(rect.IsEmpty(), !valid || a.left == a.right || a.top == a.bottom ? 1 : 0);
        if constexpr (requires { rect == other; }) {
            EXPECT_EQ(rect == other, a == b ? 1 : 0);
            EXPECT_EQ(rect != other, a == b ? 0 : 1);
        }

        const Wide both{std::max(a.top, b.top), std::max(a.left, b.left),
                        std::min(a.bottom, b.bottom), std::min(a.right, b.right)};
        const bool meet = both.top <= both.bottom && both.left <= both.right;
        auto changed = rect;
        EXPECT_EQ(&(changed &= other), &changed);
        EXPECT_EQ(Widen(changed), meet ? both : Wide{});
        if constexpr (requires(XNRect & out) { changed.SectRect(other, out); }) {
            changed = rect;
            XNRect out{77, 77, 77, 77};
            EXPECT_EQ(changed.SectRect(other, out), meet ? 1 : 0);
            EXPECT_EQ(Widen(changed), meet ? both : Wide{});
            EXPECT_EQ(Widen(out), meet ? Wrapped<XNRect>(both) : (Wide{77, 77, 77, 77}));
        }

        const decltype(rect.TopLeft()) by(this->Any(), this->Any());
        const std::int64_t x = by.x, y = by.y;
        EXPECT_EQ(Widen(TypeParam(rect) += by),
                  Wrapped<TypeParam>({a.top + y, a.left + x, a.bottom + y, a.right + x}));
        EXPECT_EQ(Widen(TypeParam(rect) -= by),
                  Wrapped<TypeParam>({a.top - y, a.left - x, a.bottom - y, a.right - x}));
    }
}

TYPED_TEST(Rectangles, FieldsAreTakenInTheirOrder) {
    using Fields = std::array<typename TestFixture::Coordinate, 4>;
    TypeParam rect(1, 2, 3, 4);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{1, 2, 3, 4}));
    rect.Set(5, 6, 7, 8);
    EXPECT_EQ(std::bit_cast<Fields>(rect), (Fields{5, 6, 7, 8}));
    using Corner = std::array<typename TestFixture::Coordinate, 2>;
    EXPECT_EQ(std::bit_cast<Corner>(rect.TopLeft()), (Corner{5, 6}));
    if constexpr (requires { rect.BotRight(); }) {
        EXPECT_EQ(std::bit_cast<Corner>(rect.BotRight()), (Corner{7, 8}));
    }
}

using FixRectangles = Rectangles<XFixRect>;

TEST_F(FixRectangles, RandomAgainstWideArithmetic) {
    for (int run = 0; run < 20000 && !HasFailure(); ++run) {
        const Wide a = AnyWide(), b = AnyWide();
        const auto rect = Narrow<XFixRect>(a), other = Narrow<XFixRect>(b);
        EXPECT_EQ(Widen(rect | other),
                  (Wide{std::min(a.top, b.top), std::min(a.left, b.left),
                        std::max(a.bottom, b.bottom), std::max(a.right, b.right)}));
        EXPECT_EQ(Widen(rect & other), Widen(XFixRect(rect) &= other));
        EXPECT_EQ(Widen(rect | other), Widen(XFixRect(rect) |= other));
        EXPECT_EQ(rect.Width(), static_cast<std::int32_t>(a.right - a.left));
        EXPECT_EQ(rect.Height(), static_cast<std::int32_t>(a.bottom - a.top));

        const XFixPoint p(Any(), Any());
        const std::int64_t x = p.x, y = p.y;
        EXPECT_EQ(rect.Contains(p),
                  a.left <= x && x <= a.right && a.top <= y && y <= a.bottom ? 1 : 0);
        XFixRect changed = other;
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
    }
}

TEST_F(FixRectangles, CornersAreReadWrittenAndCompared) {
    for (int run = 0; run < 20000 && !HasFailure(); ++run) {
        const XFixRect rect(Any(), Any(), Any(), Any());
        const XFixPoint a = rect.TopLeft(), b = rect.BottomRight();
        EXPECT_EQ(a == b, a.x == b.x && a.y == b.y ? 1 : 0);
        EXPECT_EQ(a != b, a.x == b.x && a.y == b.y ? 0 : 1);
        EXPECT_EQ(a < b, a.x < b.x && a.y < b.y ? 1 : 0);
        EXPECT_EQ(a > b, a.x > b.x && a.y > b.y ? 1 : 0);
        EXPECT_EQ(a <= b, a.x <= b.x && a.y <= b.y ? 1 : 0);
        EXPECT_EQ(a >= b, a.x >= b.x && a.y >= b.y ? 1 : 0);
        EXPECT_EQ(a + b == (rect + b).TopLeft(), 1);
        EXPECT_EQ(a - b == (rect - b).TopLeft(), 1);
        EXPECT_EQ((XFixPoint(a) += b) == a + b, 1);
        EXPECT_EQ((XFixPoint(a) -= b) == a - b, 1);

        XFixRect other;
        other.Set(b, a);
        EXPECT_EQ(Widen(other), (Wide{b.y, b.x, a.y, a.x}));
        other.TopRight(rect.TopRight());
        other.BottomLeft(rect.BottomLeft());
        EXPECT_EQ(Widen(other), (Wide{a.y, a.x, b.y, b.x}));
        other.TopLeft(b);
        other.BottomRight(a);
        EXPECT_EQ(Widen(other), (Wide{b.y, b.x, a.y, a.x}));
    }
}

TEST(FixPoint, ProductsAndQuotientsAreTheShortcuts) {
    using Pair = std::array<std::int32_t, 2>;
    const auto of = [](const XFixPoint& p) { return std::bit_cast<Pair>(p); };
    constexpr std::int32_t k1 = 0x00010000;
    // Half of three steps is cut off where FixMul would round it.
    EXPECT_EQ(of(XFixPoint(3, -3) * XFixPoint(k1 / 2, k1 / 2)), (Pair{1, -1}));
    EXPECT_EQ(of(XFixPoint(k1, 0) / XFixPoint(0, k1)), (Pair{0x7FFFFFFF, 0}));
    EXPECT_EQ(of(XFixPoint(0, 5 * k1) / XFixPoint(0, -5 * k1)), (Pair{0, -k1}));
    XFixPoint point(0, 0);
    point.Set(2 * k1, 3 * k1);
    EXPECT_EQ(of(point *= XFixPoint(2 * k1, 4 * k1)), (Pair{4 * k1, 12 * k1}));
    EXPECT_EQ(of(point /= XFixPoint(k1, 2 * k1)), (Pair{4 * k1, 6 * k1}));
}

}  // namespace veldt::tests
