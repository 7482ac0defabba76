#include "heap/stress.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

#include "heap/locks.h"
#include "heap/pages.h"
#include "heap/pools.h"
#include "heap/relocatable_blocks.h"
#include "heap/walk.h"

namespace veldt::heap {

#if VELDT20_STRESS

namespace {

std::vector<HandleSlot*> UnlockedSlots(HeapPool* pool) {
    std::vector<HandleSlot*> slots;
    WalkPages(pool, [&](HeapPage* page) {
        return WalkBlocks(page, [&](const WalkedBlock& block) {
            if (block.slot != nullptr && block.slot->lockCount == 0) {
                slots.push_back(block.slot);
            }
            return true;
        });
    });
    return slots;
}

/// A block like this one, taken without a compaction; or null.
char* PlaceLike(HeapPool* pool, char* data) {
    HeapPage* page = PageBase(data);
    if (KindOf(page) == kKindLarge) {
        HeapPage* fresh = PageAcquire(pool, kKindLarge, RegionSize(page), page->large.relocState);
        return fresh != nullptr ? reinterpret_cast<char*>(fresh) + kPageHeader : nullptr;
    }
    const std::uint32_t moveable = KindOf(page) == kKindRelocatable ? AllocRelocatable : 0U;
    return VariableAlloc(pool, moveable | AllocNoCompact | AllocNoLarge,
                         UsedSize(HeaderOfData(data)) - kHeaderSize);
}

/// Where a slot's blocks stood last: if one came back there soon, an address that was kept across
/// several calls would be right again.
std::array<char*, 4>& FormerPlaces(const HandleSlot* slot) {
    static std::unordered_map<const HandleSlot*, std::array<char*, 4>> places;
    return places[slot];
}

/// A block for the slot where it didn't stand of late, or null. Those that it did are taken on the
/// way, and the caller's to free.
char* PlaceElsewhere(HeapPool* pool, const HandleSlot* slot, std::vector<char*>& taken) {
    auto& former = FormerPlaces(slot);
    char* fresh = PlaceLike(pool, slot->block);
    while (fresh != nullptr && std::find(former.begin(), former.end(), fresh) != former.end()) {
        taken.push_back(fresh);
        fresh = PlaceLike(pool, slot->block);
    }
    std::rotate(former.begin(), former.end() - 1, former.end());
    former.front() = slot->block;
    return fresh;
}

}  // namespace

void StressMoves(HeapPool* pool, HandleSlot* resized) {
    if (!IsLivePool(pool)) {
        return;
    }
    const PoolHold hold(pool);
    std::vector<HandleSlot*> slots = UnlockedSlots(pool);
    if (resized != nullptr && std::find(slots.begin(), slots.end(), resized) == slots.end()) {
        slots.push_back(resized);
    }
    std::vector<char*> left;
    for (HandleSlot* slot : slots) {
        if (char* fresh = PlaceElsewhere(pool, slot, left); fresh != nullptr) {
            left.push_back(RelocRehome(slot, fresh, UsableSize(slot->block)));
        }
    }
    for (char* block : left) {
        PageBase(block)->freeBlock(block);
    }
}

#endif

}  // namespace veldt::heap
