// The copy under composing and editing handles.
#pragma once

#include <cstddef>
#include <cstring>

namespace veldt::memory {

/// The areas may overlap. Of no bytes, neither address is looked at.
inline void MemCopy(const void* source, void* destination, std::size_t count) {
    if (count > 0) {
        std::memmove(destination, source, count);
    }
}

}  // namespace veldt::memory
