// Points and rectangles of 16-bit coordinates.
#pragma once

#include <veldt20/export.h>
#include <veldt20/geometry_native.h>

#include <cstdint>

/// A point of whole coordinates from -32768 to 32767, in the native record's form. Take XLongPoint
/// where sums may leave that range.
struct VELDT20_API XPoint {
    std::int16_t y;  ///< downwards
    std::int16_t x;  ///< to the right

    /// Leaves the coordinates unset.
    XPoint() = default;
    /// Takes the coordinates, horizontal first.
    XPoint(std::int16_t horizontal, std::int16_t vertical) noexcept;
    /// The same point.
    XPoint(const XNPoint& point) noexcept;
    /// Keeps the low 16 bits of each coordinate.
    XPoint(tagPOINT point) noexcept;
};

/// A rectangle of such coordinates, in the native record's form.
struct VELDT20_API XRect {
    std::int16_t top;     ///< y of the top edge
    std::int16_t left;    ///< x of the left edge
    std::int16_t bottom;  ///< y of the bottom edge
    std::int16_t right;   ///< x of the right edge

    /// Leaves the coordinates unset.
    XRect() = default;
    /// Takes the edges as they come: nothing is put in order.
    XRect(std::int16_t topEdge, std::int16_t leftEdge, std::int16_t bottomEdge,
          std::int16_t rightEdge) noexcept;
    /// The same rectangle.
    XRect(const XNRect& rect) noexcept;
    /// Keeps the low 16 bits of each coordinate.
    XRect(const tagRECT& rect) noexcept;
    /// Takes the edges as they come: nothing is put in order.
    void Set(std::int16_t topEdge, std::int16_t leftEdge, std::int16_t bottomEdge,
             std::int16_t rightEdge) noexcept;

    /// A copy of the corner.
    XPoint TopLeft() const noexcept;
    XPoint BotRight() const noexcept;

    /// Moves both corners.
    XRect& operator+=(const XPoint& distance) noexcept;
    XRect& operator-=(const XPoint& distance) noexcept;
    /// The part that both cover, or all zero where they neither overlap nor touch. Rectangles that
    /// touch leave their common edge, valid and empty.
    XRect& operator&=(const XRect& other) noexcept;
    /// Intersects in place. Gives 1 with the part in `common` too; 0 if there is none, and then
    /// this rectangle is all zero and `common` as it was.
    int SectRect(const XRect& other, XNRect& common) noexcept;

    /// 1 without area, else 0.
    int IsEmpty() const noexcept;
    /// 1 unless an edge lies on the wrong side of the opposite one, else 0.
    int IsValid() const noexcept;
};
