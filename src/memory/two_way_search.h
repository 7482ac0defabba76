// A string search whose time is linear in the worst case and which needs no memory of its own.
#pragma once

#include <cstddef>

namespace veldt::memory {

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

/// The first offset in `text` at which `pattern` stands, or kNotFound. 0 < length <= count.
std::size_t TwoWaySearch(const unsigned char* text, std::size_t count, const unsigned char* pattern,
                         std::size_t length);

}  // namespace veldt::memory
