// The search under replacing in a handle.
#pragma once

#include <cstdint>

namespace veldt::memory {

/// Where the `length` bytes of `pattern` first stand within the `count` bytes from `base` on, as
/// an offset from there. -1 if nowhere, and for a null pattern, a length of 0 or below, or a count
/// below 1. Takes time in proportion to `count`, whatever the pattern.
std::int32_t MemFindBytes(const void* base, std::int32_t count, const void* pattern,
                          std::int32_t length);

}  // namespace veldt::memory
