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

/// Whether the page's chain and counts add up.
HeapFault FixedPageFault(const HeapPage* page);

}  // namespace veldt::heap
