// Points and rectangles of 16.16 fixed-point coordinates: 0x00010000 is 1.0.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// A point of fixed-point coordinates, horizontal first.
class VELDT20_API XFixPoint {
  public:
    std::int32_t x;
    std::int32_t y;

    /// Leaves the coordinates unset.
    XFixPoint() = default;
    XFixPoint(std::int32_t horizontal, std::int32_t vertical);
    void Set(std::int32_t horizontal, std::int32_t vertical);

    /// Sums wrap. Products and quotients are XFixMultiply and XFixDivide, coordinate by coordinate.
    XFixPoint& operator+=(const XFixPoint& other);
    XFixPoint& operator-=(const XFixPoint& other);
    XFixPoint& operator*=(const XFixPoint& other);
    XFixPoint& operator/=(const XFixPoint& other);
};

/// 1 or 0. Each order asks for it in both coordinates at once, so of two points it may be that none
/// holds, and <= isn't "less or equal": don't sort by these.
VELDT20_API int operator==(const XFixPoint& a, const XFixPoint& b);
VELDT20_API int operator!=(const XFixPoint& a, const XFixPoint& b);
VELDT20_API int operator<(const XFixPoint& a, const XFixPoint& b);
VELDT20_API int operator>(const XFixPoint& a, const XFixPoint& b);
VELDT20_API int operator<=(const XFixPoint& a, const XFixPoint& b);
VELDT20_API int operator>=(const XFixPoint& a, const XFixPoint& b);

VELDT20_API XFixPoint operator+(const XFixPoint& a, const XFixPoint& b);
VELDT20_API XFixPoint operator-(const XFixPoint& a, const XFixPoint& b);
VELDT20_API XFixPoint operator*(const XFixPoint& a, const XFixPoint& b);
VELDT20_API XFixPoint operator/(const XFixPoint& a, const XFixPoint& b);

/// A rectangle of fixed-point coordinates, horizontal first.
class VELDT20_API XFixRect {
  public:
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;

    /// Leaves the coordinates unset.
    XFixRect() = default;
    XFixRect(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
             std::int32_t bottomEdge);
    void Set(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
             std::int32_t bottomEdge);
    void Set(const XFixPoint& topLeft, const XFixPoint& bottomRight);
    /// The rectangle with `a` and `b` at opposite corners, whichever those are: always valid.
    void PtToRect(const XFixPoint& a, const XFixPoint& b);

    XFixPoint TopLeft() const;
    XFixPoint TopRight() const;
    XFixPoint BottomRight() const;
    XFixPoint BottomLeft() const;
    /// Puts a corner there; the opposite one stays.
    void TopLeft(const XFixPoint& corner);
    void TopRight(const XFixPoint& corner);
    void BottomRight(const XFixPoint& corner);
    void BottomLeft(const XFixPoint& corner);

    /// Negative where the rectangle isn't valid. They wrap: one wider than 32767 and a fraction has
    /// a negative width too.
    std::int32_t Width() const;
    std::int32_t Height() const;

    /// Moves every edge inwards, outwards where negative. Nothing keeps edges from passing the
    /// opposite ones.
    void Inset(std::int32_t dx, std::int32_t dy);
    /// Moves the whole.
    void Offset(std::int32_t dx, std::int32_t dy);
    XFixRect& operator+=(const XFixPoint& distance);
    XFixRect& operator-=(const XFixPoint& distance);

    /// The part that both cover, or all zero where they neither overlap nor touch. Rectangles that
    /// touch leave their common edge, valid and empty.
    XFixRect& operator&=(const XFixRect& other);
    /// The least rectangle around both. An empty one counts too: all zero stretches to the origin.
    XFixRect& operator|=(const XFixRect& other);

    /// 1 where `point` lies inside or on any of the four edges, else 0.
    int Contains(const XFixPoint& point) const;
    /// 1 without area, else 0.
    int IsEmpty() const;
    /// 1 unless an edge lies on the wrong side of the opposite one, else 0.
    int IsValid() const;
};

/// 1 where all four coordinates are equal, else 0; != the other way round.
VELDT20_API int operator==(const XFixRect& a, const XFixRect& b);
VELDT20_API int operator!=(const XFixRect& a, const XFixRect& b);

/// What the assignment of the same sign makes of a copy of the left operand.
VELDT20_API XFixRect operator&(const XFixRect& a, const XFixRect& b);
VELDT20_API XFixRect operator|(const XFixRect& a, const XFixRect& b);
VELDT20_API XFixRect operator+(const XFixRect& rect, const XFixPoint& distance);
VELDT20_API XFixRect operator-(const XFixRect& rect, const XFixPoint& distance);
