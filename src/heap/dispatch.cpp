// Sends each request to one of the three block disciplines: by its size, or by the kind of the page
// that the block stands in.
#include <algorithm>

#include "heap/block_life.h"
#include "heap/errors.h"
#include "heap/fixed_blocks.h"
#include "heap/large_blocks.h"
#include "heap/locks.h"
#include "heap/pools.h"
#include "heap/regions.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

/// Whether `block` can be a block in use of its live page. Beyond the page this tells a
/// variable-size block that is free already, and most addresses inside a block.
bool IsBlockOf(const HeapPage* page, char* block) {
    if (KindOf(page) == kKindFixed || KindOf(page) == kKindLarge) {
        return true;
    }
    return OffsetInUnit(block) % kGranule == 0 && InUse(HeaderOfData(block));
}

/// The same for a block that no handle owns.
bool IsPointerOf(const HeapPage* page, char* block) {
    switch (KindOf(page)) {
        case kKindFixed:
            return true;
        case kKindLarge:
            return page->ownerSlot == nullptr;
        default:
            return IsPlainBlock(block, HeaderOf(HeaderOfData(block)));
    }
}

void ZeroFrom(char* block, std::uint32_t from, std::uint32_t to) {
    if (from < to) {
        std::memset(block + from, 0, to - from);
    }
}

/// PoolResizeCore for pages of variable-size blocks.
std::uint16_t ResizeVariable(HeapPool* pool, char* data, std::uint32_t size, std::uint32_t flags) {
    char* block = HeaderOfData(data);
    const auto usable = static_cast<std::uint16_t>(DataSize(block));
    if ((size > usable && size > pool->largeThreshold) || VariableResizeInPlace(block, size) == 0) {
        return usable;
    }
    BlockResized(data, usable);
    if ((flags & AllocZero) != 0) {
        ZeroFrom(data, std::min<std::uint32_t>(size, usable), UsedSize(block) - kHeaderSize);
    }
    return 0;
}

/// PoolResizeCore for large blocks.
std::uint16_t ResizeLarge(HeapPage* page, char** result, std::uint32_t size, std::uint32_t flags) {
    if (result != nullptr && size <= page->pool->largeThreshold) {
        return static_cast<std::uint16_t>(std::min(size, PageSizeOf(page) - kPageHeader));
    }
    const int done = LargeResize(page, result, size, flags);
    return done == 0 && result == nullptr ? 1 : 0;
}

}  // namespace

std::uint32_t UsableSize(char* block) {
    HeapPage* page = PageBase(block);
    const PageKind kind = KindOf(page);
    if (kind == kKindVariable || kind == kKindRelocatable) {
        return DataSize(HeaderOfData(block));
    }
    return kind == kKindFixed ? page->pool->fixedSize : PageSizeOf(page) - kPageHeader;
}

namespace {

/// PoolAlloc for a pool whose lock is held, or has none.
char* AllocBySize(HeapPool* pool, std::uint32_t size, std::uint32_t flags) {
    if (size > pool->fixedSize) {
        return size > pool->largeThreshold ? LargeAlloc(pool, flags, size)
                                           : VariableAlloc(pool, flags, size);
    }
    if (size == 0) {
        HeapErrorDispatch(pool, MEM_ALLOC_ZERO);
        return nullptr;
    }
    char* block = FixedAlloc(pool);
    if (block != nullptr) {
        BlockBorn(block, flags);
        if ((flags & AllocZero) != 0) {
            std::memset(block, 0, pool->fixedSize);
        }
    }
    return block;
}

[[gnu::noinline, gnu::cold]] void RaiseBadPool() {
    HeapErrorDispatch(nullptr, MEM_BAD_MEM_POOL);
}

[[gnu::noinline, gnu::cold]] void RaiseBadPointer() {
    HeapErrorDispatch(nullptr, MEM_BAD_POINTER);
}

}  // namespace

char* PoolAlloc(HeapPool* pool, std::uint32_t size, std::uint32_t flags) {
    if (!IsPoolSignature(pool)) {
        RaiseBadPool();
        return nullptr;
    }
    const PoolHold hold(pool);
    return AllocBySize(pool, size, flags & ~std::uint32_t{AllocRelocatable});
}

int PoolFree(char* block) {
    HeapPage* page = LivePage(block);
    if (page == nullptr || !IsPointerOf(page, block)) {
        RaiseBadPointer();
        return 0;
    }
    BlockDies(block);
    const PoolHold hold(page->pool);
    page->freeBlock(block);
    return 1;
}

std::uint32_t PoolBlockSize(char* block) {
    HeapPage* page = LivePage(block);
    if (page == nullptr || !IsBlockOf(page, block)) {
        RaiseBadPointer();
        return kNoSize;
    }
    return UsableSize(block);
}

std::uint16_t PoolResizeCore(char** result, char* block, std::uint32_t size, std::uint32_t flags) {
    HeapPage* page = PageBase(block);
    HeapPool* pool = page->pool;
    if (size == 0) {
        HeapErrorDispatch(pool, MEM_ALLOC_ZERO);
        if (result == nullptr) {
            return 1;
        }
        *result = nullptr;
        return 0;
    }
    switch (KindOf(page)) {
        case kKindFixed:
            return size <= pool->fixedSize ? 0 : static_cast<std::uint16_t>(pool->fixedSize);
        case kKindLarge:
            return ResizeLarge(page, result, size, flags);
        default:
            return ResizeVariable(pool, block, size, flags);
    }
}

char* PoolResize(char* block, std::uint32_t size, std::uint32_t flags) {
    HeapPage* page = LivePage(block);
    if (page == nullptr || !IsPointerOf(page, block)) {
        RaiseBadPointer();
        return nullptr;
    }
    HeapPool* pool = page->pool;
    const bool mayMove = (flags & ResizeNoMove) == 0;
    char* result = block;
    std::uint16_t toCopy = 0;
    {
        const PoolHold hold(pool);
        toCopy = PoolResizeCore(mayMove ? &result : nullptr, block, size, flags);
    }
    if (toCopy == 0) {
        return result;
    }
    if (!mayMove) {
        if (size != 0) {
            HeapErrorDispatch(pool, MEM_RESIZE_FAILED);
        }
        return nullptr;
    }
    char* moved = PoolAlloc(pool, size, flags);
    if (moved != nullptr) {
        std::memcpy(moved, block, toCopy);
        PoolFree(block);
    }
    return moved;
}

}  // namespace veldt::heap
