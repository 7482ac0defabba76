// Pages and their links: where a pool's memory comes from and goes back to.
#pragma once

#include "heap/records.h"

namespace veldt::heap {

/// A link at the head of the ring of `kind`, or null if none can be had.
PageLink* PageLinkAcquire(HeapPool* pool, PageKind kind);
void PageLinkRelease(HeapPool* pool, PageLink* link, PageKind kind);
/// Makes spare links. 1 if there are any afterwards.
int PageLinkGrow(HeapPool* pool);

/// A page of `size` bytes, rounded up to the commit step, at the head of its ring. `argument` is
/// the block flags for a large page, else 0. Null if the ceiling (error 7) or the system forbids.
HeapPage* PageAcquire(HeapPool* pool, PageKind kind, std::uint32_t size, std::uint32_t argument);
/// 1 released; 0, and nothing changed, if the floor test was asked for and the floor refuses.
int PageRelease(HeapPage* page, int floorTest);

}  // namespace veldt::heap
