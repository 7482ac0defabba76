// Points and rectangles of 16.16 fixed-point coordinates: 0x00010000 is 1.0.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// A point of fixed-point coordinates, horizontal first.
class VELDT20_API XFixPoint {
  public:
    std::int32_t x;  ///< to the right
    std::int32_t y;  ///< downwards

    /// Leaves the coordinates unset.
    XFixPoint() = default;
    /// Takes the coordinates, horizontal first.
    XFixPoint(std::int32_t horizontal, std::int32_t vertical) noexcept;
    void Set(std::int32_t horizontal, std::int32_t vertical) noexcept;

    /// Sums wrap. Products and quotients are XFixMultiply and XFixDivide, coordinate by coordinate.
    XFixPoint& operator+=(const XFixPoint& other) noexcept;
    XFixPoint& operator-=(const XFixPoint& other) noexcept;
    XFixPoint& operator*=(const XFixPoint& other) noexcept;
    XFixPoint& operator/=(const XFixPoint& other) noexcept;
};

/// 1 or 0. Each order asks for it in both coordinates at once, so of two points it may be that none
/// holds, and <= isn't "less or equal": don't sort by these.
VELDT20_API int operator==(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API int operator!=(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API int operator<(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API int operator>(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API int operator<=(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API int operator>=(const XFixPoint& a, const XFixPoint& b) noexcept;

/// What the assignment of the same sign makes of a copy of the left operand.
VELDT20_API XFixPoint operator+(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API XFixPoint operator-(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API XFixPoint operator*(const XFixPoint& a, const XFixPoint& b) noexcept;
VELDT20_API XFixPoint operator/(const XFixPoint& a, const XFixPoint& b) noexcept;

/// A rectangle of fixed-point coordinates, horizontal first.
class VELDT20_API XFixRect {
  public:
    std::int32_t left;    ///< x of the left edge
    std::int32_t top;     ///< y of the top edge
    std::int32_t right;   ///< x of the right edge
    std::int32_t bottom;  ///< y of the bottom edge

    /// Leaves the coordinates unset.
    XFixRect() = default;
    /// Takes the edges, or two corners, as they come: nothing is put in order.
    XFixRect(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
             std::int32_t bottomEdge) noexcept;
    void Set(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
             std::int32_t bottomEdge) noexcept;
    void Set(const XFixPoint& topLeft, const XFixPoint& bottomRight) noexcept;
    /// The rectangle with `a` and `b` at opposite corners, whichever those are: always valid.
    void PtToRect(const XFixPoint& a, const XFixPoint& b) noexcept;

    /// A copy of the corner.
    XFixPoint TopLeft() const noexcept;
    XFixPoint TopRight() const noexcept;
    XFixPoint BottomRight() const noexcept;
    XFixPoint BottomLeft() const noexcept;
    /// Puts a corner there; the opposite one stays.
    void TopLeft(const XFixPoint& corner) noexcept;
    void TopRight(const XFixPoint& corner) noexcept;
    void BottomRight(const XFixPoint& corner) noexcept;
    void BottomLeft(const XFixPoint& corner) noexcept;

    /// Negative where the rectangle isn't valid. They wrap: one wider than 32767 and a fraction has
    /// a negative width too.
    std::int32_t Width() const noexcept;
    std::int32_t Height() const noexcept;

    /// Moves every edge inwards, outwards where negative. Nothing keeps edges from passing the
    /// opposite ones.
    void Inset(std::int32_t dx, std::int32_t dy) noexcept;
    /// Moves the whole.
    void Offset(std::int32_t dx, std::int32_t dy) noexcept;
    /// Moves the whole by `distance`, or back by it. Sums wrap.
    XFixRect& operator+=(const XFixPoint& distance) noexcept;
    XFixRect& operator-=(const XFixPoint& distance) noexcept;

    /// The part that both cover, or all zero where they neither overlap nor touch. Rectangles that
    /// touch leave their common edge, valid and empty.
    XFixRect& operator&=(const XFixRect& other) noexcept;
    /// The least rectangle around both. An empty one counts too: all zero stretches to the origin.
    XFixRect& operator|=(const XFixRect& other) noexcept;

    /// 1 where `point` lies inside or on any of the four edges, else 0.
    int Contains(const XFixPoint& point) const noexcept;
    /// 1 without area, else 0.
    int IsEmpty() const noexcept;
    /// 1 unless an edge lies on the wrong side of the opposite one, else 0.
    int IsValid() const noexcept;
};

/// 1 where all four coordinates are equal, else 0; != the other way round.
VELDT20_API int operator==(const XFixRect& a, const XFixRect& b) noexcept;
VELDT20_API int operator!=(const XFixRect& a, const XFixRect& b) noexcept;

/// What the assignment of the same sign makes of a copy of the left operand.
VELDT20_API XFixRect operator&(const XFixRect& a, const XFixRect& b) noexcept;
VELDT20_API XFixRect operator|(const XFixRect& a, const XFixRect& b) noexcept;
VELDT20_API XFixRect operator+(const XFixRect& rect, const XFixPoint& distance) noexcept;
VELDT20_API XFixRect operator-(const XFixRect& rect, const XFixPoint& distance) noexcept;
