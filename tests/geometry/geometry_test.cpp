// Points and rectangles of all widths, on random coordinates against 64-bit arithmetic, and the
// records that they are made of and turned into.
#include <gtest/gtest.h>
#include <veldt20/fixed_point.h>
#include <veldt20/geometry.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "platform.h"
#include "support/seed.h"

namespace veldt::tests {

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
    using Field = typename TestFixture::Coordinate;
    TypeParam rect(1, 2, 3, 4);
    EXPECT_EQ(InOrder<Field>(rect), (Numbers{1, 2, 3, 4}));
    rect.Set(5, 6, 7, 8);
    EXPECT_EQ(InOrder<Field>(rect), (Numbers{5, 6, 7, 8}));
    EXPECT_EQ(InOrder<Field>(rect.TopLeft()), (Numbers{5, 6}));
    if constexpr (requires { rect.BotRight(); }) {
        EXPECT_EQ(InOrder<Field>(rect.BotRight()), (Numbers{7, 8}));
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

        const XFixPoint q = rect.TopLeft();
        XFixPoint p;
        p.Set(Any(), Any());
        const std::int64_t x = p.x, y = p.y;
        EXPECT_EQ(rect.Contains(p),
                  a.left <= x && x <= a.right && a.top <= y && y <= a.bottom ? 1 : 0);
        XFixRect changed = other;
        changed.PtToRect(p, q);
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

        EXPECT_EQ(p == q, p.x == q.x && p.y == q.y ? 1 : 0);
        EXPECT_EQ(p != q, p.x == q.x && p.y == q.y ? 0 : 1);
        EXPECT_EQ(p < q, p.x < q.x && p.y < q.y ? 1 : 0);
        EXPECT_EQ(p > q, p.x > q.x && p.y > q.y ? 1 : 0);
        EXPECT_EQ(p <= q, p.x <= q.x && p.y <= q.y ? 1 : 0);
        EXPECT_EQ(p >= q, p.x >= q.x && p.y >= q.y ? 1 : 0);
        EXPECT_EQ(q + p == (rect + p).TopLeft(), 1);
        EXPECT_EQ(q - p == (rect - p).TopLeft(), 1);
        EXPECT_EQ((XFixPoint(q) += p) == q + p, 1);
        EXPECT_EQ((XFixPoint(q) -= p) == q - p, 1);
        EXPECT_EQ(Long(q * p), (Numbers{XFixMultiply(q.x, p.x), XFixMultiply(q.y, p.y)}));
        EXPECT_EQ(Long(q / p), (Numbers{XFixDivide(q.x, p.x), XFixDivide(q.y, p.y)}));
        EXPECT_EQ((XFixPoint(q) *= p) == q * p, 1);
        EXPECT_EQ((XFixPoint(q) /= p) == q / p, 1);

        changed.Set(rect.BottomRight(), q);
        EXPECT_EQ(Widen(changed), (Wide{a.bottom, a.right, a.top, a.left}));
        changed.TopRight(rect.TopRight());
        changed.BottomLeft(rect.BottomLeft());
        EXPECT_EQ(Widen(changed), a);
        changed.TopLeft(other.TopLeft());
        changed.BottomRight(other.BottomRight());
        EXPECT_EQ(Widen(changed), b);
    }
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

}  // namespace veldt::tests
