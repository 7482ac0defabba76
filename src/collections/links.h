// Link fields inside the caller's elements.
#pragma once

#include <veldt20/collections_position.h>

#include <cstring>

namespace veldt::collections {

inline void** LinkAt(void* element, unsigned int offset) {
    return reinterpret_cast<void**>(static_cast<unsigned char*>(element) + offset);
}

// Elements may be packed records, so a link is moved as bytes: its address may be odd.
inline void* ReadLink(void** link) {
    void* target;
    std::memcpy(&target, static_cast<const void*>(link), sizeof target);
    return target;
}

inline void WriteLink(void** link, void* target) {
    std::memcpy(static_cast<void*>(link), &target, sizeof target);
}

inline __XPOSITION* PositionOf(void* element) {
    return static_cast<__XPOSITION*>(element);
}

/// The element `steps` links behind `element`, which must have as many behind it.
inline void* Follow(void* element, unsigned int linkOffset, int steps) {
    for (int step = 0; step < steps; ++step) {
        element = ReadLink(LinkAt(element, linkOffset));
    }
    return element;
}

}  // namespace veldt::collections
