// What every point and rectangle class does alike, on the fields of that class.
#pragma once

#include <algorithm>
#include <type_traits>

namespace veldt::geometry {

/// Sums in the coordinate's own width, wrapping where the language leaves overflow undefined.
template <class Coordinate>
constexpr Coordinate Sum(Coordinate a, Coordinate b) {
    using Bits = std::make_unsigned_t<Coordinate>;
    return static_cast<Coordinate>(static_cast<Bits>(a) + static_cast<Bits>(b));
}

template <class Coordinate>
constexpr Coordinate Difference(Coordinate a, Coordinate b) {
    using Bits = std::make_unsigned_t<Coordinate>;
    return static_cast<Coordinate>(static_cast<Bits>(a) - static_cast<Bits>(b));
}

template <class Rect>
constexpr int IsValid(const Rect& r) {
    return r.left <= r.right && r.top <= r.bottom;
}

template <class Rect>
constexpr int IsEmpty(const Rect& r) {
    return r.bottom <= r.top || r.right <= r.left;
}

template <class Rect>
constexpr int AreEqual(const Rect& a, const Rect& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

/// Gives 0 where nothing is common. All zero by then, `r` is valid again and doesn't tell.
template <class Rect>
constexpr int Intersect(Rect& r, const Rect& other) {
    r.top = std::max(r.top, other.top);
    r.left = std::max(r.left, other.left);
    r.bottom = std::min(r.bottom, other.bottom);
    r.right = std::min(r.right, other.right);
    const int common = IsValid(r);
    if (!common) {
        r.top = r.left = r.bottom = r.right = 0;
    }
    return common;
}

template <class Rect, class Point>
constexpr void MoveForwards(Rect& r, const Point& distance) {
    r.top = Sum(r.top, distance.y);
    r.left = Sum(r.left, distance.x);
    r.bottom = Sum(r.bottom, distance.y);
    r.right = Sum(r.right, distance.x);
}

template <class Rect, class Point>
constexpr void MoveBack(Rect& r, const Point& distance) {
    r.top = Difference(r.top, distance.y);
    r.left = Difference(r.left, distance.x);
    r.bottom = Difference(r.bottom, distance.y);
    r.right = Difference(r.right, distance.x);
}

}  // namespace veldt::geometry
