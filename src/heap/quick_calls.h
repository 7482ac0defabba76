// Allocation and freeing as most calls need them, inline: a small request that the page which
// served last can serve at once, and a block that stands among others, in a pool without a lock.
// Whatever takes more they leave undone, for the caller to ask the function of full length.
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
    std::uint32_t usable;
};

inline bool IsPlainPool(const HeapPool* pool) {
    return IsPoolSignature(pool) && (pool->flags & PoolSerialised) == 0;
}

/// PoolAlloc with no flags. Null, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline Grant AllocQuickly(HeapPool* pool, std::uint32_t size) {
    Grant grant{.block = nullptr, .usable = 0};
    if (!IsPlainPool(pool) || size == 0 || size > pool->largeThreshold) {
        return grant;
    }
    if (size <= pool->fixedSize) {
        char* block = FixedTakeAtHead(pool);
        grant = {.block = block != nullptr ? block : FixedTakeFromRing(pool),
                 .usable = pool->fixedSize};
    } else if (const auto [block, taken] =
                   TakeNearRover(pool, kKindVariable, BlockSizeFor(size), 0);
               block != nullptr) {
        grant = {.block = DataOf(block), .usable = taken - kHeaderSize};
    }
    if (grant.block != nullptr) {
        BlockBorn(grant.block, 0);
    }
    return grant;
}

/// PoolFree. False, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline bool FreeQuickly(char* block) {
    HeapPage* page = LivePage(block);
    if (page == nullptr || (page->pool->flags & PoolSerialised) != 0) {
        return false;
    }
    if (KindOf(page) == kKindFixed) {
        BlockDies(block);
        FixedFreeInPage(page, block);
        return true;
    }
    const unsigned header = HeaderOf(HeaderOfData(block));
    if (KindOf(page) != kKindVariable || !IsPlainBlock(block, header)) {
        return false;
    }
    BlockDies(block);
    FreeInPage(page, HeaderOfData(block), header);
    return true;
}

/// RelocAlloc of a moveable block. Null, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline HandleSlot* RelocAllocQuickly(HeapPool* pool, std::uint32_t size) {
    if (!IsPlainPool(pool) || size == 0 || size > pool->largeThreshold ||
        size + kTrailerSize > pool->largeThreshold) {
        return nullptr;
    }
    pool->compactPool = CompactMoveablePages;
    pool->compactPage = SlidePage;
    HandleSlot* slot = pool->freeSlots;
    if (slot == nullptr) {
        return nullptr;
    }
    const auto [block, taken] =
        TakeNearRover(pool, kKindRelocatable, BlockSizeFor(size + kTrailerSize), AllocRelocatable);
    if (block == nullptr) {
        return nullptr;
    }
    BlockBorn(DataOf(block), AllocRelocatable);
    SetBits(block, kBlockRelocatable);
    Store(block + taken - kTrailerSize, slot);
    pool->freeSlots = reinterpret_cast<HandleSlot*>(slot->block);
    slot->block = DataOf(block);
    slot->lockCount = 0;
    return slot;
}

/// RelocFree. False, and nothing done, where that takes more than a few steps.
[[gnu::always_inline]] inline bool RelocFreeQuickly(HandleSlot* slot) {
    if (!platform::OnlyThread()) {
        return false;
    }
    HeapPage* page = PageOfHandle(slot);
    if (page == nullptr || KindOf(page) == kKindLarge || slot->lockCount != 0 ||
        (page->pool->flags & PoolSerialised) != 0) {
        return false;
    }
    char* block = HeaderOfData(slot->block);
    SlotChainPush(page->pool, slot);
    BlockDies(DataOf(block));
    FreeInPage(page, block, HeaderOf(block));
    return true;
}

}  // namespace veldt::heap
