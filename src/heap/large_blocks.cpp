#include "heap/large_blocks.h"

#include "heap/block_life.h"
#include "heap/errors.h"
#include "heap/locks.h"
#include "heap/pages.h"
#include "heap/pools.h"
#include "heap/regions.h"

namespace veldt::heap {

namespace {

constexpr std::uint32_t kLargest = UINT32_MAX - kPageHeader;

char* BlockOf(HeapPage* page) {
    return reinterpret_cast<char*>(page) + kPageHeader;
}

/// Compacts and asks the handler until the system has room for the page, or both have given up.
[[gnu::noinline]] HeapPage* AcquireWithHelp(HeapPool* pool, std::uint32_t flags,
                                            std::uint32_t total) {
    const std::uint64_t rounded = RoundUp<std::uint64_t>(total, kCommitStep);
    HeapPage* page = nullptr;
    while (page == nullptr) {
        const std::uint32_t givenBack = PoolCompactLocked(pool);
        if (pool->footprint + rounded > pool->ceiling) {
            return nullptr;
        }
        if (givenBack == 0 && HeapErrorDispatch(pool, MEM_OUT_OF_MEMORY) == 0) {
            return nullptr;
        }
        page = PageAcquire(pool, kKindLarge, total, flags);
    }
    return page;
}

/// From here on the block stands at its new place, for the reader of a handle on another thread
/// too.
void SwapPages(char* from, char* to) {
    auto* page = reinterpret_cast<HeapPage*>(to);
    BlockLeft(BlockOf(reinterpret_cast<HeapPage*>(from)));
    const HandleHold hold;
    UnmarkPage(reinterpret_cast<HeapPage*>(from));
    MarkPage(page, RegionSize(to));
    page->link->page = page;
    if (page->ownerSlot != nullptr) {
        page->ownerSlot->block = BlockOf(page);
    }
}

}  // namespace

std::uint16_t LargePageInit(HeapPage* page, std::uint32_t flags) {
    page->blockCount = 1;
    page->freeBlock = LargeFree;
    page->large.relocState = static_cast<std::uint8_t>(flags & AllocRelocatable);
    page->ownerSlot = nullptr;
    return 0;
}

char* LargeAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    if (size > kLargest) {
        return nullptr;
    }
    HeapPage* page = PageAcquire(pool, kKindLarge, size + kPageHeader, flags);
    if (page == nullptr) [[unlikely]] {
        page = AcquireWithHelp(pool, flags, size + kPageHeader);
    }
    if (page == nullptr) {
        return nullptr;
    }
    BlockBorn(BlockOf(page), flags);
    return BlockOf(page);
}

void LargeFree(char* block) {
    PageRelease(PageBase(block), 0);
}

int LargeResize(HeapPage* page, char** result, std::uint32_t size, std::uint32_t flags) {
    HeapPool* pool = page->pool;
    const std::uint32_t oldSize = PageSizeOf(page);
    const auto rounded = RoundUp<std::uint64_t>(std::uint64_t{size} + kPageHeader, kCommitStep);
    if (pool->footprint - oldSize + rounded > UINT32_MAX) {
        if (result != nullptr) {
            *result = nullptr;
        }
        return 0;
    }
    const std::uint32_t total = size + kPageHeader;
    const std::uint32_t regionFlags =
        pool->flags | RegionLarge | ((flags & AllocZero) != 0 ? RegionZero : 0U);
    auto* base = reinterpret_cast<char*>(page);
    const HeldBytes held = BlockOpens(BlockOf(page));
    if (result == nullptr) {
        if (RegionResize(base, total, regionFlags) == 0) {
            BlockCloses(BlockOf(page), held);
            return 0;
        }
    } else {
        char* moved = RegionRelocate(base, total, regionFlags, SwapPages);
        while (moved == nullptr) {
            if (HeapErrorDispatch(pool, MEM_OUT_OF_MEMORY) == 0) {
                BlockCloses(BlockOf(page), held);
                *result = nullptr;
                return 0;
            }
            moved = RegionRelocate(base, total, regionFlags, SwapPages);
        }
        page = reinterpret_cast<HeapPage*>(moved);
        *result = BlockOf(page);
    }
    const std::uint32_t newSize = RegionSize(page);
    MarkPage(page, newSize);
    pool->footprint += newSize - oldSize;
    return 1;
}

}  // namespace veldt::heap
