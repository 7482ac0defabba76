// The links of a pool: carved from the rest of the pool's own region, then from regions that are
// chained behind it, and handed out last in, first out.
#include <algorithm>

#include "heap/errors.h"
#include "heap/pages.h"
#include "heap/regions.h"
#include "heap/ring_index.h"

namespace veldt::heap {

namespace {

constexpr std::uint32_t kFirstInPool = offsetof(HeapPool, firstLink);
constexpr std::uint32_t kFirstInExtension = kPointer;
constexpr std::uint32_t kSmallestExtension = kPointer + sizeof(PageLink);

constexpr std::uint32_t LinkCount(std::uint32_t size, std::uint32_t first) {
    return (size - first) / std::uint32_t{sizeof(PageLink)};
}
static_assert(Figure(LinkCount(4096, kFirstInPool), 249));
static_assert(Figure(LinkCount(4096, kFirstInExtension), 255));

/// Pushes the links numbered `from` on in a region of `size` bytes, in ascending order.
void CarveLinks(HeapPool* pool, char* region, std::uint32_t first, std::uint32_t from,
                std::uint32_t size) {
    auto* links = reinterpret_cast<PageLink*>(region + first);
    for (std::uint32_t i = from; i < LinkCount(size, first); ++i) {
        links[i].next = pool->freeLinks;
        pool->freeLinks = &links[i];
    }
}

/// Grows a region that holds links in place, and carves what is new. False if it can't grow.
bool GrowLinkRegion(HeapPool* pool, char* region, std::uint32_t first) {
    const std::uint32_t oldSize = RegionSize(region);
    if (oldSize >= kRegionUnit - 1 ||
        RegionResize(region, GrownRegionSize(oldSize), pool->flags | RegionUnder64K) == 0) {
        return false;
    }
    const std::uint32_t newSize = RegionSize(region);
    CarveLinks(pool, region, first, LinkCount(oldSize, first), newSize);
    pool->footprint += newSize - oldSize;
    return true;
}

/// Puts a new region at the head of linkRegions. False if the system and the handler give up.
bool AddLinkRegion(HeapPool* pool) {
    std::uint32_t size = kCommitStep;
    char* region = RegionAlloc(size, pool->flags | RegionUnder64K);
    while (region == nullptr) {
        size /= 2;
        if (size < kSmallestExtension) {
            size *= 2;
            if (HeapErrorDispatch(pool, MEM_OUT_OF_MEMORY) == 0) {
                return false;
            }
        }
        region = RegionAlloc(size, pool->flags | RegionUnder64K);
    }
    size = RoundUp(size, kCommitStep);
    Store(region, pool->linkRegions);
    pool->linkRegions = region;
    CarveLinks(pool, region, kFirstInExtension, 0, size);
    pool->footprint += size;
    return true;
}

}  // namespace

int PageLinkGrow(HeapPool* pool) {
    auto* base = reinterpret_cast<char*>(pool);
    if (pool->firstLink.page == nullptr) {
        CarveLinks(pool, base, kFirstInPool, 0, kCommitStep);
        return 1;
    }
    if (GrowLinkRegion(pool, base, kFirstInPool) ||
        (pool->linkRegions != nullptr &&
         GrowLinkRegion(pool, pool->linkRegions, kFirstInExtension)) ||
        AddLinkRegion(pool)) {
        return 1;
    }
    return pool->freeLinks != nullptr;
}

PageLink* PageLinkAcquire(HeapPool* pool, PageKind kind) {
    if (pool->freeLinks == nullptr && PageLinkGrow(pool) == 0) {
        return nullptr;
    }
    PageLink* link = pool->freeLinks;
    pool->freeLinks = link->next;
    PageLink*& head = pool->pageLists[kind];
    if (head == nullptr) {
        link->next = link;
        link->prev = link;
    } else {
        link->next = head->next;
        link->prev = head;
        head->next->prev = link;
        head->next = link;
    }
    head = link;
    return link;
}

void PageLinkRelease(HeapPool* pool, PageLink* link, PageKind kind) {
    PageLink*& head = pool->pageLists[kind];
    if (link->next == link) {
        head = nullptr;
    } else {
        link->next->prev = link->prev;
        link->prev->next = link->next;
        if (head == link) {
            head = link->next;
        }
    }
    link->next = pool->freeLinks;
    pool->freeLinks = link;
}

}  // namespace veldt::heap
