// Points and rectangles of 32-bit coordinates.
#pragma once

#include <veldt20/export.h>
#include <veldt20/geometry_native.h>

#include <cstdint>

/// A point of 32-bit whole coordinates. Take XFixPoint where fractions count.
class VELDT20_API XLongPoint {
  public:
    std::int32_t y;  ///< downwards
    std::int32_t x;  ///< to the right

    /// Leaves the coordinates unset.
    XLongPoint() = default;
    /// Takes the coordinates, horizontal first.
    XLongPoint(std::int32_t horizontal, std::int32_t vertical) noexcept;
    /// The same point.
    XLongPoint(const XNPoint& point) noexcept;
};

/// A rectangle of 32-bit whole coordinates.
class VELDT20_API XLongRect {
  public:
    std::int32_t top;     ///< y of the top edge
    std::int32_t left;    ///< x of the left edge
    std::int32_t bottom;  ///< y of the bottom edge
    std::int32_t right;   ///< x of the right edge

    /// Leaves the coordinates unset.
    XLongRect() = default;
    /// Takes the edges as they come: nothing is put in order.
    XLongRect(std::int32_t topEdge, std::int32_t leftEdge, std::int32_t bottomEdge,
              std::int32_t rightEdge) noexcept;
    /// The same rectangle.
    XLongRect(const XNRect& rect) noexcept;
    /// Takes the edges as they come: nothing is put in order.
    void Set(std::int32_t topEdge, std::int32_t leftEdge, std::int32_t bottomEdge,
             std::int32_t rightEdge) noexcept;

    /// A copy of the corner.
    XLongPoint TopLeft() const noexcept;
    XLongPoint BotRight() const noexcept;
    /// The low 16 bits of each coordinate.
    void ToNativeRect(XNRect& rect) const noexcept;

    /// Moves both corners.
    XLongRect& operator+=(const XLongPoint& distance) noexcept;
    XLongRect& operator-=(const XLongPoint& distance) noexcept;
    /// The part that both cover, or all zero where they neither overlap nor touch. Rectangles that
    /// touch leave their common edge, valid and empty.
    XLongRect& operator&=(const XLongRect& other) noexcept;
    /// Intersects in place. Gives 1 with the low 16 bits of the part in `common`; 0 if there is
    /// none, and then this rectangle is all zero and `common` as it was.
    int SectRect(const XLongRect& other, XNRect& common) noexcept;

    /// 1 without area, else 0.
    int IsEmpty() const noexcept;
    /// 1 unless an edge lies on the wrong side of the opposite one, else 0.
    int IsValid() const noexcept;
};

/// 1 where all four coordinates are equal, else 0; != the other way round.
VELDT20_API int operator==(const XLongRect& a, const XLongRect& b) noexcept;
VELDT20_API int operator!=(const XLongRect& a, const XLongRect& b) noexcept;
