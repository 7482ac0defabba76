#include "heap/regions.h"

#include <algorithm>

#include "heap/block_life.h"

namespace veldt::heap {

using namespace platform;

namespace {

/// What a request of `size` bytes commits: up to 4 GB, so wider than the request.
std::uint64_t CommittedSize(std::uint32_t size, std::uint32_t flags) {
    if ((flags & RegionUnder64K) != 0) {
        size = std::min(size, kRegionUnit - 1);
    }
    return RoundUp<std::uint64_t>(size, kCommitStep);
}

char* Commit(char* address, std::uint64_t size) {
    return static_cast<char*>(
        VirtualAlloc(address, static_cast<SIZE_T>(size), MEM_COMMIT, PAGE_READWRITE));
}

char* ReserveAndCommit(std::uint64_t size) {
    // Rounded up to its units, it must still be a size.
    if (size > (SIZE_MAX & ~std::uint64_t{kRegionUnit - 1})) {
        return nullptr;
    }
    return static_cast<char*>(VirtualAllocUnits(static_cast<SIZE_T>(size)));
}

}  // namespace

char* RegionAlloc(std::uint32_t size, std::uint32_t flags) {
    const std::uint64_t committed = CommittedSize(size, flags);
    char* base = ReserveAndCommit(committed);
    if (base == nullptr) {
        return nullptr;
    }
    if (!AddressMapCover(base)) {
        RegionFree(base);
        return nullptr;
    }
    RegionBegan(base, static_cast<std::size_t>(committed));
    if ((flags & RegionZero) != 0) {
        std::memset(base, 0, static_cast<std::size_t>(committed));
    }
    return base;
}

std::uint32_t RegionSize(const void* base) {
    MEMORY_BASIC_INFORMATION information;
    if (VirtualQuery(base, &information, sizeof information) != sizeof information) {
        return 0;
    }
    return static_cast<std::uint32_t>(information.RegionSize);
}

int RegionResize(char* base, std::uint32_t size, std::uint32_t flags) {
    const std::uint32_t oldSize = RegionSize(base);
    const std::uint64_t newSize = CommittedSize(size, flags);
    if (newSize > oldSize) {
        const std::uint64_t fresh = newSize - oldSize;
        if (oldSize % kRegionUnit == 0 || Commit(base + oldSize, fresh) == nullptr) {
            return 0;
        }
        RegionBegan(base + oldSize, static_cast<std::size_t>(fresh));
        if ((flags & RegionZero) != 0) {
            std::memset(base + oldSize, 0, static_cast<std::size_t>(fresh));
        }
        return 1;
    }
    if (newSize < oldSize &&
        VirtualFree(base + newSize, oldSize - static_cast<SIZE_T>(newSize), MEM_DECOMMIT) == 0) {
        return 0;
    }
    if ((flags & RegionZero) != 0 && size < newSize) {
        std::memset(base + size, 0, static_cast<std::size_t>(newSize - size));
    }
    return 1;
}

char* RegionRelocate(char* base, std::uint32_t size, std::uint32_t flags,
                     void (*onMove)(char* from, char* to)) {
    if (RegionResize(base, size, flags) != 0) {
        return base;
    }
    char* moved = RegionAlloc(size, flags & ~std::uint32_t{RegionZero});
    if (moved == nullptr) {
        return nullptr;
    }
    const std::uint32_t oldSize = RegionSize(base);
    std::memcpy(moved, base, std::min(size, oldSize));
    onMove(base, moved);
    RegionFree(base);
    if ((flags & RegionZero) != 0 && size > oldSize) {
        std::memset(moved + oldSize, 0, size - oldSize);
    }
    return moved;
}

void RegionFree(void* base) {
    RegionEnds(static_cast<char*>(base));
    VirtualFree(base, 0, MEM_RELEASE);
}

}  // namespace veldt::heap
