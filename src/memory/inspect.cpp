// Figures, walk and check of the instance's heap.
#include <veldt20/inspect.h>

#include <bit>
#include <cstdio>

#include "heap/walk.h"
#include "memory/memory_calls.h"

using namespace veldt::heap;
using veldt::memory::InstancePool;

namespace {

XBlockFamily FamilyOf(const HeapPage* page, const WalkedBlock& block) {
    const bool handle = block.slot != nullptr;
    switch (KindOf(page)) {
        case kKindFixed:
            return kXFixedPointer;
        case kKindRelocatable:
            return kXMoveableHandle;
        case kKindLarge:
            return handle ? kXLargeHandle : kXLargePointer;
        default:
            return handle ? kXFixedHandle : kXVariablePointer;
    }
}

std::uint32_t LogicalSize(const WalkedBlock& block) {
    if (!block.inUse) {
        return 0;
    }
    if (block.slot != nullptr) {
        return block.slot->size;
    }
    const std::uint32_t physical = PoolBlockSize(block.data);
    return physical - veldt::memory::ReadExcess(block.data, physical);
}

XHeapBlock Shown(const HeapPage* page, const WalkedBlock& block) {
    const bool locked = block.slot != nullptr && block.slot->lockCount != 0;
    return {.data = block.data,
            .size = block.size,
            .logical = LogicalSize(block),
            .handle = block.slot != nullptr ? &block.slot->block : nullptr,
            .state = !block.inUse ? kXFree : (locked ? kXLocked : kXUsed),
            .family = FamilyOf(page, block)};
}

XHeapPage Shown(const HeapPage* page) {
    const bool moveable = KindOf(page) == kKindRelocatable;
    const unsigned pinned = page->link->linkFlags & kPinnedMask;
    return {.base = reinterpret_cast<const char*>(page),
            .committed = RegionSize(page),
            .blocks = page->blockCount,
            .pinned = moveable ? pinned : 0,
            .kind = static_cast<std::uint8_t>(KindOf(page))};
}

int CountInto(const XHeapPage* page, const XHeapBlock* block, void* context) {
    auto& figures = *static_cast<XHeapStatistics*>(context);
    if (block == nullptr) {
        ++figures.pages[page->kind];
        figures.committed[page->kind] += page->committed;
        figures.pinned += page->pinned;
    } else if (block->state == kXFree) {
        figures.freeBytes += block->size;
        ++figures.freeBlocks[std::bit_width(block->size) - 1];
        figures.largestFree = block->size > figures.largestFree ? block->size : figures.largestFree;
    } else {
        XHeapFamilyFigures& family = figures.families[block->family];
        ++family.blocks;
        family.liveBytes += block->logical;
        figures.liveBytes += block->logical;
        figures.slotsInUse += block->handle != nullptr ? 1 : 0;
    }
    return 1;
}

}  // namespace

int XHeapWalk(XHeapVisitor visitor, void* context) {
    if (!IsLivePool(InstancePool)) {
        return 1;
    }
    return WalkPages(InstancePool, [&](HeapPage* page) {
        const XHeapPage shown = Shown(page);
        return visitor(&shown, nullptr, context) != 0 &&
               WalkBlocks(page, [&](const WalkedBlock& block) {
                   const XHeapBlock shownBlock = Shown(page, block);
                   return visitor(&shown, &shownBlock, context) != 0;
               });
    });
}

int XHeapGetStatistics(XHeapStatistics* statistics) {
    *statistics = {};
    if (!IsLivePool(InstancePool)) {
        return 0;
    }
    XHeapWalk(CountInto, statistics);
    statistics->footprint = InstancePool->footprint;
    std::uint32_t slots = statistics->slotsInUse;
    for (const HandleSlot* slot = InstancePool->freeSlots; slot != nullptr;
         slot = reinterpret_cast<const HandleSlot*>(slot->block)) {
        ++slots;
    }
    statistics->slots = slots;
    return 1;
}

std::uint32_t XHeapFootprint() {
    return IsLivePool(InstancePool) ? InstancePool->footprint : 0;
}

int XHeapCheck(char* message, std::uint32_t size) {
    const HeapFault fault = PoolFault(InstancePool);
    if (message != nullptr && size > 0) {
        message[0] = '\0';
        if (fault) {
            std::snprintf(message, size, "%s at %p", fault.what, fault.where);
        }
    }
    return fault ? 0 : 1;
}
