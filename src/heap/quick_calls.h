// Allocation and freeing as most calls need them, inline: a small request that the page which
// served last can serve at once, and a block that stands among others, in a pool without a lock.
// Whatever takes more they leave undone, for the caller to ask the function of full length. Rare
// ends are left to functions that are called last of all, so that no register need be saved.
#pragma once

#include "heap/block_life.h"
#include "heap/compaction.h"
#include "heap/fixed_blocks.h"
#include "heap/locks.h"
#include "heap/relocatable_blocks.h"
#include "heap/variable_page.h"

namespace veldt::heap {

/// A block, or null, and the bytes that it can hold.
struct Grant {
    char* block;
    std::size_t usable;
};

inline bool IsSerialised(const HeapPool* pool) {
    return (pool->flags & PoolSerialised) != 0;
}

inline bool IsPlainPool(const HeapPool* pool) {
    return IsPoolSignature(pool) && !IsSerialised(pool);
}

/// PoolAlloc with no flags. Null, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline Grant AllocQuickly(const HeapPool* pool, std::uint32_t size) {
    Grant grant{.block = nullptr, .usable = 0};
    if (!IsPlainPool(pool) || size == 0 || size > pool->largeThreshold) {
        return grant;
    }
    if (size <= pool->fixedSize) {
        grant = {.block = FixedTakeAtHead(pool), .usable = pool->fixedSize};
    } else if (const Taken taken = TakeNearRover(pool, kKindVariable, BlockSizeFor(size), 0);
               taken.block != nullptr) {
        grant = {.block = DataOf(taken.block), .usable = taken.size - kHeaderSize};
    }
    if (grant.block != nullptr) {
        BlockBorn(grant.block, 0);
    }
    return grant;
}

/// The same where that takes a search: for a small block of the ring of pages, for another one of
/// the page that served last.
inline Grant AllocBySearch(HeapPool* pool, std::uint32_t size) {
    Grant grant{.block = nullptr, .usable = 0};
    if (!IsPlainPool(pool) || size == 0 || size > pool->largeThreshold) {
        return grant;
    }
    if (size > pool->fixedSize) {
        grant.block = VariableTakeAtHead(pool, kKindVariable, BlockSizeFor(size), 0);
        if (grant.block != nullptr) {
            grant.usable = DataSize(HeaderOfData(grant.block));
        }
        return grant;
    }
    grant = {.block = FixedTakeFromRing(pool), .usable = pool->fixedSize};
    if (grant.block != nullptr) {
        BlockBorn(grant.block, 0);
    }
    return grant;
}

/// PoolFree. Calls `succeeds` before it begins. False, and nothing done, where it takes more than a
/// few steps.
template <class Succeeds>
[[gnu::always_inline]] inline bool FreeQuickly(char* block, const Succeeds& succeeds) {
    if (!IsInReach(block)) {
        return false;
    }
    HeapPage* page = PageBase(block);
    const unsigned signature = page->signature;
    if (signature == (kPageSignature | kKindFixed) && !IsSerialised(page->pool)) {
        succeeds();
        BlockDies(block);
        FixedFreeInPage(page, block);
        return true;
    }
    const std::size_t header = HeaderOf(HeaderOfData(block));
    if (signature != (kPageSignature | kKindVariable) || IsSerialised(page->pool) ||
        !IsPlainBlock(block, header)) {
        return false;
    }
    succeeds();
    BlockDies(block);
    FreeInPage(page, HeaderOfData(block), header);
    return true;
}

/// A slot, or null, and the link that the caller tells the index about at the end, or null.
struct SlotGrant {
    HandleSlot* slot;
    const PageLink* raised;
};

/// RelocAlloc of a moveable block. Null, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline SlotGrant RelocAllocQuickly(HeapPool* pool, std::uint32_t size) {
    if (!IsPlainPool(pool) || size == 0 || size > pool->largeThreshold - kTrailerSize) {
        return {};
    }
    // A pool that has one has had a relocatable block before, and so its hooks of compaction.
    HandleSlot* slot = pool->freeSlots;
    if (slot == nullptr) {
        return {};
    }
    const auto [block, taken, raised] =
        TakeNearRover(pool, kKindRelocatable, BlockSizeFor(size + kTrailerSize), AllocRelocatable);
    if (block == nullptr) {
        return {};
    }
    BlockBorn(DataOf(block), AllocRelocatable);
    SetBits(block, kBlockRelocatable);
    Store(block + taken - kTrailerSize, slot);
    pool->freeSlots = reinterpret_cast<HandleSlot*>(slot->block);
    slot->block = DataOf(block);
    slot->lockCount = 0;
    return {.slot = slot, .raised = raised};
}

/// RelocFree of a block in a moveable page, as FreeQuickly.
template <class Succeeds>
[[gnu::always_inline]] inline bool RelocFreeQuickly(HandleSlot* slot, const Succeeds& succeeds) {
    if (!platform::OnlyThread() || !IsSlot(slot)) {
        return false;
    }
    char* data = slot->block;
    if (!IsInReach(data)) {
        return false;
    }
    HeapPage* page = PageBase(data);
    const std::size_t header = HeaderOf(HeaderOfData(data));
    if (page->signature != (kPageSignature | kKindRelocatable) || !IsOwned(header) ||
        slot->lockCount != 0 || IsSerialised(page->pool)) {
        return false;
    }
    succeeds();
    SlotChainPush(page->pool, slot);
    BlockDies(data);
    FreeInPage(page, HeaderOfData(data), header);
    return true;
}

}  // namespace veldt::heap
