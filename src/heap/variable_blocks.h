// Pages of kinds 0 and 2: blocks of any size that tile the page, each behind a 16-bit header, with
// boundary tags on the free ones, which stand in a ring that a next-fit rover walks.
//
// Invariants of a page: blocks tile the area from the first header to the sentinel; no two free
// blocks touch; every free block is in the ring and nothing else but the sentinel is; bit 1 of each
// header tells the state of the block before it; blockCount is the number of blocks in use.
#pragma once

#include "heap/fault.h"
#include "heap/records.h"

namespace veldt::heap {

// A block is named by the address of its header.

enum BlockBits : std::uint16_t {
    kBlockInUse = 1,
    kPreviousInUse = 2,          ///< or this is the first block; else a footer stands before
    kBlockRelocatable = 0x8000,  ///< in use, with a trailer at its end
};

inline constexpr std::uint32_t kHeaderSize = 2;
inline constexpr std::uint32_t kFooterSize = 2;
inline constexpr std::uint16_t kUsedSizeMask = 0x7FFF & ~(kGranule - 1);
inline constexpr std::uint16_t kFreeSizeMask = 0xFFFF & ~(kGranule - 1);

/// Where a free block and the sentinel keep their ring pointers, from the header.
inline constexpr std::uint32_t kRingNext = kPointer;
inline constexpr std::uint32_t kRingPrev = 2 * kPointer;
inline constexpr std::uint32_t kSentinelSize = 3 * kPointer;
inline constexpr std::uint32_t kSmallestBlock = RoundUp(3 * kPointer + kFooterSize, kGranule);
static_assert(Figure(kSmallestBlock, 16) && Figure(kSentinelSize, 12));

/// Where the first header of a page stands: its data is aligned to the granule.
inline constexpr std::uint32_t kFirstBlock =
    RoundUp(kPageHeader + kHeaderSize, kGranule) - kHeaderSize;
static_assert(Figure(kFirstBlock, 30));

/// The trailer of a relocatable block points to its slot; it stands before the footer's place.
inline constexpr std::uint32_t kTrailerSize = kPointer + kFooterSize;
static_assert(Figure(kTrailerSize, 6));

/// The block size of a request of at most 0x7FF0 bytes.
constexpr std::uint16_t BlockSizeFor(std::uint32_t request) {
    const std::uint32_t size = RoundUp(request + kHeaderSize, kGranule);
    return static_cast<std::uint16_t>(size < kSmallestBlock ? kSmallestBlock : size);
}

/// The one free block of an empty page of `pageSize` bytes.
constexpr std::uint16_t EmptyPageBlock(std::uint32_t pageSize) {
    return static_cast<std::uint16_t>((pageSize - kFirstBlock - kSentinelSize) & kFreeSizeMask);
}
static_assert(Figure(EmptyPageBlock(16384), 16340));

/// Atomic, since a block's size is read without the pool lock while a neighbour changes bit 1.
VELDT20_EXEMPT inline std::uint16_t HeaderOf(const char* block) {
    const Exempt exempt;
    return __atomic_load_n(reinterpret_cast<const std::uint16_t*>(block), __ATOMIC_RELAXED);
}
VELDT20_EXEMPT inline void SetHeader(char* block, std::size_t word) {
    const Exempt exempt;
    __atomic_store_n(reinterpret_cast<std::uint16_t*>(block), static_cast<std::uint16_t>(word),
                     __ATOMIC_RELAXED);
}
[[gnu::always_inline]] inline void SetBits(char* block, unsigned bits) {
    SetHeader(block, HeaderOf(block) | bits);
}
[[gnu::always_inline]] inline void ClearBits(char* block, unsigned bits) {
    SetHeader(block, HeaderOf(block) & ~bits);
}
inline bool InUse(const char* block) {
    return (HeaderOf(block) & kBlockInUse) != 0;
}
inline std::uint16_t UsedSize(const char* block) {
    return HeaderOf(block) & kUsedSizeMask;
}
inline std::uint16_t FreeSize(const char* block) {
    return HeaderOf(block) & kFreeSizeMask;
}

/// Relocatable or not, the size is in the same bits of a block in use; a free one never has bit 15.
inline char* BlockAfter(char* block) {
    return block + UsedSize(block);
}
/// Of the block before one whose kPreviousInUse is clear.
inline std::uint16_t FooterBefore(const char* block) {
    return Load<std::uint16_t>(block - kFooterSize);
}
inline void SetFooterBefore(char* block, std::size_t size) {
    Store(block - kFooterSize, static_cast<std::uint16_t>(size));
}

inline char* HeaderOfData(char* data) {
    return data - kHeaderSize;
}
inline char* DataOf(char* block) {
    return block + kHeaderSize;
}

/// Whether `header` can be that of a block in use that a handle owns.
inline bool IsOwned(std::size_t header) {
    constexpr unsigned kOwned = kBlockInUse | kBlockRelocatable;
    return (header & kOwned) == kOwned;
}

/// Whether `data`, an address in a page of these blocks with `header` before it, can be that of a
/// block in use that no handle owns.
inline bool IsPlainBlock(const char* data, std::size_t header) {
    constexpr unsigned kOwned = kBlockInUse | kBlockRelocatable;
    return OffsetInUnit(data) % kGranule == 0 && (header & kOwned) == kBlockInUse;
}

inline char* RingNext(const char* block) {
    return Load<char*>(block + kRingNext);
}
inline char* RingPrev(const char* block) {
    return Load<char*>(block + kRingPrev);
}
inline void SetRingNext(char* block, char* next) {
    Store(block + kRingNext, next);
}
inline void SetRingPrev(char* block, char* prev) {
    Store(block + kRingPrev, prev);
}

/// Takes what stands between two members out of the ring.
inline void Unlink(char* next, char* prev) {
    SetRingNext(prev, next);
    SetRingPrev(next, prev);
}
inline void UnlinkFree(char* block) {
    Unlink(RingNext(block), RingPrev(block));
}

/// Right behind the sentinel, always. True if no other free block is in the ring.
inline bool InsertFree(const HeapPage* page, char* block) {
    char* sentinel = page->sentinel;
    char* next = RingNext(sentinel);
    SetRingPrev(block, sentinel);
    SetRingNext(block, next);
    SetRingPrev(next, block);
    SetRingNext(sentinel, block);
    return next == sentinel;
}

/// True of a block whose ring holds nothing else but the sentinel, and of the sentinel itself when
/// its ring holds one free block or none.
inline bool AtMostOneFree(const char* member) {
    return RingNext(member) == RingPrev(member);
}

inline char* FirstBlock(HeapPage* page) {
    return reinterpret_cast<char*>(page) + kFirstBlock;
}

/// The slot in the trailer of a relocatable block.
inline char* TrailerOf(char* block) {
    return block + UsedSize(block) - kTrailerSize;
}
inline HandleSlot* SlotOf(char* block) {
    return Load<HandleSlot*>(TrailerOf(block));
}
inline void SetSlot(char* block, HandleSlot* slot) {
    Store(TrailerOf(block), slot);
}

/// Bytes that a block in use can hold.
inline std::uint32_t DataSize(const char* block) {
    const std::uint16_t header = HeaderOf(block);
    const std::uint32_t size = header & kUsedSizeMask;
    return size - kHeaderSize - ((header & kBlockRelocatable) != 0 ? kTrailerSize : 0);
}

std::uint16_t VariablePageInit(HeapPage* page, std::uint32_t pageSize);
/// For requests up to the large threshold; falls back to a large block. Null if nothing serves.
char* VariableAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size);
/// `need` is a block size. Null, with freeHint corrected, if no free block is large enough.
char* VariablePageAlloc(HeapPage* page, std::uint16_t need, std::uint32_t flags);
/// The same on the page that served last, if its hint allows it.
char* VariableTakeAtHead(const HeapPool* pool, PageKind kind, std::uint16_t need,
                         std::uint32_t flags);
/// `data` is of a block in use whose relocatable bit is clear.
void VariableFree(char* data);
/// `block` is the header's address. 1 done, 0 impossible.
int VariableResizeInPlace(char* block, std::uint32_t size);

/// The first of the invariants above that does not hold in the page.
HeapFault VariablePageFault(HeapPage* page);

}  // namespace veldt::heap
