#include "heap/relocatable_blocks.h"

#include "heap/block_life.h"
#include "heap/compaction.h"
#include "heap/errors.h"
#include "heap/large_blocks.h"
#include "heap/locks.h"
#include "heap/pools.h"
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

[[gnu::noinline, gnu::cold]] void RaiseBadHandle() {
    HeapErrorDispatch(nullptr, MEM_BAD_HANDLE);
}

/// The pool of a handle; null, with error 13 raised, for what is none.
[[gnu::always_inline]] inline HeapPool* ValidatedPool(const HandleSlot* slot) {
    {
        const HandleHold hold;
        if (const HeapPage* page = PageOfHandle(slot); page != nullptr) [[likely]] {
            return page->pool;
        }
    }
    RaiseBadHandle();
    return nullptr;
}

/// Makes a new block the slot's: by its trailer, or by the owner of its page.
void Own(char* data, HandleSlot* slot) {
    HeapPage* page = PageBase(data);
    if (KindOf(page) == kKindLarge) {
        page->ownerSlot = slot;
        return;
    }
    char* block = HeaderOfData(data);
    SetBits(block, kBlockRelocatable);
    SetSlot(block, slot);
}

/// Makes a block nobody's, so that it can be freed.
void Disown(char* data) {
    HeapPage* page = PageBase(data);
    if (KindOf(page) == kKindLarge) {
        page->ownerSlot = nullptr;
    } else {
        ClearBits(HeaderOfData(data), kBlockRelocatable);
    }
}

/// Counts a change between pinned and not pinned on the page's link.
void CountPin(HeapPage* page, bool pinned) {
    PageLink* link = page->link;
    if (pinned) {
        ++link->linkFlags;
        return;
    }
    --link->linkFlags;
    if ((link->linkFlags & kPinnedMask) == 0 && KindOf(page) != kKindLarge) {
        RingIndexRaise(link);
    }
}

/// The pin that the slot's present block is on the page that it stands in, if any.
void CountPinOf(const HandleSlot* slot, bool pinned) {
    HeapPage* page = PageBase(slot->block);
    if (slot->lockCount != 0 && InMoveablePlace(page)) {
        CountPin(page, pinned);
    }
}

/// Moves the slot's bytes to `fresh`, a block that is large enough, and frees the old block.
void MoveTo(HandleSlot* slot, char* fresh, std::uint32_t bytes) {
    char* old = RelocRehome(slot, fresh, bytes);
    PageBase(old)->freeBlock(old);
}

/// Moves a variable-size block into a new one of at least its size. False if none can be had.
bool MoveWhole(HeapPool* pool, HandleSlot* slot, std::uint32_t flags) {
    const std::uint32_t size = UsedSize(HeaderOfData(slot->block)) - kHeaderSize;
    char* fresh = RelocBlockAlloc(pool, flags, size);
    if (fresh == nullptr) {
        return false;
    }
    MoveTo(slot, fresh, size - kTrailerSize);
    return true;
}

/// Hands a handle's block over to `size` bytes elsewhere, in a place of the same family.
HandleSlot* ResizeByMoving(HeapPool* pool, HandleSlot* slot, std::uint32_t request,
                           std::uint32_t flags, std::uint32_t bytes) {
    flags &= ~std::uint32_t{AllocRelocatable};
    if (InMoveablePlace(PageBase(slot->block))) {
        flags |= AllocRelocatable;
    }
    char* fresh = RelocBlockAlloc(pool, flags, request);
    if (fresh == nullptr) {
        return nullptr;
    }
    MoveTo(slot, fresh, bytes);
    return slot;
}

}  // namespace

char* RelocRehome(HandleSlot* slot, char* fresh, std::uint32_t bytes) {
    // Read only here, since getting the fresh block may have moved the old one.
    char* old = slot->block;
    MoveBlock(fresh, old, bytes);
    Own(fresh, slot);
    CountPinOf(slot, false);
    {
        const HandleHold hold;
        Disown(old);
        slot->block = fresh;
    }
    CountPinOf(slot, true);
    return old;
}

char* RelocBlockAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    return size > pool->largeThreshold ? LargeAlloc(pool, flags, size)
                                       : VariableAlloc(pool, flags, size);
}

HandleSlot* RelocAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    if (!IsPoolSignature(pool)) {
        HeapErrorDispatch(nullptr, MEM_BAD_MEM_POOL);
        return nullptr;
    }
    if (size == 0) {
        HeapErrorDispatch(pool, MEM_ALLOC_ZERO);
        return nullptr;
    }
    const PoolHold hold(pool);
    pool->compactPool = CompactMoveablePages;
    pool->compactPage = SlidePage;
    if (size > UINT32_MAX - kTrailerSize) {
        return nullptr;
    }
    HandleSlot* slot = SlotChainPop(pool);
    if (slot == nullptr) {
        return nullptr;
    }
    char* block = RelocBlockAlloc(pool, flags, size + kTrailerSize);
    if (block == nullptr) {
        SlotChainPush(pool, slot);
        return nullptr;
    }
    slot->block = block;
    slot->lockCount = (flags & AllocRelocatable) != 0 ? 0 : 1;
    Own(block, slot);
    return slot;
}

int RelocFree(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return 0;
    }
    const PoolHold hold(pool);
    char* block = slot->block;
    CountPinOf(slot, false);
    BlockDies(block);
    Disown(block);
    PageBase(block)->freeBlock(block);
    SlotChainPush(pool, slot);
    return 1;
}

HandleSlot* RelocResize(HandleSlot* slot, std::uint32_t size, std::uint32_t flags) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return nullptr;
    }
    if (size == 0) {
        HeapErrorDispatch(pool, MEM_ALLOC_ZERO);
        return nullptr;
    }
    if (size > UINT32_MAX - kTrailerSize) {
        return nullptr;
    }
    const PoolHold hold(pool);
    const std::uint32_t request = size + kTrailerSize;
    const bool mayMove =
        (flags & ResizeNoMove) == 0 && ((flags & AllocRelocatable) != 0 || slot->lockCount == 0);
    char* result = slot->block;
    const std::uint32_t bytes =
        PoolResizeCore(mayMove ? &result : nullptr, slot->block, request, flags);
    if (bytes != 0) {
        if (mayMove) {
            return ResizeByMoving(pool, slot, request, flags, bytes);
        }
        HeapErrorDispatch(pool, MEM_RESIZE_FAILED);
        return nullptr;
    }
    if (result == nullptr) {
        return nullptr;
    }
    if (KindOf(PageBase(result)) != kKindLarge) {
        SetSlot(HeaderOfData(result), slot);
    }
    return slot;
}

char* RelocLock(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return nullptr;
    }
    const PoolHold hold(pool);
    HeapPage* page = PageBase(slot->block);
    if (!InMoveablePlace(page) || slot->lockCount == kMostLocks) {
        HeapErrorDispatch(pool, MEM_LOCK_ERROR);
        return nullptr;
    }
    if (slot->lockCount++ == 0) {
        CountPin(page, true);
    }
    return slot->block;
}

std::uint32_t RelocUnlock(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return kNoCount;
    }
    const PoolHold hold(pool);
    HeapPage* page = PageBase(slot->block);
    if (!InMoveablePlace(page) || slot->lockCount == 0) {
        HeapErrorDispatch(pool, MEM_LOCK_ERROR);
        return kNoCount;
    }
    if (--slot->lockCount == 0) {
        CountPin(page, false);
    }
    return slot->lockCount;
}

int RelocChangePins(HandleSlot* slot, int mode) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return -1;
    }
    const PoolHold hold(pool);
    HeapPage* page = PageBase(slot->block);
    if (!InMoveablePlace(page)) {
        return 0;
    }
    const std::uint32_t old = slot->lockCount;
    if (mode > 0 && old == kMostLocks) {
        HeapErrorDispatch(pool, MEM_LOCK_ERROR);
        return 1;
    }
    slot->lockCount = mode > 0 ? old + 1 : (mode == 0 || old == 0 ? 0 : old - 1);
    if ((old != 0) != (slot->lockCount != 0)) {
        CountPin(page, old == 0);
    }
    return 1;
}

char* RelocFix(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return nullptr;
    }
    const PoolHold hold(pool);
    HeapPage* page = PageBase(slot->block);
    if ((InMoveablePlace(page) && slot->lockCount != 0) || slot->lockCount == kMostLocks) {
        HeapErrorDispatch(pool, MEM_LOCK_ERROR);
        return nullptr;
    }
    if (KindOf(page) == kKindLarge) {
        page->large.relocState = 0;
    } else if (KindOf(page) == kKindRelocatable && !MoveWhole(pool, slot, 0)) {
        return nullptr;
    }
    ++slot->lockCount;
    return slot->block;
}

std::uint32_t RelocUnfix(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return kNoCount;
    }
    const PoolHold hold(pool);
    HeapPage* page = PageBase(slot->block);
    if (InMoveablePlace(page) || slot->lockCount == 0) {
        HeapErrorDispatch(pool, MEM_LOCK_ERROR);
        return kNoCount;
    }
    if (--slot->lockCount > 0) {
        return slot->lockCount;
    }
    if (KindOf(page) == kKindLarge) {
        page->large.relocState = AllocRelocatable;
    } else if (!MoveWhole(pool, slot, AllocRelocatable)) {
        slot->lockCount = 1;
        return kNoCount;
    }
    return 0;
}

RelocState RelocStateOf(HandleSlot* slot) {
    HeapPool* pool = ValidatedPool(slot);
    if (pool == nullptr) {
        return {.lockCount = kNoCount, .moveable = false};
    }
    const PoolHold hold(pool);
    return {.lockCount = slot->lockCount, .moveable = InMoveablePlace(PageBase(slot->block))};
}

std::uint32_t RelocLockCount(HandleSlot* slot) {
    return RelocStateOf(slot).lockCount;
}

int RelocIsMoveable(HandleSlot* slot) {
    return RelocStateOf(slot).moveable ? 1 : 0;
}

std::uint32_t RelocSize(HandleSlot* slot) {
    {
        const HandleHold hold;
        if (const HeapPage* page = PageOfHandle(slot); page != nullptr) {
            return KindOf(page) == kKindLarge ? PageSizeOf(page) - kPageHeader
                                              : DataSize(HeaderOfData(slot->block));
        }
    }
    HeapErrorDispatch(nullptr, MEM_BAD_HANDLE);
    return kNoSize;
}

}  // namespace veldt::heap
