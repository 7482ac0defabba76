// Blocks that are reached through a slot, whose first word is the block's present address, so that
// the heap may move them. A block's lock count pins it against compaction; in a fixed place (kind
// 0, or a large page whose relocState is 0) it counts the fixes, and is at least 1.
//
// Every operation on a slot takes any pointer at all; what is no handle raises error 13.
#pragma once

#include "heap/variable_blocks.h"

namespace veldt::heap {

inline constexpr std::uint32_t kNoCount = 0xFFFF;
inline constexpr std::uint32_t kMostLocks = 255;

/// The slot, or null (error 10, error 4 for size 0, or the allocator's). AllocRelocatable asks for
/// a moveable place, with lock count 0; else the place is fixed, with count 1.
HandleSlot* RelocAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size);
/// 1, locked or not; 0 on an invalid handle.
int RelocFree(HandleSlot* slot);
/// The slot, or null with block and slot as they were.
HandleSlot* RelocResize(HandleSlot* slot, std::uint32_t size, std::uint32_t flags);
/// Pins a block in a moveable place. The block, or null (error 6).
char* RelocLock(HandleSlot* slot);
/// The new count, or kNoCount (error 6).
std::uint32_t RelocUnlock(HandleSlot* slot);
/// Changes the pins of a block in a moveable place, in one look: `mode` 1 adds one (error 6 beyond
/// 255), -1 takes one if there is one, 0 takes all. 1; 0, and nothing changed, in a fixed place; -1
/// on an invalid handle.
int RelocChangePins(HandleSlot* slot, int mode);
/// Brings the block to a fixed place, and counts a lock. The block, or null (error 6).
char* RelocFix(HandleSlot* slot);
/// Takes a lock of a fixed block; at 0 it goes back to a moveable place. The count, or kNoCount.
std::uint32_t RelocUnfix(HandleSlot* slot);

std::uint32_t RelocLockCount(HandleSlot* slot);
/// 1 in a moveable place; 0 in a fixed one or on an invalid handle.
int RelocIsMoveable(HandleSlot* slot);
/// Usable bytes, or kNoSize.
std::uint32_t RelocSize(HandleSlot* slot);

/// Lock count and place of a handle in one look; count kNoCount, not moveable, for what is none.
struct RelocState {
    std::uint32_t lockCount;
    bool moveable;
};
RelocState RelocStateOf(HandleSlot* slot);

inline constexpr std::uint32_t kSlotSize = sizeof(HandleSlot);

/// True if `slot`, any pointer at all, stands in a slot table.
inline bool IsSlot(const HandleSlot* slot) {
    const unsigned mark = MarkAt(slot);
    // In front of the first slot the difference is more than any region holds.
    const std::uint32_t place = OffsetInUnit(slot) - kPointer;
    return (mark & kMarkSlots) != 0 && place % kSlotSize == 0 &&
           place < (mark & kMarkSteps) * kCommitStep - (kPointer + kSlotSize - 1);
}

/// The page of a handle's block, or null for what is no handle. The caller holds HandleLock.
[[gnu::always_inline]] inline HeapPage* PageOfHandle(const HandleSlot* slot) {
    if (!IsSlot(slot)) {
        return nullptr;
    }
    char* block = slot->block;
    HeapPage* page = LivePage(block);
    if (page == nullptr) {
        return nullptr;
    }
    if (KindOf(page) == kKindLarge) {
        return page->ownerSlot != nullptr ? page : nullptr;
    }
    return IsOwned(HeaderOf(HeaderOfData(block))) ? page : nullptr;
}

/// Whether blocks of the page may be moved while they are not pinned.
inline bool InMoveablePlace(const HeapPage* page) {
    return KindOf(page) == kKindRelocatable ||
           (KindOf(page) == kKindLarge && page->large.relocState == AllocRelocatable);
}

/// A free slot, or null. The caller holds the pool lock.
HandleSlot* SlotChainPop(HeapPool* pool);
inline void SlotChainPush(HeapPool* pool, HandleSlot* slot) {
    slot->block = reinterpret_cast<char*>(pool->freeSlots);
    pool->freeSlots = slot;
}
/// 1 if there are free slots afterwards.
int SlotTableGrow(HeapPool* pool);

/// Moves the slot's bytes to `fresh`, a block that is large enough. Gives the old block, which has
/// no owner now and is the caller's to free. The caller holds the pool lock.
char* RelocRehome(HandleSlot* slot, char* fresh, std::uint32_t bytes);
/// A large block or a variable-size one, by the threshold. The caller holds the pool lock.
char* RelocBlockAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size);

}  // namespace veldt::heap
