#include "heap/variable_blocks.h"

#include <algorithm>

#include "heap/block_life.h"
#include "heap/large_blocks.h"
#include "heap/pages.h"
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap/variable_page.h"

namespace veldt::heap {

namespace {

std::uint16_t SplitThreshold(const HeapPage* page) {
    if (KindOf(page) == kKindRelocatable) {
        return kSmallestBlock;
    }
    return static_cast<std::uint16_t>(
        std::max(page->pool->fixedSize + kGranule - 1, kSmallestBlock));
}

/// What the search does on coming back to where it started: slides the page if that may help, and
/// else gives null with freeHint corrected.
char* SearchEnds(HeapPage* page, std::uint16_t need, std::uint32_t flags, std::uint16_t largest) {
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

/// Hops along a page's ring beside a search that goes forward from the rover: back from there, and
/// both ways from the sentinel. Blocks that nobody has touched for long are then fetched four at a
/// time, where each hop of the search alone would wait for the one before it.
class Outriders {
  public:
    explicit Outriders(const HeapPage* page)
        : behind_(page->rover), first_(page->sentinel), last_(page->sentinel) {}

    void Hop() {
        behind_ = RingPrev(behind_);
        first_ = RingNext(first_);
        last_ = RingPrev(last_);
        __builtin_prefetch(behind_);
        __builtin_prefetch(first_);
        __builtin_prefetch(last_);
    }

  private:
    const char* behind_;
    const char* first_;
    const char* last_;
};

/// The block that the search from the rover gives, or null with freeHint corrected.
char* SearchPage(HeapPage* page, std::uint16_t need, std::uint32_t flags) {
    char* const start = page->rover;
    char* block = start;
    Outriders outriders(page);
    std::uint16_t largest = 0;
    // A header's low bits can't decide this: need is a multiple of the granule.
    for (std::uint16_t word = HeaderOf(block); word < need; word = HeaderOf(block)) {
        outriders.Hop();
        largest = std::max(largest, word);
        block = RingNext(block);
        if (block == start) {
            return SearchEnds(page, need, flags, largest);
        }
    }
    return block;
}

/// The block that the walk of the ring behind its head gives, or null. A page that is tried in vain
/// has its hint lowered, so the search goes on from the head each time.
char* SearchRing(HeapPool* pool, PageKind kind, std::uint16_t need, std::uint32_t flags) {
    PageLink* head = pool->pageLists[kind];
    if (head == nullptr) {
        return nullptr;
    }
    while (HeapPage* page = RingLikelyBehind(head->page, HintOf{need})) {
        // Only of moveable pages the index may not know yet that a hint has fallen.
        if (kind == kKindRelocatable && page->link->freeHint < need) {
            RingIndexNote(page->link);
            continue;
        }
        if (char* data = VariablePageAlloc(page, need, flags); data != nullptr) {
            pool->pageLists[kind] = page->link;
            return data;
        }
    }
    return nullptr;
}

/// What VariableAlloc does when the page that served last has no room.
char* AllocBeyondHead(HeapPool* pool, PageKind kind, std::uint16_t need, std::uint32_t flags) {
    char* data = SearchRing(pool, kind, need, flags);
    while (data == nullptr) {
        if ((flags & (AllocRelocatable | AllocNoCompact)) == AllocRelocatable &&
            pool->compactPool != nullptr && pool->compactPool(pool, need) >= need) {
            flags |= AllocNoCompact;
        } else if ((flags & AllocNoNewPage) != 0 ||
                   PageAcquire(pool, kind, pool->pageSize, 0) == nullptr) {
            break;
        }
        data = VariableTakeAtHead(pool, kind, need, flags);
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

char* VariableTakeAtHead(const HeapPool* pool, PageKind kind, std::uint16_t need,
                         std::uint32_t flags) {
    const PageLink* head = pool->pageLists[kind];
    return head != nullptr && need <= head->freeHint ? VariablePageAlloc(head->page, need, flags)
                                                     : nullptr;
}

char* VariableAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    const auto kind = static_cast<PageKind>(flags & AllocRelocatable);
    const std::uint16_t need = BlockSizeFor(size);
    char* data = VariableTakeAtHead(pool, kind, need, flags);
    return data != nullptr ? data : AllocBeyondHead(pool, kind, need, flags);
}

char* VariablePageAlloc(HeapPage* page, std::uint16_t need, std::uint32_t flags) {
    char* found = SearchPage(page, need, flags);
    if (found == nullptr) {
        return nullptr;
    }
    const auto [block, size, raised] = TakeFound(page, found, HeaderOf(found), need, flags);
    if (raised != nullptr) {
        RingIndexRaise(raised);
    }
    BlockBorn(DataOf(block), flags);
    if ((flags & AllocZero) != 0) {
        std::memset(DataOf(block), 0, size - kHeaderSize);
    }
    return DataOf(block);
}

void VariableFree(char* data) {
    FreeInPage(PageBase(data), HeaderOfData(data), HeaderOf(HeaderOfData(data)));
}

void AfterFree(HeapPage* page, std::size_t size, bool slidable) {
    if (size > page->link->freeHint) {
        SetFreeHint(page->link, static_cast<std::uint16_t>(size));
    }
    if (slidable) {
        ClearNothingToSlide(page->link);
    }
    if (page->blockCount == 0) {
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
