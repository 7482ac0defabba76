// The rectangle classes seen alike: an order of fields and a point class for each.
#pragma once

#include <veldt20/geometry_fixed.h>
#include <veldt20/geometry_long.h>
#include <veldt20/geometry_short.h>

#include <cstdint>
#include <limits>
#include <random>

namespace veldt::tests {

struct Short {
    using Coordinate = std::int16_t;
    using Point = XPoint;
    using Rect = XRect;
};

struct Long {
    using Coordinate = std::int32_t;
    using Point = XLongPoint;
    using Rect = XLongRect;
};

struct Fixed {
    using Coordinate = std::int32_t;
    using Point = XFixPoint;
    using Rect = XFixRect;
};

/// Often the same or near another, often at the ends of the range, else anything.
template <class Coordinate>
Coordinate AnyCoordinate(std::mt19937& random) {
    using Limits = std::numeric_limits<Coordinate>;
    switch (random() % 4) {
        case 0:
            return static_cast<Coordinate>(random() % 5);
        case 1:
            return static_cast<Coordinate>(Limits::min() + static_cast<Coordinate>(random() % 3));
        case 2:
            return static_cast<Coordinate>(Limits::max() - static_cast<Coordinate>(random() % 3));
        default:
            return static_cast<Coordinate>(random());
    }
}

/// Coordinates in a width of their own, so that nothing under test can overflow; `top` first.
struct Wide {
    std::int64_t top, left, bottom, right;

    bool operator==(const Wide&) const = default;
    bool Valid() const { return left <= right && top <= bottom; }
    bool Empty() const { return left >= right || top >= bottom; }
};

template <class Rect>
Wide Widen(const Rect& r) {
    return {r.top, r.left, r.bottom, r.right};
}

/// What is left of wide coordinates in the width given.
template <class Coordinate>
Wide Wrapped(const Wide& w) {
    return {static_cast<Coordinate>(w.top), static_cast<Coordinate>(w.left),
            static_cast<Coordinate>(w.bottom), static_cast<Coordinate>(w.right)};
}

template <class Rect>
Rect FromWide(const Wide& w) {
    Rect r;
    r.top = static_cast<decltype(r.top)>(w.top);
    r.left = static_cast<decltype(r.top)>(w.left);
    r.bottom = static_cast<decltype(r.top)>(w.bottom);
    r.right = static_cast<decltype(r.top)>(w.right);
    return r;
}

}  // namespace veldt::tests
