// The check of all invariants of a pool, one invariant a line.
#include "heap/errors.h"
#include "heap/fixed_blocks.h"
#include "heap/locks.h"
#include "heap/pages.h"
#include "heap/pools.h"
#include "heap/regions.h"
#include "heap/relocatable_blocks.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

/// Every pointer that is followed here is tested first: the check must survive what it finds.
bool Owns(const HandleSlot* slot, const char* data) {
    return IsSlot(slot) && slot->block == data;
}

/// Tags, trailer and data of one block in use or free; the block before it is in use or not.
HeapFault BlockFault(HeapPage* page, char* block, bool previousInUse) {
    const std::uint16_t header = HeaderOf(block);
    const bool relocatable = (header & kBlockRelocatable) != 0;
    if (UsedSize(block) < kSmallestBlock || BlockAfter(block) > page->sentinel) {
        return {"blocks do not tile the page", block};
    }
    if (previousInUse != ((header & kPreviousInUse) != 0)) {
        return {"header is wrong about the block before it", block};
    }
    if (!InUse(block)) {
        if (!previousInUse) {
            return {"two free blocks touch", block};
        }
        if (relocatable || FooterBefore(BlockAfter(block)) != FreeSize(block)) {
            return {"tags of a free block disagree", block};
        }
        return {};
    }
    if (!relocatable && KindOf(page) == kKindRelocatable) {
        return {"block in a moveable page has no trailer", block};
    }
    if (relocatable && !Owns(SlotOf(block), DataOf(block))) {
        return {"slot and block do not point at each other", block};
    }
    return {};
}

/// Any address at all: whether it can be that of a free block of the page.
bool MayBeFree(HeapPage* page, char* block) {
    return block >= FirstBlock(page) && block < page->sentinel &&
           (block - FirstBlock(page)) % kGranule == 0 && !InUse(block);
}

/// The free ring holds `freeBlocks` free blocks, the rover among them or at the sentinel.
HeapFault FreeRingFault(HeapPage* page, std::uint32_t freeBlocks) {
    bool roverInRing = page->rover == page->sentinel;
    char* before = page->sentinel;
    for (char* at = RingNext(before); at != page->sentinel; at = RingNext(at)) {
        if (!MayBeFree(page, at) || RingPrev(at) != before || freeBlocks-- == 0) {
            return {"free ring is broken", at};
        }
        roverInRing = roverInRing || at == page->rover;
        before = at;
    }
    if (RingPrev(page->sentinel) != before) {
        return {"free ring is broken", page->sentinel};
    }
    if (freeBlocks != 0) {
        return {"a free block is not in the ring", page};
    }
    return roverInRing ? HeapFault{} : HeapFault{"rover is not in the ring", page};
}

/// What a walk of the pages counts, to be compared with what the pool says.
struct Tally {
    std::uint64_t footprint = 0;
    std::uint32_t links = 0;
    std::uint32_t handles = 0;
};

std::uint32_t PinnedIn(HeapPage* page, Tally& tally) {
    std::uint32_t pinned = 0;
    for (char* block = FirstBlock(page); block < page->sentinel; block = BlockAfter(block)) {
        if (InUse(block) && (HeaderOf(block) & kBlockRelocatable) != 0) {
            ++tally.handles;
            pinned += SlotOf(block)->lockCount != 0 ? 1 : 0;
        }
    }
    return KindOf(page) == kKindRelocatable ? pinned : 0;
}

HeapFault LargePageFault(HeapPage* page) {
    if (page->blockCount != 1) {
        return {"large page does not hold one block", page};
    }
    const char* data = reinterpret_cast<const char*>(page) + kPageHeader;
    if (page->ownerSlot != nullptr && !Owns(page->ownerSlot, data)) {
        return {"slot and large page do not point at each other", page};
    }
    return {};
}

HeapFault LinkFault(HeapPool* pool, PageLink* link, unsigned kind) {
    HeapPage* page = link->page;
    if (link->next->prev != link || link->prev->next != link) {
        return {"ring of links is broken", link};
    }
    if (page->link != link || page->pool != pool || page->signature != (kPageSignature | kind)) {
        return {"page and link do not belong together", page};
    }
    const std::uint32_t size = RegionSize(page);
    if (MarkAt(page) != MarkOf(kMarkPage, size) || PageSizeOf(page) != size) {
        return {"address map is wrong about a page", page};
    }
    if (const HeapFault fault = PageFault(page)) {
        return fault;
    }
    const auto base = reinterpret_cast<std::uintptr_t>(page);
    return ReachIn(*ZoneOf(base), base) == ReachOf(page)
               ? HeapFault{}
               : HeapFault{"address map is wrong about a page's blocks", page};
}

HeapFault RingFault(HeapPool* pool, unsigned kind, Tally& tally) {
    PageLink* head = pool->pageLists[kind];
    if (head == nullptr) {
        return {};
    }
    PageLink* link = head;
    do {
        if (const HeapFault fault = LinkFault(pool, link, kind)) {
            return fault;
        }
        HeapPage* page = link->page;
        const bool tiled = kind == kKindVariable || kind == kKindRelocatable;
        if (tiled && PinnedIn(page, tally) != (link->linkFlags & kPinnedMask)) {
            return {"pinned blocks are miscounted", page};
        }
        tally.handles += kind == kKindLarge && page->ownerSlot != nullptr ? 1 : 0;
        tally.footprint += RegionSize(page);
        ++tally.links;
        link = link->next;
    } while (link != head);
    return kind != kKindLarge ? RingIndexFault(head) : HeapFault{};
}

/// Adds a chain of link or slot regions to the footprint, and gives the records that they hold.
std::uint32_t CountRegions(const char* region, std::size_t recordSize, Tally& tally) {
    std::uint32_t records = 0;
    for (; region != nullptr; region = Load<char*>(region)) {
        const std::uint32_t size = RegionSize(region);
        tally.footprint += size;
        records += static_cast<std::uint32_t>((size - kPointer) / recordSize);
    }
    return records;
}

HeapFault LinksFault(HeapPool* pool, Tally& tally) {
    const std::uint32_t own = RegionSize(pool);
    tally.footprint += own;
    const auto ownLinks =
        static_cast<std::uint32_t>((own - offsetof(HeapPool, firstLink)) / sizeof(PageLink));
    const std::uint32_t carved =
        CountRegions(pool->linkRegions, sizeof(PageLink), tally) + ownLinks;
    for (const PageLink* link = pool->freeLinks; link != nullptr && tally.links <= carved;
         link = link->next) {
        ++tally.links;
    }
    // No link at all: none has been carved yet.
    return tally.links == carved || tally.links == 0 ? HeapFault{}
                                                     : HeapFault{"a link is lost", pool};
}

HeapFault SlotsFault(HeapPool* pool, Tally& tally) {
    const std::uint32_t slots = CountRegions(pool->slotRegions, sizeof(HandleSlot), tally);
    for (const HandleSlot* slot = pool->freeSlots; slot != nullptr;
         slot = reinterpret_cast<const HandleSlot*>(slot->block)) {
        if (!IsSlot(slot) || tally.handles++ > slots) {
            return {"chain of free slots is broken", slot};
        }
    }
    return tally.handles == slots ? HeapFault{} : HeapFault{"a slot is lost", pool};
}

}  // namespace

HeapFault VariablePageFault(HeapPage* page) {
    std::uint32_t inUse = 0;
    std::uint32_t freeBlocks = 0;
    std::uint16_t largest = 0;
    bool previousInUse = true;
    for (char* block = FirstBlock(page); block != page->sentinel; block = BlockAfter(block)) {
        if (const HeapFault fault = BlockFault(page, block, previousInUse)) {
            return fault;
        }
        previousInUse = InUse(block);
        (previousInUse ? inUse : freeBlocks) += 1;
        largest = !previousInUse && FreeSize(block) > largest ? FreeSize(block) : largest;
    }
    if (HeaderOf(page->sentinel) != (kBlockInUse | (previousInUse ? kPreviousInUse : 0))) {
        return {"sentinel is wrong about the block before it", page};
    }
    if (inUse != page->blockCount) {
        return {"blocks in use are miscounted", page};
    }
    // Compaction may keep the hint of a moveable page low.
    if (KindOf(page) == kKindVariable && page->link->freeHint < largest) {
        return {"freeHint hides a free block", page};
    }
    return FreeRingFault(page, freeBlocks);
}

HeapFault PageFault(HeapPage* page) {
    switch (KindOf(page)) {
        case kKindFixed:
            return FixedPageFault(page);
        case kKindLarge:
            return LargePageFault(page);
        default:
            return VariablePageFault(page);
    }
}

HeapFault PoolFault(HeapPool* pool) {
    if (!IsLivePool(pool) || pool->registry != &heapRegistry) {
        return {"not a pool", pool};
    }
    const PoolHold hold(pool);
    Tally tally;
    for (unsigned kind = 0; kind < kKinds; ++kind) {
        if (const HeapFault fault = RingFault(pool, kind, tally)) {
            return fault;
        }
    }
    if (const HeapFault fault = LinksFault(pool, tally)) {
        return fault;
    }
    if (const HeapFault fault = SlotsFault(pool, tally)) {
        return fault;
    }
    return tally.footprint == pool->footprint ? HeapFault{}
                                              : HeapFault{"footprint does not add up", pool};
}

int PoolCheck(HeapPool* pool) {
    return PoolFault(pool) ? 0 : 1;
}

}  // namespace veldt::heap
