// The address-space layer: 64 KB-aligned regions, committed in 4096-byte steps from their base.
#pragma once

#include "heap/records.h"

namespace veldt::heap {

/// `size` committed bytes, rounded up to the commit step. Null if the system refuses.
char* RegionAlloc(std::uint32_t size, std::uint32_t flags);
/// In place, up to the end of the reservation. 1 done, 0 refused.
int RegionResize(char* base, std::uint32_t size, std::uint32_t flags);
/// In place or elsewhere. The address afterwards; null, with the old region untouched, on failure.
/// `onMove` is called when the bytes stand in both regions, before the old one goes.
char* RegionRelocate(char* base, std::uint32_t size, std::uint32_t flags,
                     void (*onMove)(char* from, char* to));
void RegionFree(void* base);
/// Committed bytes from the base; 0 if the system doesn't tell.
std::uint32_t RegionSize(const void* base);

/// The size that a link or slot region of `size` bytes grows to: 4096, 8192, 16384, 32768, 49152
/// and 65535, which is committed as 65536.
constexpr std::uint32_t GrownRegionSize(std::uint32_t size) {
    const std::uint32_t grown = size + (size < 16384 ? size : 16384);
    return grown < kRegionUnit - 1 ? grown : kRegionUnit - 1;
}

}  // namespace veldt::heap
