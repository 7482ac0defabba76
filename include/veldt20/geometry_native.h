// The native point and rectangle, and their conversions to and from the platform's.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

struct tagPOINT;
struct tagRECT;
struct _SMALL_RECT;

/// A point as it lies in files and resources: four bytes, vertical coordinate first. It may alias
/// other types because TopLeft and BotRight give one that is part of a rectangle.
struct [[gnu::may_alias]] XNPoint {
    std::int16_t y;  ///< downwards
    std::int16_t x;  ///< to the right
};

/// A rectangle as it lies in files and resources: two points, eight bytes.
struct XNRect {
    std::int16_t top;     ///< y of the top edge
    std::int16_t left;    ///< x of the left edge
    std::int16_t bottom;  ///< y of the bottom edge
    std::int16_t right;   ///< x of the right edge
};

static_assert(sizeof(XNPoint) == 4 && sizeof(XNRect) == 2 * sizeof(XNPoint));

/// A corner inside `rect`: writing to it changes the rectangle, and it lives as long as that.
VELDT20_API XNPoint& TopLeft(XNRect& rect) noexcept;
VELDT20_API const XNPoint& TopLeft(const XNRect& rect) noexcept;
VELDT20_API XNPoint& BotRight(XNRect& rect) noexcept;
VELDT20_API const XNPoint& BotRight(const XNRect& rect) noexcept;

/// To the native records: the low 16 bits of each field, by name.
VELDT20_API void RECTToXNRect(const tagRECT& from, XNRect& to) noexcept;
VELDT20_API void POINTToXNPoint(const tagPOINT& from, XNPoint& to) noexcept;
VELDT20_API void SRectToXNRect(const _SMALL_RECT& from, XNRect& to) noexcept;
/// From 16 bits on: each field with its sign, by name.
VELDT20_API void XNRectToRECT(const XNRect& from, tagRECT& to) noexcept;
VELDT20_API void XNPointToPOINT(const XNPoint& from, tagPOINT& to) noexcept;
VELDT20_API void XNRectToSRect(const XNRect& from, _SMALL_RECT& to) noexcept;
VELDT20_API void SRectToRECT(const _SMALL_RECT& from, tagRECT& to) noexcept;
