// The lock counts of handles: pins on blocks in moveable places, fixes of those in fixed ones.
#include "heap/pins.h"

#include "heap/errors.h"
#include "heap/ring_index.h"

namespace veldt::heap {

void RaiseBadHandle() {
    HeapErrorDispatch(nullptr, MEM_BAD_HANDLE);
}

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

namespace {

/// Moves a variable-size block into a new one of at least its size. False if none can be had.
bool MoveWhole(HeapPool* pool, HandleSlot* slot, std::uint32_t flags) {
    const std::uint32_t size = UsedSize(HeaderOfData(slot->block)) - kHeaderSize;
    char* fresh = RelocBlockAlloc(pool, flags, size);
    if (fresh == nullptr) {
        return false;
    }
    char* old = RelocRehome(slot, fresh, size - kTrailerSize);
    PageBase(old)->freeBlock(old);
    return true;
}

}  // namespace

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

}  // namespace veldt::heap
