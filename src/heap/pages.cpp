#include "heap/pages.h"

#include "heap/block_life.h"
#include "heap/errors.h"
#include "heap/fixed_blocks.h"
#include "heap/large_blocks.h"
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

std::uint32_t PageRegionFlags(const HeapPool* pool, PageKind kind, std::uint32_t argument) {
    if (kind != kKindLarge) {
        return pool->flags | RegionUnder64K;
    }
    return pool->flags | RegionLarge | ((argument & AllocZero) != 0 ? RegionZero : 0U);
}

/// Lays out an empty page by its kind. Gives the freeHint.
std::uint16_t InitPage(HeapPool* pool, HeapPage* page, PageKind kind, std::uint32_t size,
                       std::uint32_t argument) {
    switch (kind) {
        case kKindFixed:
            return FixedPageInit(pool, page, size);
        case kKindLarge:
            return LargePageInit(page, argument);
        default:
            return VariablePageInit(page, size);
    }
}

}  // namespace

HeapPage* PageAcquire(HeapPool* pool, PageKind kind, std::uint32_t size, std::uint32_t argument) {
    const std::uint64_t rounded = RoundUp<std::uint64_t>(size, kCommitStep);
    if (pool->footprint + rounded > pool->ceiling) {
        HeapErrorDispatch(pool, MEM_EXCEEDED_CEILING);
        return nullptr;
    }
    PageLink* link = PageLinkAcquire(pool, kind);
    if (link == nullptr) {
        return nullptr;
    }
    auto* page =
        reinterpret_cast<HeapPage*>(RegionAlloc(size, PageRegionFlags(pool, kind, argument)));
    if (page == nullptr) {
        PageLinkRelease(pool, link, kind);
        return nullptr;
    }
    const auto committed = static_cast<std::uint32_t>(rounded);
    link->page = page;
    page->pool = pool;
    page->link = link;
    page->signature = static_cast<std::uint16_t>(kPageSignature | kind);
    page->blockCount = 0;
    link->freeHint = InitPage(pool, page, kind, committed, argument);
    link->linkFlags = kNothingToSlide;
    if (kind != kKindLarge && !RingIndexInsert(link, link->prev != link ? link->prev : nullptr)) {
        PageLinkRelease(pool, link, kind);
        page->signature = 0;
        RegionFree(page);
        return nullptr;
    }
    PageBegan(page, committed);
    pool->footprint += committed;
    MarkPage(page, committed);
    return page;
}

int PageRelease(HeapPage* page, int floorTest) {
    const PageKind kind = KindOf(page);
    PageLink* link = page->link;
    HeapPool* pool = page->pool;
    const std::uint32_t size = PageSizeOf(page);
    if (floorTest != 0 && pool->footprint - size < pool->floor) {
        return 0;
    }
    if (kind != kKindLarge) {
        RingIndexRemove(link);
    }
    PageLinkRelease(pool, link, kind);
    pool->footprint -= size;
    page->signature = 0;
    UnmarkPage(page);
    RegionFree(page);
    return 1;
}

}  // namespace veldt::heap
