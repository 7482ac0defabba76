// Makes larger free blocks in the moveable pages (kind 2) of a pool: by sliding unlocked blocks
// down inside a page, and by moving blocks out of a page into others. Locked blocks stay. Every
// move ends with the block's slot naming the new address. The caller holds the pool lock.
#pragma once

#include "heap/records.h"

namespace veldt::heap {

/// The need that no block can reach: slide every page, and release those that become empty.
inline constexpr std::uint16_t kNeedEverything = 0xFFFF;
/// What EvacuatePage gives when the page is gone.
inline constexpr std::uint16_t kPageGone = 0xFFFF;

/// The largest free block reached, in a page whose link is now the head of the ring.
std::uint16_t CompactMoveablePages(HeapPool* pool, std::uint16_t need);
/// Slides from `start`, a block's header, or from the first block if null. The largest free block
/// reached, which the rover names.
std::uint16_t SlidePage(HeapPage* page, std::uint16_t need, char* start);
/// Moves blocks elsewhere until a free run reaches `need`. Its size, or kPageGone.
std::uint16_t EvacuatePage(HeapPage* page, std::uint16_t need);
/// `block` stands right behind a free block. If a group of unlocked blocks from there on ends at
/// another free block, slides it down so that the two merge. Where the scan goes on: at the merged
/// block, or at what the group ran into.
char* SlideGroup(char* block);
/// The size; the rover names the block, unless there is none.
std::uint16_t LargestFreeBlock(HeapPage* page);

}  // namespace veldt::heap
