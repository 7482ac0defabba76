#include <veldt20/geometry_fixed.h>
#include <veldt20/numerics.h>

#include <cstddef>

#include "geometry/rectangle_rules.h"

using veldt::geometry::Difference;
using veldt::geometry::Sum;

static_assert(offsetof(XFixPoint, x) == 0 && offsetof(XFixPoint, y) == 4);

XFixPoint::XFixPoint(std::int32_t horizontal, std::int32_t vertical) noexcept
    : x(horizontal), y(vertical) {}

void XFixPoint::Set(std::int32_t horizontal, std::int32_t vertical) noexcept {
    x = horizontal;
    y = vertical;
}

XFixPoint& XFixPoint::operator+=(const XFixPoint& other) noexcept {
    x = Sum(x, other.x);
    y = Sum(y, other.y);
    return *this;
}

XFixPoint& XFixPoint::operator-=(const XFixPoint& other) noexcept {
    x = Difference(x, other.x);
    y = Difference(y, other.y);
    return *this;
}

XFixPoint& XFixPoint::operator*=(const XFixPoint& other) noexcept {
    x = XFixMultiply(x, other.x);
    y = XFixMultiply(y, other.y);
    return *this;
}

XFixPoint& XFixPoint::operator/=(const XFixPoint& other) noexcept {
    x = XFixDivide(x, other.x);
    y = XFixDivide(y, other.y);
    return *this;
}

int operator==(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x == b.x && a.y == b.y;
}

int operator!=(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x != b.x || a.y != b.y;
}

int operator<(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x < b.x && a.y < b.y;
}

int operator>(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x > b.x && a.y > b.y;
}

int operator<=(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x <= b.x && a.y <= b.y;
}

int operator>=(const XFixPoint& a, const XFixPoint& b) noexcept {
    return a.x >= b.x && a.y >= b.y;
}

XFixPoint operator+(const XFixPoint& a, const XFixPoint& b) noexcept {
    return XFixPoint(a) += b;
}

XFixPoint operator-(const XFixPoint& a, const XFixPoint& b) noexcept {
    return XFixPoint(a) -= b;
}

XFixPoint operator*(const XFixPoint& a, const XFixPoint& b) noexcept {
    return XFixPoint(a) *= b;
}

XFixPoint operator/(const XFixPoint& a, const XFixPoint& b) noexcept {
    return XFixPoint(a) /= b;
}
