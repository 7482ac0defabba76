#include <veldt20/geometry_long.h>

#include <cstddef>

#include "geometry/rectangle_rules.h"

namespace geometry = veldt::geometry;

static_assert(offsetof(XLongPoint, y) == 0 && offsetof(XLongPoint, x) == 4);
static_assert(offsetof(XLongRect, top) == 0 && offsetof(XLongRect, left) == 4 &&
              offsetof(XLongRect, bottom) == 8 && offsetof(XLongRect, right) == 12);

XLongPoint::XLongPoint(std::int32_t horizontal, std::int32_t vertical) noexcept
    : y(vertical), x(horizontal) {}

XLongPoint::XLongPoint(const XNPoint& point) noexcept : y(point.y), x(point.x) {}

XLongRect::XLongRect(std::int32_t topEdge, std::int32_t leftEdge, std::int32_t bottomEdge,
                     std::int32_t rightEdge) noexcept
    : top(topEdge), left(leftEdge), bottom(bottomEdge), right(rightEdge) {}

XLongRect::XLongRect(const XNRect& rect) noexcept
    : XLongRect(rect.top, rect.left, rect.bottom, rect.right) {}

void XLongRect::Set(std::int32_t topEdge, std::int32_t leftEdge, std::int32_t bottomEdge,
                    std::int32_t rightEdge) noexcept {
    *this = XLongRect(topEdge, leftEdge, bottomEdge, rightEdge);
}

XLongPoint XLongRect::TopLeft() const noexcept {
    return XLongPoint(left, top);
}

XLongPoint XLongRect::BotRight() const noexcept {
    return XLongPoint(right, bottom);
}

void XLongRect::ToNativeRect(XNRect& rect) const noexcept {
    rect.top = static_cast<std::int16_t>(top);
    rect.left = static_cast<std::int16_t>(left);
    rect.bottom = static_cast<std::int16_t>(bottom);
    rect.right = static_cast<std::int16_t>(right);
}

XLongRect& XLongRect::operator+=(const XLongPoint& distance) noexcept {
    geometry::MoveForwards(*this, distance);
    return *this;
}

XLongRect& XLongRect::operator-=(const XLongPoint& distance) noexcept {
    geometry::MoveBack(*this, distance);
    return *this;
}

XLongRect& XLongRect::operator&=(const XLongRect& other) noexcept {
    geometry::Intersect(*this, other);
    return *this;
}

int XLongRect::SectRect(const XLongRect& other, XNRect& common) noexcept {
    if (!geometry::Intersect(*this, other)) {
        return 0;
    }
    ToNativeRect(common);
    return 1;
}

int XLongRect::IsEmpty() const noexcept {
    return geometry::IsEmpty(*this);
}

int XLongRect::IsValid() const noexcept {
    return geometry::IsValid(*this);
}

int operator==(const XLongRect& a, const XLongRect& b) noexcept {
    return geometry::AreEqual(a, b);
}

int operator!=(const XLongRect& a, const XLongRect& b) noexcept {
    return !geometry::AreEqual(a, b);
}
