// Pages of kind 3: one block in a region of its own. Requests above the large threshold come here,
// and smaller ones for which no ordinary page can be had.
#pragma once

#include "heap/records.h"

namespace veldt::heap {

std::uint16_t LargePageInit(HeapPage* page, std::uint32_t flags);
/// Compacts and asks the handler before it gives up. The caller holds the pool lock.
char* LargeAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size);
void LargeFree(char* block);
/// With a result place the block may move, and its new address is stored there and in its handle's
/// slot, null in the former on failure; without one it stays. 1 done, 0 not. The caller holds the
/// pool lock.
int LargeResize(HeapPage* page, char** result, std::uint32_t size, std::uint32_t flags);

}  // namespace veldt::heap
