// Random coordinates, and rectangles in a width where nothing under test can overflow.
#pragma once

#include <cstdint>
#include <limits>
#include <random>

namespace veldt::tests {

/// Often the same or near another, often at the ends of the range, else anything.
template <class Coordinate>
Coordinate AnyCoordinate(std::mt19937& random) {
    const auto bits = static_cast<Coordinate>(random());
    const auto few = static_cast<Coordinate>(random() % 4);
    switch (random() % 4) {
        case 0:
            return few;
        case 1:
            return static_cast<Coordinate>(std::numeric_limits<Coordinate>::min() + few);
        case 2:
            return static_cast<Coordinate>(std::numeric_limits<Coordinate>::max() - few);
        default:
            return bits;
    }
}

struct Wide {
    std::int64_t top, left, bottom, right;

    bool operator==(const Wide&) const = default;
};

/// Any rectangle in 64 bits.
template <class Rect>
Wide Widen(const Rect& r) {
    return {r.top, r.left, r.bottom, r.right};
}

/// What fits of 64-bit coordinates, whatever the order in which the class takes them.
template <class Rect>
Rect Narrow(const Wide& w) {
    using Coordinate = decltype(Rect::top);
    Rect r;
    r.top = static_cast<Coordinate>(w.top);
    r.left = static_cast<Coordinate>(w.left);
    r.bottom = static_cast<Coordinate>(w.bottom);
    r.right = static_cast<Coordinate>(w.right);
    return r;
}

/// The same in 64 bits again.
template <class Rect>
Wide Wrapped(const Wide& w) {
    return Widen(Narrow<Rect>(w));
}

}  // namespace veldt::tests
