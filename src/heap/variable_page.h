// What every allocation and every free does in a page of variable-size blocks: inline, since these
// few steps are most of what a call costs. Whatever is rare is left to functions that are called at
// the very end, so that the steps before it need save no registers for them.
#pragma once

#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

/// Makes `block` a free one of `size` bytes behind a block in use; the one after it knows already.
inline void MakeFree(char* block, std::size_t size) {
    SetHeader(block, size | kPreviousInUse);
    SetFooterBefore(block + size, size);
}

/// A block in use, or null, and its size.
struct Taken {
    char* block;
    std::size_t size;
    /// Of the page, if its hint has risen by that, or null. The caller tells the index, at the end.
    const PageLink* raised;
};

/// After the page has come to have one free block or none.
inline const PageLink* NothingToSlide(const HeapPage* page) {
    PageLink* link = page->link;
    const std::uint16_t hint = FreeSize(RingNext(page->sentinel));
    // Compaction may have kept the hint low, so that this raises it.
    const bool raised = hint > link->freeHint;
    link->freeHint = hint;
    link->linkFlags |= kNothingToSlide;
    return raised ? link : nullptr;
}

/// Uses the free block that a search has found, which has this header: cuts `need` bytes off it by
/// the page's rules, and leaves the rover where the next search starts.
[[gnu::always_inline]] inline Taken TakeFound(HeapPage* page, char* found, std::size_t header,
                                              std::size_t need, std::uint32_t flags) {
    std::size_t size = need;
    const std::size_t rest = (header & kFreeSizeMask) - need;
    char* next = RingNext(found);
    bool atMostOneFree = false;
    if (rest < page->splitThreshold) {
        size += rest;
        page->rover = next;
        Unlink(next, RingPrev(found));
        SetHeader(found, header | kBlockInUse);
        SetBits(found + size, kPreviousInUse);
        atMostOneFree = (flags & AllocRelocatable) != 0 && AtMostOneFree(next);
    } else if ((flags & (AllocRelocatable | AllocLowEnd)) != 0) {
        char* remainder = found + need;
        Unlink(next, RingPrev(found));
        SetHeader(found, need | kBlockInUse | (header & kPreviousInUse));
        MakeFree(remainder, rest);
        atMostOneFree = InsertFree(page, remainder);
        page->rover = remainder;
    } else {
        page->rover = next;
        MakeFree(found, rest);
        found += rest;
        SetHeader(found, need | kBlockInUse);
        SetBits(found + need, kPreviousInUse);
    }
    ++page->blockCount;
    const PageLink* raised = nullptr;
    if ((flags & AllocRelocatable) != 0 && atMostOneFree) {
        raised = NothingToSlide(page);
    }
    return {.block = found, .size = size, .raised = raised};
}

/// What most calls need: the first or second block that the search of the page which served last
/// comes to. Null, and nothing done, if neither suffices. The rover is often at the sentinel, so
/// that the first is none.
[[gnu::always_inline]] inline Taken TakeNearRover(const HeapPool* pool, PageKind kind,
                                                  std::size_t need, std::uint32_t flags) {
    const PageLink* link = pool->pageLists[kind];
    if (link == nullptr || need > link->freeHint) {
        return {};
    }
    HeapPage* page = link->page;
    char* found = page->rover;
    std::size_t header = HeaderOf(found);
    if (header < need) {
        found = RingNext(found);
        header = HeaderOf(found);
        if (header < need) {
            return {};
        }
    }
    return TakeFound(page, found, header, need, flags);
}

/// The rarer ends of a free that has made a free block of `size` bytes.
[[gnu::noinline]] void AfterFree(HeapPage* page, std::size_t size, bool slidable);

/// Makes `size` bytes from `block` on, behind a block in use, one free block with a free block that
/// may follow them. Its size.
[[gnu::always_inline]] inline std::size_t FreeWithNext(HeapPage* page, char* block,
                                                       std::size_t size, char* after) {
    std::size_t headerAfter = HeaderOf(after);
    if ((headerAfter & kBlockInUse) == 0) {
        if (after == page->rover) {
            page->rover = block;
        }
        UnlinkFree(after);
        size += headerAfter & kFreeSizeMask;
        after = block + size;
        headerAfter = HeaderOf(after);
    }
    SetHeader(block, size | kPreviousInUse);
    SetFooterBefore(after, size);
    SetHeader(after, headerAfter & ~std::size_t{kPreviousInUse});
    return size;
}

/// Counts a block less, of which a free one of `size` bytes came.
[[gnu::always_inline]] inline void CountFreed(HeapPage* page, std::size_t size, bool slidable) {
    if (--page->blockCount == 0 || size > page->link->freeHint || slidable) [[unlikely]] {
        AfterFree(page, size, slidable);
    }
}

/// Frees a block in use whose header is `header`.
[[gnu::always_inline]] inline void FreeInPage(HeapPage* page, char* block, std::size_t header) {
    std::size_t size = header & kUsedSizeMask;
    char* after = block + size;
    if ((header & kPreviousInUse) == 0) {
        const std::size_t before = FooterBefore(block);
        size = FreeWithNext(page, block - before, before + size, after);
        CountFreed(page, size, false);
        return;
    }
    size = FreeWithNext(page, block, size, after);
    const bool slidable =
        !InsertFree(page, block) && (page->link->linkFlags & kNothingToSlide) != 0;
    CountFreed(page, size, slidable);
}

}  // namespace veldt::heap
