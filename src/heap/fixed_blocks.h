// Pages of kind 1: blocks of the pool's fixed size, end to end, with nothing of the heap's in a
// block that is in use. The first word of a free block points to the next free one of its page.
#pragma once

#include "heap/fault.h"
#include "heap/records.h"

namespace veldt::heap {

/// Blocks that a page of `pageSize` bytes holds.
constexpr std::uint32_t FixedBlockCount(std::uint32_t pageSize, std::uint32_t blockSize) {
    return (pageSize - kPageHeader) / blockSize;
}
static_assert(Figure(FixedBlockCount(16384, 20), 817) && Figure(FixedBlockCount(4096, 20), 203));

std::uint16_t FixedPageInit(HeapPool* pool, HeapPage* page, std::uint32_t pageSize);
void FixedPageCarve(HeapPage* page, std::uint32_t blockSize, std::uint32_t pageSize);
/// The caller holds the pool lock.
char* FixedAlloc(HeapPool* pool);
/// Believes that `block` is a block in use.
void FixedFree(char* block);

/// The block that the walk of the ring from its head gives, or null.
char* FixedTakeFromRing(HeapPool* pool);

/// The first free block of the page, or null.
inline char* FixedTakeFirst(HeapPage* page) {
    char* block = page->freeChain;
    if (block == nullptr) {
        return nullptr;
    }
    page->freeChain = Load<char*>(block);
    ++page->blockCount;
    return block;
}

/// What most calls need: the first free block of the page that served last, or null.
inline char* FixedTakeAtHead(const HeapPool* pool) {
    const PageLink* link = pool->pageLists[kKindFixed];
    return link != nullptr ? FixedTakeFirst(link->page) : nullptr;
}

/// The rarer ends of a free: the page was full, or is empty now.
[[gnu::noinline]] void AfterFixedFree(HeapPage* page, bool wasFull);

inline void FixedFreeInPage(HeapPage* page, char* block) {
    char* chain = page->freeChain;
    Store(block, chain);
    page->freeChain = block;
    if (--page->blockCount == 0 || chain == nullptr) [[unlikely]] {
        AfterFixedFree(page, chain == nullptr);
    }
}

/// Whether the page's chain and counts add up.
HeapFault FixedPageFault(const HeapPage* page);

}  // namespace veldt::heap
