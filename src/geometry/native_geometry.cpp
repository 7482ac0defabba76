#include <veldt20/geometry_native.h>

#include <cstddef>

#include "platform/platform.h"

static_assert(offsetof(XNPoint, y) == 0 && offsetof(XNPoint, x) == 2);
static_assert(offsetof(XNRect, top) == 0 && offsetof(XNRect, left) == 2 &&
              offsetof(XNRect, bottom) == 4 && offsetof(XNRect, right) == 6);

XNPoint& TopLeft(XNRect& rect) noexcept {
    return reinterpret_cast<XNPoint&>(rect.top);
}

const XNPoint& TopLeft(const XNRect& rect) noexcept {
    return reinterpret_cast<const XNPoint&>(rect.top);
}

XNPoint& BotRight(XNRect& rect) noexcept {
    return reinterpret_cast<XNPoint&>(rect.bottom);
}

const XNPoint& BotRight(const XNRect& rect) noexcept {
    return reinterpret_cast<const XNPoint&>(rect.bottom);
}

void RECTToXNRect(const tagRECT& from, XNRect& to) noexcept {
    to.top = static_cast<std::int16_t>(from.top);
    to.left = static_cast<std::int16_t>(from.left);
    to.bottom = static_cast<std::int16_t>(from.bottom);
    to.right = static_cast<std::int16_t>(from.right);
}

void POINTToXNPoint(const tagPOINT& from, XNPoint& to) noexcept {
    to.y = static_cast<std::int16_t>(from.y);
    to.x = static_cast<std::int16_t>(from.x);
}

void SRectToXNRect(const _SMALL_RECT& from, XNRect& to) noexcept {
    to.top = from.Top;
    to.left = from.Left;
    to.bottom = from.Bottom;
    to.right = from.Right;
}

void XNRectToRECT(const XNRect& from, tagRECT& to) noexcept {
    to.left = from.left;
    to.top = from.top;
    to.right = from.right;
    to.bottom = from.bottom;
}

void XNPointToPOINT(const XNPoint& from, tagPOINT& to) noexcept {
    to.x = from.x;
    to.y = from.y;
}

void XNRectToSRect(const XNRect& from, _SMALL_RECT& to) noexcept {
    to.Left = from.left;
    to.Top = from.top;
    to.Right = from.right;
    to.Bottom = from.bottom;
}

void SRectToRECT(const _SMALL_RECT& from, tagRECT& to) noexcept {
    to.left = from.Left;
    to.top = from.Top;
    to.right = from.Right;
    to.bottom = from.Bottom;
}
