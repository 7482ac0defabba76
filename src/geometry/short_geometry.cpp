#include <veldt20/geometry_short.h>

#include <cstddef>

#include "geometry/rectangle_rules.h"
#include "platform/platform.h"

namespace geometry = veldt::geometry;

static_assert(offsetof(XPoint, y) == offsetof(XNPoint, y) &&
              offsetof(XPoint, x) == offsetof(XNPoint, x) && sizeof(XPoint) == sizeof(XNPoint));
static_assert(offsetof(XRect, top) == offsetof(XNRect, top) &&
              offsetof(XRect, left) == offsetof(XNRect, left) &&
              offsetof(XRect, bottom) == offsetof(XNRect, bottom) &&
              offsetof(XRect, right) == offsetof(XNRect, right) && sizeof(XRect) == sizeof(XNRect));

XPoint::XPoint(std::int16_t horizontal, std::int16_t vertical) noexcept
    : y(vertical), x(horizontal) {}

XPoint::XPoint(const XNPoint& point) noexcept : y(point.y), x(point.x) {}

XPoint::XPoint(tagPOINT point) noexcept
    : y(static_cast<std::int16_t>(point.y)), x(static_cast<std::int16_t>(point.x)) {}

XRect::XRect(std::int16_t topEdge, std::int16_t leftEdge, std::int16_t bottomEdge,
             std::int16_t rightEdge) noexcept
    : top(topEdge), left(leftEdge), bottom(bottomEdge), right(rightEdge) {}

XRect::XRect(const XNRect& rect) noexcept : XRect(rect.top, rect.left, rect.bottom, rect.right) {}

XRect::XRect(const tagRECT& rect) noexcept
    : XRect(static_cast<std::int16_t>(rect.top), static_cast<std::int16_t>(rect.left),
            static_cast<std::int16_t>(rect.bottom), static_cast<std::int16_t>(rect.right)) {}

void XRect::Set(std::int16_t topEdge, std::int16_t leftEdge, std::int16_t bottomEdge,
                std::int16_t rightEdge) noexcept {
    *this = XRect(topEdge, leftEdge, bottomEdge, rightEdge);
}

XPoint XRect::TopLeft() const noexcept {
    return XPoint(left, top);
}

XPoint XRect::BotRight() const noexcept {
    return XPoint(right, bottom);
}

XRect& XRect::operator+=(const XPoint& distance) noexcept {
    geometry::MoveForwards(*this, distance);
    return *this;
}

XRect& XRect::operator-=(const XPoint& distance) noexcept {
    geometry::MoveBack(*this, distance);
    return *this;
}

XRect& XRect::operator&=(const XRect& other) noexcept {
    geometry::Intersect(*this, other);
    return *this;
}

int XRect::SectRect(const XRect& other, XNRect& common) noexcept {
    if (!geometry::Intersect(*this, other)) {
        return 0;
    }
    common = {top, left, bottom, right};
    return 1;
}

int XRect::IsEmpty() const noexcept {
    return geometry::IsEmpty(*this);
}

int XRect::IsValid() const noexcept {
    return geometry::IsValid(*this);
}
