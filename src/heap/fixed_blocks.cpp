#include "heap/fixed_blocks.h"

#include "heap/errors.h"
#include "heap/pages.h"
#include "heap/regions.h"
#include "heap/ring_index.h"

namespace veldt::heap {

namespace {

void SetMayHaveFree(HeapPage* page, std::uint16_t hint) {
    page->link->freeHint = hint;
    RingIndexNoteHinted(page, hint != 0);
}

/// The first free block of the page, or null after noting that there is none.
char* TakeFirst(HeapPage* page) {
    char* block = FixedTakeFirst(page);
    if (block == nullptr) {
        SetMayHaveFree(page, 0);
    }
    return block;
}

/// A page of the pool's size or, where the system has no room for that, of a smaller one.
HeapPage* AcquireFixedPage(HeapPool* pool) {
    std::uint32_t size = pool->pageSize;
    HeapPage* page = PageAcquire(pool, kKindFixed, size, 0);
    while (page == nullptr) {
        if (std::uint64_t{pool->footprint} + size > pool->ceiling) {
            return nullptr;
        }
        size /= 2;
        if (size < pool->fixedSize + kPageHeader) {
            size *= 2;
            if (HeapErrorDispatch(pool, MEM_OUT_OF_MEMORY) == 0) {
                return nullptr;
            }
        }
        page = PageAcquire(pool, kKindFixed, size, 0);
    }
    return page;
}

}  // namespace

std::uint16_t FixedPageInit(HeapPool* pool, HeapPage* page, std::uint32_t pageSize) {
    page->freeChain = nullptr;
    page->carveEnd = reinterpret_cast<char*>(page) + kPageHeader;
    page->freeBlock = FixedFree;
    FixedPageCarve(page, pool->fixedSize, pageSize);
    return 1;
}

void FixedPageCarve(HeapPage* page, std::uint32_t blockSize, std::uint32_t pageSize) {
    char* start = page->carveEnd;
    const std::uint32_t room = pageSize - OffsetInUnit(start);
    char* end = start + std::size_t{room / blockSize} * blockSize;
    page->freeChain = start;
    page->carveEnd = end;
    char* block = start;
    for (char* next = block + blockSize; next != end; next += blockSize) {
        Store(block, next);
        block = next;
    }
    Store<char*>(block, nullptr);
}

char* FixedTakeFromRing(HeapPool* pool) {
    PageLink*& head = pool->pageLists[kKindFixed];
    if (head == nullptr) {
        return nullptr;
    }
    if (head->freeHint != 0) {
        if (char* block = TakeFirst(head->page); block != nullptr) {
            return block;
        }
    }
    if (head->next == head) {
        return nullptr;
    }
    while (HeapPage* page = RingHintedBehind(head->page)) {
        if (char* block = TakeFirst(page); block != nullptr) {
            head = page->link;
            return block;
        }
    }
    return nullptr;
}

char* FixedAlloc(HeapPool* pool) {
    if (char* block = FixedTakeFromRing(pool); block != nullptr) {
        return block;
    }
    HeapPage* page = AcquireFixedPage(pool);
    return page != nullptr ? TakeFirst(page) : nullptr;
}

void FixedFree(char* block) {
    FixedFreeInPage(PageBase(block), block);
}

void AfterFixedFree(HeapPage* page, bool wasFull) {
    if (wasFull) {
        SetMayHaveFree(page, 1);
    }
    if (page->blockCount == 0) {
        PageRelease(page, 1);
    }
}

HeapFault FixedPageFault(const HeapPage* page) {
    const std::uint32_t blockSize = page->pool->fixedSize;
    const char* first = reinterpret_cast<const char*>(page) + kPageHeader;
    const std::uint32_t blocks = FixedBlockCount(RegionSize(page), blockSize);
    if (page->carveEnd != first + std::size_t{blocks} * blockSize) {
        return {"carved area does not fill the page", page};
    }
    std::uint32_t freeBlocks = 0;
    for (const char* block = page->freeChain; block != nullptr; block = Load<char*>(block)) {
        if (block < first || block >= page->carveEnd ||
            static_cast<std::size_t>(block - first) % blockSize != 0) {
            return {"free chain leaves the blocks of the page", block};
        }
        if (++freeBlocks > blocks) {
            return {"free chain runs in a circle", block};
        }
    }
    if (page->blockCount + freeBlocks != blocks) {
        return {"free blocks and blockCount do not add up", page};
    }
    if (freeBlocks != 0 && page->link->freeHint != 1) {
        return {"freeHint hides a free block", page};
    }
    return {};
}

}  // namespace veldt::heap
