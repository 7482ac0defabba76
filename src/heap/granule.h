// The units that every record of the heap is measured in, and access to records that stand between
// the caller's bytes, wherever those happen to be aligned.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "heap/annotate.h"

namespace veldt::heap {

inline constexpr std::uint32_t kPointer = sizeof(void*);
/// Block sizes are multiples of this, and block data is aligned to it.
inline constexpr std::uint32_t kGranule = kPointer;
/// Memory is committed in steps of this many bytes.
inline constexpr std::uint32_t kCommitStep = 4096;
/// Address space comes in units of this many bytes, aligned to as many.
inline constexpr std::uint32_t kRegionUnit = 65536;

/// True where a documented figure for 4-byte pointers holds, or pointers are wider.
consteval bool Figure(std::size_t value, std::size_t with4BytePointers) {
    return kPointer != 4 || value == with4BytePointers;
}

/// `step` is a power of two.
template <class T>
constexpr T RoundUp(T value, T step) {
    return (value + step - 1) & ~(step - 1);
}

template <class T>
VELDT20_EXEMPT T Load(const void* address) {
    const Exempt exempt;
    T value;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may well be a pointer.
    std::memcpy(&value, address, sizeof(T));
    return value;
}

template <class T>
VELDT20_EXEMPT void Store(void* address, T value) {
    const Exempt exempt;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may well be a pointer.
    std::memcpy(address, &value, sizeof(T));
}

}  // namespace veldt::heap
