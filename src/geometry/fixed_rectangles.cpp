#include <veldt20/geometry_fixed.h>

#include <algorithm>
#include <cstddef>

#include "geometry/rectangle_rules.h"

namespace geometry = veldt::geometry;

using veldt::geometry::Difference;
using veldt::geometry::Sum;

static_assert(offsetof(XFixRect, left) == 0 && offsetof(XFixRect, top) == 4 &&
              offsetof(XFixRect, right) == 8 && offsetof(XFixRect, bottom) == 12);

XFixRect::XFixRect(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
                   std::int32_t bottomEdge) noexcept
    : left(leftEdge), top(topEdge), right(rightEdge), bottom(bottomEdge) {}

void XFixRect::Set(std::int32_t leftEdge, std::int32_t topEdge, std::int32_t rightEdge,
                   std::int32_t bottomEdge) noexcept {
    *this = XFixRect(leftEdge, topEdge, rightEdge, bottomEdge);
}

void XFixRect::Set(const XFixPoint& topLeft, const XFixPoint& bottomRight) noexcept {
    *this = XFixRect(topLeft.x, topLeft.y, bottomRight.x, bottomRight.y);
}

void XFixRect::PtToRect(const XFixPoint& a, const XFixPoint& b) noexcept {
    *this =
        XFixRect(std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y));
}

XFixPoint XFixRect::TopLeft() const noexcept {
    return XFixPoint(left, top);
}

XFixPoint XFixRect::TopRight() const noexcept {
    return XFixPoint(right, top);
}

XFixPoint XFixRect::BottomRight() const noexcept {
    return XFixPoint(right, bottom);
}

XFixPoint XFixRect::BottomLeft() const noexcept {
    return XFixPoint(left, bottom);
}

void XFixRect::TopLeft(const XFixPoint& corner) noexcept {
    left = corner.x;
    top = corner.y;
}

void XFixRect::TopRight(const XFixPoint& corner) noexcept {
    right = corner.x;
    top = corner.y;
}

void XFixRect::BottomRight(const XFixPoint& corner) noexcept {
    right = corner.x;
    bottom = corner.y;
}

void XFixRect::BottomLeft(const XFixPoint& corner) noexcept {
    left = corner.x;
    bottom = corner.y;
}

std::int32_t XFixRect::Width() const noexcept {
    return Difference(right, left);
}

std::int32_t XFixRect::Height() const noexcept {
    return Difference(bottom, top);
}

void XFixRect::Inset(std::int32_t dx, std::int32_t dy) noexcept {
    left = Sum(left, dx);
    top = Sum(top, dy);
    right = Difference(right, dx);
    bottom = Difference(bottom, dy);
}

void XFixRect::Offset(std::int32_t dx, std::int32_t dy) noexcept {
    *this += XFixPoint(dx, dy);
}

XFixRect& XFixRect::operator+=(const XFixPoint& distance) noexcept {
    geometry::MoveForwards(*this, distance);
    return *this;
}

XFixRect& XFixRect::operator-=(const XFixPoint& distance) noexcept {
    geometry::MoveBack(*this, distance);
    return *this;
}

XFixRect& XFixRect::operator&=(const XFixRect& other) noexcept {
    geometry::Intersect(*this, other);
    return *this;
}

XFixRect& XFixRect::operator|=(const XFixRect& other) noexcept {
    left = std::min(left, other.left);
    top = std::min(top, other.top);
    right = std::max(right, other.right);
    bottom = std::max(bottom, other.bottom);
    return *this;
}

int XFixRect::Contains(const XFixPoint& point) const noexcept {
    return point >= TopLeft() && point <= BottomRight();
}

int XFixRect::IsEmpty() const noexcept {
    return geometry::IsEmpty(*this);
}

int XFixRect::IsValid() const noexcept {
    return geometry::IsValid(*this);
}

int operator==(const XFixRect& a, const XFixRect& b) noexcept {
    return geometry::AreEqual(a, b);
}

int operator!=(const XFixRect& a, const XFixRect& b) noexcept {
    return !geometry::AreEqual(a, b);
}

XFixRect operator&(const XFixRect& a, const XFixRect& b) noexcept {
    return XFixRect(a) &= b;
}

XFixRect operator|(const XFixRect& a, const XFixRect& b) noexcept {
    return XFixRect(a) |= b;
}

XFixRect operator+(const XFixRect& rect, const XFixPoint& distance) noexcept {
    return XFixRect(rect) += distance;
}

XFixRect operator-(const XFixRect& rect, const XFixPoint& distance) noexcept {
    return XFixRect(rect) -= distance;
}
