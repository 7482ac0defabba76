#include "heap/relocatable_blocks.h"

#include "heap/block_life.h"
#include "heap/compaction.h"
#include "heap/errors.h"
#include "heap/large_blocks.h"
#include "heap/pins.h"
#include "heap/pools.h"
#include "heap/regions.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

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

std::uint32_t RelocSize(HandleSlot* slot) {
    {
        const HandleHold hold;
        if (const HeapPage* page = PageOfHandle(slot); page != nullptr) {
            return KindOf(page) == kKindLarge ? PageSizeOf(page) - kPageHeader
                                              : DataSize(HeaderOfData(slot->block));
        }
    }
    RaiseBadHandle();
    return kNoSize;
}

}  // namespace veldt::heap
