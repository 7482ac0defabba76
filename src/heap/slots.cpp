// The slots of a pool, in regions that grow in place from 4096 to 65536 bytes, so that no slot
// ever moves. Slots go back to the chain, their regions only with the pool.
#include "heap/errors.h"
#include "heap/regions.h"
#include "heap/relocatable_blocks.h"

namespace veldt::heap {

namespace {

constexpr std::uint32_t kFirstSlot = kPointer;
constexpr std::uint32_t kSmallestRegion = kFirstSlot + sizeof(HandleSlot);

constexpr std::uint32_t SlotCount(std::uint32_t size) {
    return (size - kFirstSlot) / std::uint32_t{sizeof(HandleSlot)};
}
static_assert(Figure(SlotCount(4096), 341) && Figure(SlotCount(65536), 5461));

/// Pushes the slots numbered `from` on, in ascending order.
void CarveSlots(HeapPool* pool, char* region, std::uint32_t from) {
    const std::uint32_t size = RegionSize(region);
    SetMark(region, MarkOf(kMarkSlots, size));
    auto* slots = reinterpret_cast<HandleSlot*>(region + kFirstSlot);
    for (std::uint32_t i = from; i < SlotCount(size); ++i) {
        SlotChainPush(pool, &slots[i]);
    }
}

}  // namespace

HandleSlot* SlotChainPop(HeapPool* pool) {
    while (pool->freeSlots == nullptr) {
        if (SlotTableGrow(pool) == 0) {
            return nullptr;
        }
    }
    HandleSlot* slot = pool->freeSlots;
    pool->freeSlots = reinterpret_cast<HandleSlot*>(slot->block);
    return slot;
}

int SlotTableGrow(HeapPool* pool) {
    const std::uint32_t flags = pool->flags | RegionUnder64K;
    std::uint32_t wanted = kCommitStep;
    if (char* head = pool->slotRegions; head != nullptr) {
        const std::uint32_t oldSize = RegionSize(head);
        if (oldSize < kRegionUnit - 1) {
            wanted = GrownRegionSize(oldSize);
            if (RegionResize(head, wanted, flags) != 0) {
                pool->footprint += RegionSize(head) - oldSize;
                CarveSlots(pool, head, SlotCount(oldSize));
                return 1;
            }
        }
    }
    char* region = RegionAlloc(wanted, flags);
    while (region == nullptr) {
        wanted /= 2;
        if (wanted < kSmallestRegion) {
            wanted *= 2;
            if (HeapErrorDispatch(pool, MEM_OUT_OF_MEMORY) == 0) {
                return pool->freeSlots != nullptr;
            }
        }
        region = RegionAlloc(wanted, flags);
    }
    Store(region, pool->slotRegions);
    pool->slotRegions = region;
    pool->footprint += RegionSize(region);
    CarveSlots(pool, region, 0);
    return 1;
}

}  // namespace veldt::heap
