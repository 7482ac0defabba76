#include "heap/compaction.h"

#include <algorithm>

#include "heap/block_life.h"
#include "heap/locks.h"
#include "heap/pages.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

/// Of a block in use in a moveable page, or of the sentinel, which counts as one that stays.
bool MayMove(char* block) {
    return UsedSize(block) != 0 && SlotOf(block)->lockCount == 0;
}

/// Slides the pages that may gain from it, in ring order, until one has room for `need`. Gives the
/// first link in ring order that has, or null.
PageLink* SlideUntil(PageLink* head, std::uint16_t need) {
    const auto worthALook = [need](const Offer& offer) {
        return offer.hint >= need || offer.unslid;
    };
    PageLink* link = RingFirstFrom(head, worthALook);
    while (link != nullptr) {
        if ((link->linkFlags & kNothingToSlide) == 0) {
            SetFreeHint(link, SlidePage(link->page, need, nullptr));
        }
        if (link->freeHint >= need) {
            return link;
        }
        link = RingFirstFrom(head, worthALook);
    }
    return nullptr;
}

/// Walks the whole ring; for the rare ring in which every page has a pinned block.
PageLink* FewestPinned(PageLink* head) {
    PageLink* best = head;
    for (PageLink* link = head->next; link != head; link = link->next) {
        const int pinned = link->linkFlags & kPinnedMask;
        const int bestPinned = best->linkFlags & kPinnedMask;
        if (pinned < bestPinned || (pinned == bestPinned && link->freeHint > best->freeHint)) {
            best = link;
        }
    }
    return best;
}

/// The link with the fewest pinned blocks, among equals the one with the largest hint, and among
/// those the first in ring order.
PageLink* BestToEmpty(PageLink* head) {
    for (Offer most = RingBound(head); most.unpinnedHint != 0; most = RingBound(head)) {
        PageLink* link = RingFirstFrom(
            head, [&most](const Offer& offer) { return offer.unpinnedHint >= most.unpinnedHint; });
        if (link != nullptr) {
            return link;
        }
    }
    return FewestPinned(head);
}

/// Empties pages, the best first, until one has room for `need` or keeps a block. Gives the last.
PageLink* EmptyUntil(HeapPool* pool, PageLink* best, std::uint16_t need) {
    while (best->freeHint < need && best->next != best) {
        // Both keep the allocator out of the page that is being emptied.
        pool->pageLists[kKindRelocatable] = best->next;
        best->freeHint = 0;
        const std::uint16_t reached = EvacuatePage(best->page, need);
        if (reached != kPageGone) {
            SetFreeHint(best, reached);
            break;
        }
        best = pool->pageLists[kKindRelocatable];
    }
    return best;
}

}  // namespace

std::uint16_t CompactMoveablePages(HeapPool* pool, std::uint16_t need) {
    PageLink* head = pool->pageLists[kKindRelocatable];
    if (head == nullptr) {
        return 0;
    }
    const HandleHold hold;
    PageLink* best = SlideUntil(head, need);
    if (best == nullptr) {
        best = EmptyUntil(pool, BestToEmpty(head), need);
    }
    pool->pageLists[kKindRelocatable] = best;
    return best->freeHint;
}

std::uint16_t SlidePage(HeapPage* page, std::uint16_t need, char* start) {
    char* block = start != nullptr ? start : FirstBlock(page);
    while (block < page->sentinel) {
        if (InUse(block)) {
            block = BlockAfter(block);
            continue;
        }
        if (AtMostOneFree(block)) {
            break;
        }
        char* after = BlockAfter(block);
        if (!MayMove(after)) {
            block = after;
            continue;
        }
        block = SlideGroup(after);
        if (!InUse(block) && FreeSize(block) >= need) {
            page->rover = block;
            if (AtMostOneFree(block)) {
                page->link->linkFlags |= kNothingToSlide;
            }
            return FreeSize(block);
        }
    }
    page->link->linkFlags |= kNothingToSlide;
    return LargestFreeBlock(page);
}

char* SlideGroup(char* block) {
    char* end = BlockAfter(block);
    for (; InUse(end); end = BlockAfter(end)) {
        if (!MayMove(end)) {
            return end;
        }
    }
    const unsigned below = FooterBefore(block);
    const auto length = static_cast<std::size_t>(end - block);
    char* target = block - below;
    // The bytes move under the lock as well: among them is the header that a reader looks at.
    const HandleHold hold;
    UnlinkFree(target);
    SlideBlocks(target, block, length);
    SetBits(target, kPreviousInUse);
    char* merged = target + length;
    const unsigned size = below + FreeSize(end);
    UnlinkFree(end);
    SetHeader(merged, size | kPreviousInUse);
    SetFooterBefore(merged + size, size);
    InsertFree(PageBase(merged), merged);
    for (char* moved = target; moved != merged; moved = BlockAfter(moved)) {
        SlotOf(moved)->block = DataOf(moved);
    }
    return merged;
}

std::uint16_t LargestFreeBlock(HeapPage* page) {
    std::uint16_t largest = 0;
    for (char* block = RingNext(page->sentinel); block != page->sentinel; block = RingNext(block)) {
        if (FreeSize(block) > largest) {
            largest = FreeSize(block);
            page->rover = block;
        }
    }
    return largest;
}

}  // namespace veldt::heap
