#include "heap/variable_blocks.h"

#include <algorithm>

#include "heap/block_life.h"
#include "heap/large_blocks.h"
#include "heap/pages.h"
#include "heap/regions.h"
#include "heap/ring_index.h"

namespace veldt::heap {

namespace {

std::uint16_t SplitThreshold(const HeapPage* page) {
    if (KindOf(page) == kKindRelocatable) {
        return kSmallestBlock;
    }
    return static_cast<std::uint16_t>(
        std::max(page->pool->fixedSize + kGranule - 1, kSmallestBlock));
}

/// Uses the whole of a free block.
void TakeWhole(char* block) {
    UnlinkFree(block);
    SetBits(block, kBlockInUse);
    SetBits(BlockAfter(block), kPreviousInUse);
}

/// Makes `block` a free one of `size` bytes behind a block in use; the one after it knows already.
void MakeFree(char* block, unsigned size) {
    SetHeader(block, size | kPreviousInUse);
    SetFooterBefore(block + size, size);
}

/// Cuts `need` bytes off the low end of a free block. Gives the remainder.
char* TakeLowEnd(HeapPage* page, char* block, std::uint16_t need, unsigned rest) {
    SetHeader(block, need | kBlockInUse | (HeaderOf(block) & kPreviousInUse));
    UnlinkFree(block);
    char* remainder = block + need;
    MakeFree(remainder, rest);
    InsertFree(page, remainder);
    return remainder;
}

/// Cuts `need` bytes off the high end of a free block, which keeps its place in the ring.
char* TakeHighEnd(char* block, std::uint16_t need, unsigned rest) {
    MakeFree(block, rest);
    char* taken = block + rest;
    SetHeader(taken, need | kBlockInUse);
    SetBits(taken + need, kPreviousInUse);
    return taken;
}

/// Cuts a free block by the page's rules, and leaves the rover where the next search starts.
inline char* CutFree(HeapPage* page, char* block, std::uint16_t need, std::uint32_t flags) {
    const unsigned rest = FreeSize(block) - unsigned{need};
    if (rest < page->splitThreshold) {
        page->rover = RingNext(block);
        TakeWhole(block);
        return block;
    }
    if ((flags & (AllocRelocatable | AllocLowEnd)) != 0) {
        page->rover = TakeLowEnd(page, block, need, rest);
        return block;
    }
    page->rover = RingNext(block);
    return TakeHighEnd(block, need, rest);
}

/// What the search does on coming back to where it started: slides the page if that may help, and
/// else gives null with freeHint corrected.
[[gnu::noinline]] char* SearchEnds(HeapPage* page, std::uint16_t need, std::uint32_t flags,
                                   std::uint16_t largest) {
    const auto compactPage = page->pool->compactPage;
    if ((flags & (AllocRelocatable | AllocNoCompact)) == AllocRelocatable &&
        compactPage != nullptr && compactPage(page, need, nullptr) >= need &&
        page->rover != nullptr) {
        return page->rover;
    }
    page->link->freeHint = largest & kFreeSizeMask;
    RingIndexNote(page->link);
    return nullptr;
}

/// The block that the search from the rover gives, or null with freeHint corrected.
inline char* SearchPage(HeapPage* page, std::uint16_t need, std::uint32_t flags) {
    char* const start = page->rover;
    char* block = start;
    std::uint16_t largest = 0;
    // A header's low bits can't decide this: need is a multiple of the granule.
    for (std::uint16_t word = HeaderOf(block); word < need; word = HeaderOf(block)) {
        largest = std::max(largest, word);
        block = RingNext(block);
        if (block == start) {
            return SearchEnds(page, need, flags, largest);
        }
    }
    return block;
}

/// VariablePageAlloc, inline where the flags are known.
[[gnu::always_inline]] inline char* AllocInPage(HeapPage* page, std::uint16_t need,
                                                std::uint32_t flags) {
    char* block = SearchPage(page, need, flags);
    if (block == nullptr) {
        return nullptr;
    }
    block = CutFree(page, block, need, flags);
    BlockBorn(DataOf(block), flags);
    if ((flags & AllocZero) != 0) {
        std::memset(DataOf(block), 0, UsedSize(block) - kHeaderSize);
    }
    if ((flags & AllocRelocatable) != 0 && AtMostOneFree(page->rover)) {
        SetFreeHint(page->link, FreeSize(RingNext(page->sentinel)));
        page->link->linkFlags |= kNothingToSlide;
    }
    ++page->blockCount;
    return DataOf(block);
}

/// The block that the walk of the ring behind its head gives, or null. A page that is tried in vain
/// has its hint lowered, so the search goes on from the head each time.
char* SearchRing(HeapPool* pool, PageKind kind, std::uint16_t need, std::uint32_t flags) {
    PageLink* head = pool->pageLists[kind];
    if (head == nullptr) {
        return nullptr;
    }
    while (PageLink* link = RingFirstBehind(head, HintOf{need})) {
        if (char* data = VariablePageAlloc(link->page, need, flags); data != nullptr) {
            pool->pageLists[kind] = link;
            return data;
        }
    }
    return nullptr;
}

[[gnu::always_inline]] inline char* TryHead(const HeapPool* pool, PageKind kind, std::uint16_t need,
                                            std::uint32_t flags) {
    const PageLink* head = pool->pageLists[kind];
    return head != nullptr && need <= head->freeHint ? AllocInPage(head->page, need, flags)
                                                     : nullptr;
}

/// What VariableAlloc does when the page that served last has no room.
[[gnu::noinline]] char* AllocBeyondHead(HeapPool* pool, PageKind kind, std::uint16_t need,
                                        std::uint32_t flags) {
    char* data = SearchRing(pool, kind, need, flags);
    while (data == nullptr) {
        if ((flags & (AllocRelocatable | AllocNoCompact)) == AllocRelocatable &&
            pool->compactPool != nullptr && pool->compactPool(pool, need) >= need) {
            flags |= AllocNoCompact;
        } else if ((flags & AllocNoNewPage) != 0 ||
                   PageAcquire(pool, kind, pool->pageSize, 0) == nullptr) {
            break;
        }
        data = TryHead(pool, kind, need, flags);
    }
    if (data != nullptr) {
        return data;
    }
    const std::uint64_t rounded = RoundUp<std::uint64_t>(need, kCommitStep);
    if ((flags & AllocNoLarge) != 0 || pool->footprint + rounded > pool->ceiling) {
        return nullptr;
    }
    return LargeAlloc(pool, flags, need);
}

}  // namespace

std::uint16_t VariablePageInit(HeapPage* page, std::uint32_t pageSize) {
    char* first = FirstBlock(page);
    const std::uint16_t size = EmptyPageBlock(pageSize);
    char* sentinel = first + size;
    SetHeader(sentinel, kBlockInUse);
    SetRingNext(sentinel, sentinel);
    SetRingPrev(sentinel, sentinel);
    page->sentinel = sentinel;
    page->rover = first;
    page->splitThreshold = SplitThreshold(page);
    page->freeBlock = VariableFree;
    MakeFree(first, size);
    InsertFree(page, first);
    return size;
}

char* VariableAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    const auto kind = static_cast<PageKind>(flags & AllocRelocatable);
    const std::uint16_t need = BlockSizeFor(size);
    char* data =
        flags == 0 ? TryHead(pool, kKindVariable, need, 0) : TryHead(pool, kind, need, flags);
    return data != nullptr ? data : AllocBeyondHead(pool, kind, need, flags);
}

char* VariablePageAlloc(HeapPage* page, std::uint16_t need, std::uint32_t flags) {
    return AllocInPage(page, need, flags);
}

void VariableFree(char* data) {
    char* block = HeaderOfData(data);
    HeapPage* page = PageBase(block);
    const std::uint16_t header = HeaderOf(block);
    const bool joinsPrevious = (header & kPreviousInUse) == 0;
    unsigned size = header & kFreeSizeMask;
    char* after = block + size;
    if (joinsPrevious) {
        const unsigned before = FooterBefore(block);
        block -= before;
        size += before;
    }
    if (!InUse(after)) {
        if (after == page->rover) {
            page->rover = block;
        }
        UnlinkFree(after);
        size += FreeSize(after);
        after = block + size;
    }
    MakeFree(block, size);
    if (size > page->link->freeHint) {
        SetFreeHint(page->link, static_cast<std::uint16_t>(size));
    }
    ClearBits(after, kPreviousInUse);
    if (!joinsPrevious) {
        if (RingNext(page->sentinel) != page->sentinel) {
            ClearNothingToSlide(page->link);
        }
        InsertFree(page, block);
    }
    if (--page->blockCount == 0) {
        PageRelease(page, 1);
    }
}

namespace {

/// Takes a free block out of the ring for its neighbour below to use. Gives its size.
unsigned Absorb(HeapPage* page, char* block) {
    if (block == page->rover) {
        page->rover = RingNext(block);
    }
    UnlinkFree(block);
    return FreeSize(block);
}

/// Ends a block in use at `need` bytes, and makes the `rest` bytes behind it a free block.
void SplitUsed(HeapPage* page, char* block, std::uint16_t need, unsigned rest) {
    SetHeader(block, need | (HeaderOf(block) & ~kUsedSizeMask));
    char* remainder = block + need;
    MakeFree(remainder, rest);
    InsertFree(page, remainder);
    ClearBits(remainder + rest, kPreviousInUse);
}

}  // namespace

int VariableResizeInPlace(char* block, std::uint32_t size) {
    HeapPage* page = PageBase(block);
    const std::uint16_t need = BlockSizeFor(size);
    const std::uint16_t current = UsedSize(block);
    char* after = block + current;
    if (need > current) {
        if (InUse(after) || need > unsigned{current} + FreeSize(after)) {
            return 0;
        }
        const unsigned whole = current + Absorb(page, after);
        const unsigned rest = whole - need;
        if (rest < page->splitThreshold) {
            SetHeader(block, whole | (HeaderOf(block) & ~kUsedSizeMask));
            SetBits(block + whole, kPreviousInUse);
        } else {
            SplitUsed(page, block, need, rest);
        }
        return 1;
    }
    unsigned rest = unsigned{current} - need;
    if (rest < page->splitThreshold) {
        return 1;
    }
    if (!InUse(after)) {
        rest += Absorb(page, after);
    }
    if (rest > page->link->freeHint) {
        SetFreeHint(page->link, static_cast<std::uint16_t>(rest));
    }
    SplitUsed(page, block, need, rest);
    return 1;
}

}  // namespace veldt::heap
