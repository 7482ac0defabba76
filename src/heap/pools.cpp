#include "heap/pools.h"

#include "heap/block_life.h"
#include "heap/compaction.h"
#include "heap/errors.h"
#include "heap/locks.h"
#include "heap/pages.h"
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

using namespace platform;

namespace {

constexpr std::uint16_t kDefaultFixedSize = 20;
constexpr std::uint16_t kDefaultPageSize = 16384;
constexpr std::uint32_t kNoCeiling = 0xFFFFFFFE;

bool IsPool(const HeapPool* pool) {
    if (IsLivePool(pool)) {
        return true;
    }
    HeapErrorDispatch(nullptr, MEM_BAD_MEM_POOL);
    return false;
}

void InitPool(HeapPool* pool, std::uint32_t flags) {
    *pool = {};
    pool->signature = kPoolSignature;
    pool->flags = static_cast<std::uint16_t>(flags & ~std::uint32_t{PoolSerialised});
    pool->pageSize = kDefaultPageSize;
    pool->largeThreshold = kDefaultLargeThreshold;
    pool->footprint = kCommitStep;
    pool->ceiling = kNoCeiling;
    if ((flags & PoolSerialised) != 0) {
        // The bit is never visible before its lock exists.
        InitializeCriticalSection(&pool->lock);
        pool->flags = static_cast<std::uint16_t>(flags);
    }
}

void EnterRegistry(HeapPool* pool) {
    const RegistryHold hold;
    pool->registry = &heapRegistry;
    pool->nextPool = heapRegistry.pools;
    heapRegistry.pools = pool;
}

void LeaveRegistry(HeapPool* pool) {
    HeapPool** place = &pool->registry->pools;
    while (*place != pool) {
        place = &(*place)->nextPool;
    }
    *place = pool->nextPool;
}

void FreePages(PageLink* head) {
    if (head == nullptr) {
        return;
    }
    PageLink* link = head;
    do {
        HeapPage* page = link->page;
        link = link->next;
        page->signature = 0;
        UnmarkPage(page);
        RegionFree(page);
    } while (link != head);
}

void FreeRegionChain(char* region) {
    while (region != nullptr) {
        char* next = Load<char*>(region);
        SetMark(region, kMarkNothing);
        RegionFree(region);
        region = next;
    }
}

/// Offers every empty page of the ring back. False once the floor is reached.
bool ReleaseEmptyPages(HeapPool* pool, PageKind kind) {
    PageLink* firstKept = nullptr;
    PageLink* link = pool->pageLists[kind];
    while (link != nullptr && link != firstKept) {
        PageLink* next = link->next;
        const bool last = next == link;
        if (link->page->blockCount != 0) {
            firstKept = firstKept == nullptr ? link : firstKept;
        } else if (PageRelease(link->page, 1) == 0) {
            return false;
        } else if (last) {
            break;
        }
        link = next;
    }
    return true;
}

/// When the module goes, what the heap keeps for the next pool goes with it. A pool that is left
/// keeps its blocks, and all that belongs to them. At the end of a process another thread may still
/// be taking a pool down; it isn't waited for, since behind a fork it may never come to an end.
[[gnu::destructor]] void GiveAllBack() {
    if (!RegistryLock.TryTake()) {
        return;
    }
    if (heapRegistry.pools == nullptr) {
        DropRingNodes();
        DropZones();
        GiveBackAddressSpace(AddressesGo);
    }
    RegistryLock.Release();
}

}  // namespace

HeapPool* PoolCreate(std::uint16_t fixedSize, std::uint32_t count, std::uint32_t flags) {
    char* region = RegionAlloc(kCommitStep, flags | RegionUnder64K);
    while (region == nullptr) {
        if (HeapErrorDispatch(nullptr, MEM_OUT_OF_MEMORY) == 0) {
            return nullptr;
        }
        region = RegionAlloc(kCommitStep, flags | RegionUnder64K);
    }
    auto* pool = reinterpret_cast<HeapPool*>(region);
    InitPool(pool, flags);
    SetMark(pool, MarkOf(kMarkPool, kCommitStep));
    EnterRegistry(pool);
    if (PoolSetFixedSize(pool, fixedSize) == 0) {
        PoolDestroy(pool);
        return nullptr;
    }
    if (count != 0) {
        PoolPreallocate(pool, fixedSize * count, 1);
    }
    return pool;
}

HeapPool* PoolCreateDefault(std::uint32_t flags) {
    return PoolCreate(kDefaultFixedSize, 0, flags);
}

int PoolDestroy(HeapPool* pool) {
    if (!IsPool(pool)) {
        return 0;
    }
    TakePoolLock(pool);
    {
        const RegistryHold hold;
        LeaveRegistry(pool);
        pool->signature = 0;
        SetMark(pool, kMarkNothing);
        for (const PageKind kind : {kKindVariable, kKindFixed, kKindRelocatable}) {
            if (pool->pageLists[kind] != nullptr) {
                RingIndexDrop(pool->pageLists[kind]);
            }
        }
        for (PageLink* head : pool->pageLists) {
            FreePages(head);
        }
        FreeRegionChain(pool->linkRegions);
        FreeRegionChain(pool->slotRegions);
        ReleasePoolLock(pool);
        if ((pool->flags & PoolSerialised) != 0) {
            DeleteCriticalSection(&pool->lock);
        }
    }
    RegionFree(pool);
    return 1;
}

int PoolSetFixedSize(HeapPool* pool, std::uint16_t size) {
    if (!IsPool(pool)) {
        return 0;
    }
    const PoolHold hold(pool);
    const auto rounded = static_cast<std::uint16_t>(RoundUp<std::uint32_t>(size, kGranule));
    if (rounded < size || rounded > pool->pageSize - kPageHeader) {
        HeapErrorDispatch(pool, MEM_BLOCK_TOO_BIG);
        return 0;
    }
    if (pool->pageLists[kKindFixed] != nullptr) {
        return 0;
    }
    pool->fixedSize = rounded;
    return 1;
}

std::int32_t PoolPreallocate(HeapPool* pool, std::uint32_t bytes, std::uint32_t type) {
    if (!IsPool(pool)) {
        return -1;
    }
    if (type != 1 && type != 2 && type != 4) {
        return -1;
    }
    const PageKind kind = type == 4 ? kKindVariable : static_cast<PageKind>(type);
    if (kind == kKindFixed && pool->fixedSize == 0) {
        HeapErrorDispatch(pool, MEM_ALLOC_ZERO);
        return -1;
    }
    const PoolHold hold(pool);
    std::uint32_t total = 0;
    while (total < bytes && PageAcquire(pool, kind, pool->pageSize, 0) != nullptr) {
        total += pool->pageSize;
    }
    return static_cast<std::int32_t>(total);
}

std::uint32_t PoolCompact(HeapPool* pool) {
    if (!IsPool(pool)) {
        return kNoSize;
    }
    const PoolHold hold(pool);
    return PoolCompactLocked(pool);
}

std::uint32_t PoolCompactLocked(HeapPool* pool) {
    const std::uint32_t before = pool->footprint;
    for (const PageKind kind : {kKindVariable, kKindFixed, kKindRelocatable}) {
        if (!ReleaseEmptyPages(pool, kind)) {
            return before - pool->footprint;
        }
    }
    if (pool->compactPool != nullptr) {
        pool->compactPool(pool, kNeedEverything);
    }
    return before - pool->footprint;
}

int PoolIsValid(const HeapPool* pool) {
    return IsBadWritePtr(const_cast<HeapPool*>(pool), sizeof(HeapPool)) == 0 &&
           pool->signature == kPoolSignature;
}

}  // namespace veldt::heap
