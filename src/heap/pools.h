// Pools and the blocks in them. A pool owns its pages; destroying it gives all of them back,
// whatever is still in use.
//
// Sizes are bytes. A pool that is not one raises error 10, a block pointer that leads to no page
// error 14, a size of 0 error 4; the results say the rest.
#pragma once

#include "heap/fault.h"
#include "heap/records.h"

namespace veldt::heap {

/// What a new pool has for largeThreshold.
inline constexpr std::uint16_t kDefaultLargeThreshold = 4096;

/// `count` fixed blocks are provided for, as far as there is room. Null: no room (error 2), or a
/// fixed size that no page can hold (error 3).
HeapPool* PoolCreate(std::uint16_t fixedSize, std::uint32_t count, std::uint32_t flags);
HeapPool* PoolCreateDefault(std::uint32_t flags);
/// 1; 0 on a bad pool.
int PoolDestroy(HeapPool* pool);
/// Rounded up to the granule. 1; 0 if it can't be, or once the pool has a page of fixed blocks.
int PoolSetFixedSize(HeapPool* pool, std::uint16_t size);
/// Types: 1 fixed, 2 relocatable, 4 variable-size. Bytes of pages made, or -1.
std::int32_t PoolPreallocate(HeapPool* pool, std::uint32_t bytes, std::uint32_t type);
/// Bytes given back; -1, as unsigned, on a bad pool.
std::uint32_t PoolCompact(HeapPool* pool);
/// The same; the caller holds the pool lock.
std::uint32_t PoolCompactLocked(HeapPool* pool);
/// Any pointer at all. 1 or 0.
int PoolIsValid(const HeapPool* pool);

char* PoolAlloc(HeapPool* pool, std::uint32_t size, std::uint32_t flags);
/// 1; 0 on a bad pointer.
int PoolFree(char* block);
/// Usable bytes; kNoSize on a bad pointer.
std::uint32_t PoolBlockSize(char* block);
/// The same of what is known to be a block in use.
std::uint32_t UsableSize(char* block);
/// The block, perhaps elsewhere; null with the old block as it was.
char* PoolResize(char* block, std::uint32_t size, std::uint32_t flags);
/// 0: finished, in place or with the new address in `*result`. Else the block must move, and this
/// many of its bytes with it. Null for `result` forbids a move. The caller holds the pool lock.
std::uint16_t PoolResizeCore(char** result, char* block, std::uint32_t size, std::uint32_t flags);

inline constexpr std::uint32_t kNoSize = 0xFFFFFFFF;

/// The first invariant of the pool that does not hold: of its pages and their blocks, rings, index,
/// links, slots and footprint. Walks everything.
HeapFault PoolFault(HeapPool* pool);
/// The same of one page and the blocks in it.
HeapFault PageFault(HeapPage* page);
/// 1 if every invariant of the pool holds, else 0.
int PoolCheck(HeapPool* pool);

}  // namespace veldt::heap
