// Shows the pages of a pool and the blocks in them, in the order of the rings and of addresses.
#pragma once

#include <bitset>

#include "heap/fixed_blocks.h"
#include "heap/regions.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

/// A block as it stands in its page. `slot` is the handle's, or null.
struct WalkedBlock {
    char* data;
    std::uint32_t size;  ///< with header and trailer
    bool inUse;
    HandleSlot* slot;
};

/// `visit` takes a HeapPage* and gives false to end the walk. False if it was ended.
template <class Visit>
bool WalkPages(HeapPool* pool, const Visit& visit) {
    for (PageLink* head : pool->pageLists) {
        PageLink* link = head;
        while (link != nullptr) {
            if (!visit(link->page)) {
                return false;
            }
            link = link->next == head ? nullptr : link->next;
        }
    }
    return true;
}

namespace walk {

template <class Visit>
bool VariableBlocks(HeapPage* page, const Visit& visit) {
    for (char* block = FirstBlock(page); block != page->sentinel; block = BlockAfter(block)) {
        const bool owned = (HeaderOf(block) & kBlockRelocatable) != 0;
        if (!visit(WalkedBlock{.data = DataOf(block),
                               .size = UsedSize(block),
                               .inUse = InUse(block),
                               .slot = owned ? SlotOf(block) : nullptr})) {
            return false;
        }
    }
    return true;
}

template <class Visit>
bool FixedBlocks(HeapPage* page, const Visit& visit) {
    char* first = reinterpret_cast<char*>(page) + kPageHeader;
    const std::uint32_t size = page->pool->fixedSize;
    std::bitset<kRegionUnit / kGranule> freeBlocks;
    for (char* block = page->freeChain; block != nullptr; block = Load<char*>(block)) {
        freeBlocks.set(static_cast<std::size_t>(block - first) / size);
    }
    std::size_t number = 0;
    for (char* block = first; block != page->carveEnd; block += size, ++number) {
        if (!visit(WalkedBlock{block, size, !freeBlocks.test(number), nullptr})) {
            return false;
        }
    }
    return true;
}

}  // namespace walk

/// `visit` takes a WalkedBlock and gives false to end the walk. False if it was ended.
template <class Visit>
bool WalkBlocks(HeapPage* page, const Visit& visit) {
    switch (KindOf(page)) {
        case kKindFixed:
            return walk::FixedBlocks(page, visit);
        case kKindLarge:
            return visit(WalkedBlock{reinterpret_cast<char*>(page) + kPageHeader,
                                     RegionSize(page) - kPageHeader, true, page->ownerSlot});
        default:
            return walk::VariableBlocks(page, visit);
    }
}

}  // namespace veldt::heap
