// The records of the heap: pool, page, link, slot and registry. A page starts on a 64 KB boundary,
// so masking a block's address gives its page, and the page names its pool.
#pragma once

#include "heap/address_map.h"
#include "platform/platform.h"

namespace veldt::heap {

using platform::CRITICAL_SECTION;

struct HeapPool;
struct HeapPage;
struct HeapRegistry;

/// Page kinds, which are also the indexes into HeapPool::pageLists.
enum PageKind : unsigned {
    kKindVariable = 0,     ///< variable-size blocks that never move
    kKindFixed = 1,        ///< blocks of the pool's fixed size
    kKindRelocatable = 2,  ///< variable-size blocks that compaction may move
    kKindLarge = 3,        ///< one block, in a region of its own
    kKinds = 5,            ///< the last list stays empty
};

enum PoolFlags : std::uint32_t {
    PoolSerialised = 2,  ///< the pool has a lock, which every operation on it takes
};

/// Flags of the address-space layer; a pool's flags go into each of its region requests.
enum RegionFlags : std::uint32_t {
    RegionZero = 0x100,       ///< fresh committed memory is zeroed
    RegionUnder64K = 0x1000,  ///< at most 64 KB committed: the region stays in one unit
    RegionLarge = 0x2000,     ///< for large blocks, in place of RegionUnder64K
};

/// Flags of allocation and resize.
enum BlockFlags : std::uint32_t {
    AllocZero = 1,         ///< the block, or what is new of it, is zeroed
    AllocRelocatable = 2,  ///< for pages of kind 2; in a resize: may move though it is locked
    AllocLowEnd = 4,       ///< cut from the low end of a free block, as relocatable blocks are
    ResizeNoMove = 8,      ///< the block stays where it is
    AllocNoNewPage = 0x10,
    AllocNoLarge = 0x20,
    AllocNoCompact = 0x40,
};

/// What a caller's handle points to. Slots never move while their pool lives.
struct HandleSlot {
    char* block;              ///< in a free slot the next free slot
    std::uint32_t size;       ///< the layer above keeps the logical size here
    std::uint32_t lockCount;  ///< 0 to 255
};
static_assert(Figure(sizeof(HandleSlot), 12));

/// What the heap knows of a page without touching it; one a page, in the ring of the page's kind.
struct PageLink {
    /// Kinds 0 and 2: bound on the largest free block. Kind 1: 1 while a block may be free.
    std::uint16_t freeHint;
    std::uint16_t linkFlags;  ///< kNothingToSlide, and the number of pinned blocks below it
    HeapPage* page;
    PageLink* next;
    PageLink* prev;
};
static_assert(Figure(sizeof(PageLink), 16));

inline constexpr std::uint16_t kNothingToSlide = 0x8000;
inline constexpr std::uint16_t kPinnedMask = 0x7FFF;

struct LargePageState {
    std::uint8_t spare;
    std::uint8_t relocState;  ///< AllocRelocatable if the block counts as moveable, else 0
};

struct HeapPage {
    HeapPool* pool;
    PageLink* link;
    void (*freeBlock)(char* block);
    std::uint16_t blockCount;
    std::uint16_t signature;  ///< kPageSignature with the kind; 0 once released
    union {
        char* rover;            ///< kinds 0, 2: where the next search starts; a member of the ring
        char* freeChain;        ///< kind 1: first free block
        HandleSlot* ownerSlot;  ///< kind 3: the handle, or null
    };
    union {
        char* sentinel;  ///< kinds 0, 2: root of the free ring, at the end of the page
        char* carveEnd;  ///< kind 1: end of the blocks
        LargePageState large;
    };
    std::uint16_t splitThreshold;  ///< kinds 0, 2: the smallest remainder that becomes a block
};
static_assert(Figure(sizeof(HeapPage), 28) && Figure(offsetof(HeapPage, signature), 14));
static_assert(Figure(offsetof(HeapPage, large) + offsetof(LargePageState, relocState), 21));

inline constexpr std::uint16_t kPageSignature = 0xCAD0;
inline constexpr std::uint16_t kPageSignatureMask = 0xFFF8;
inline constexpr std::uint16_t kPoolSignature = 0xBEAD;

/// Block data never begins nearer to the base of a page than this.
inline constexpr std::uint32_t kPageHeader = sizeof(HeapPage);

/// At the base of a region of its own, which never moves. Its rest holds page links.
struct HeapPool {
    PageLink* pageLists[kKinds];  ///< heads of the rings
    PageLink* freeLinks;          ///< linked through next
    HandleSlot* freeSlots;        ///< linked through block
    char* slotRegions;            ///< linked through their first word
    std::uint16_t signature;      ///< kPoolSignature while the pool lives
    std::uint16_t flags;
    std::uint32_t fixedSize;  ///< a multiple of the granule; 0: no fixed blocks
    std::uint16_t pageSize;
    std::uint16_t largeThreshold;  ///< a larger request gets a page of its own
    std::uint32_t footprint;       ///< bytes committed: own, link and slot regions, and pages
    std::uint32_t floor;           ///< below this footprint, empty pages are kept
    std::uint32_t ceiling;         ///< no new page may take the footprint above this
    std::uint16_t (*compactPool)(HeapPool* pool, std::uint16_t need);
    std::uint16_t (*compactPage)(HeapPage* page, std::uint16_t need, char* start);
    HeapPool* nextPool;
    HeapRegistry* registry;
    CRITICAL_SECTION lock;    ///< in a serialised pool only
    std::uint32_t lockDepth;  ///< holds on lock
    char* linkRegions;        ///< linked through their first word
    PageLink firstLink;       ///< its page is null until the links behind it have been carved
};
static_assert(Figure(offsetof(HeapPool, firstLink), 104) && Figure(sizeof(HeapPool), 120));

inline HeapPage* PageBase(const void* block) {
    return reinterpret_cast<HeapPage*>(reinterpret_cast<std::uintptr_t>(block) &
                                       ~std::uintptr_t{kRegionUnit - 1});
}

inline std::uint32_t OffsetInUnit(const void* address) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address)) &
           (kRegionUnit - 1);
}

inline PageKind KindOf(const HeapPage* page) {
    return static_cast<PageKind>(page->signature & 7);
}

inline bool IsPageSignature(std::uint16_t word) {
    return (word & kPageSignatureMask) == kPageSignature;
}

/// How many bytes behind the header of a page block data may begin.
inline std::uint16_t ReachOf(const HeapPage* page) {
    const auto upTo = [](const char* end) {
        return static_cast<std::uint16_t>(OffsetInUnit(end - 1) + 1 - kPageHeader);
    };
    switch (KindOf(page)) {
        case kKindFixed:
            return upTo(page->carveEnd);
        case kKindLarge:
            return 1;
        default:
            return upTo(page->sentinel);
    }
}

inline void SetReach(const HeapPage* page, std::uint16_t reach) {
    const auto address = reinterpret_cast<std::uintptr_t>(page);
    ReachIn(*ZoneOf(address), address).store(reach, std::memory_order_relaxed);
}

/// Marks the first unit of a page of `committed` bytes, which makes its addresses live.
inline void MarkPage(HeapPage* page, std::uint32_t committed) {
    if (KindOf(page) == kKindLarge) {
        LargeSizeAt(page).store(committed, std::memory_order_relaxed);
    }
    SetReach(page, ReachOf(page));
    SetMark(page, MarkOf(kMarkPage, committed));
}

inline void UnmarkPage(const HeapPage* page) {
    SetReach(page, 0);
    SetMark(page, kMarkNothing);
}

/// Committed bytes of a live page. The marks of all kinds but the large one tell them.
inline std::uint32_t PageSizeOf(const HeapPage* page) {
    return KindOf(page) == kKindLarge ? LargeSizeAt(page).load(std::memory_order_relaxed)
                                      : (MarkAt(page) & kMarkSteps) * kCommitStep;
}

/// A pool, a dead one whose memory still stands, or null.
inline bool IsPoolSignature(const HeapPool* pool) {
    return pool != nullptr && pool->signature == kPoolSignature;
}

/// Any pointer at all.
inline bool IsLivePool(const HeapPool* pool) {
    return (MarkAt(pool) & kMarkPool) != 0 && OffsetInUnit(pool) == 0 &&
           pool->signature == kPoolSignature;
}

/// Whether `block`, any address at all, stands where block data of a page may begin.
[[gnu::always_inline]] inline bool IsInReach(const void* block) {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    AddressZone* zone = ZoneOf(address);
    return zone != nullptr && OffsetInUnit(block) - kPageHeader <
                                  ReachIn(*zone, address).load(std::memory_order_relaxed);
}

/// The live page that `block`, any address at all, can be data of; null if there is none.
[[gnu::always_inline]] inline HeapPage* LivePage(const void* block) {
    return IsInReach(block) && IsPageSignature(PageBase(block)->signature) ? PageBase(block)
                                                                           : nullptr;
}

}  // namespace veldt::heap
