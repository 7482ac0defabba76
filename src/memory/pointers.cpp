// Pointer blocks: they never move, and keep the excess of their physical over their logical size
// in their last two bytes.
#include "heap/block_life.h"
#include "heap/quick_calls.h"
#include "heap/stress.h"
#include "memory/memory_calls.h"

namespace veldt::memory {

using namespace heap;

void WriteExcess(char* block, std::size_t physical, std::uint32_t logical) {
    Store(block + physical - kExcessSize, static_cast<std::uint16_t>(physical - logical));
}

std::uint32_t ReadExcess(const char* block, std::uint32_t physical) {
    return Load<std::uint16_t>(block + physical - kExcessSize);
}

std::int16_t MemNewPtr(char** p, std::uint32_t size, std::int16_t clear) {
    *p = nullptr;
    if (size > kLargestSize) {
        return SetMemError(kMemFull);
    }
    StressMoves(InstancePool, nullptr);
    char* block = PoolAlloc(InstancePool, size + kExcessSize, clear != 0 ? AllocZero : 0U);
    if (block == nullptr) {
        return SetMemError(kMemFull);
    }
    WriteExcess(block, UsableSize(block), size);
    BlockHolds(block, size);
    *p = block;
    return SetMemError(0);
}

std::int16_t MemDisposePtr(char* p) {
    return SetMemError(PoolFree(p) != 0 ? 0 : kMemBadBlock);
}

std::int16_t MemGetPtrSize(char* p, std::uint32_t* size) {
    const std::uint32_t physical = PoolBlockSize(p);
    if (physical == kNoSize) {
        *size = 0;
        return SetMemError(kMemBadBlock);
    }
    *size = physical - ReadExcess(p, physical);
    return SetMemError(0);
}

std::int16_t MemSetPtrSize(char* p, std::uint32_t size) {
    if (size > kLargestSize || PoolResize(p, size + kExcessSize, ResizeNoMove) == nullptr) {
        return SetMemError(kMemFull);
    }
    WriteExcess(p, UsableSize(p), size);
    BlockHolds(p, size);
    return SetMemError(0);
}

}  // namespace veldt::memory

using namespace veldt::memory;

namespace {

constexpr std::int16_t kClear = 64;

[[gnu::noinline]] char* NewPtr(std::uint32_t size, std::int16_t clear) {
    char* p = nullptr;
    MemNewPtr(&p, size, clear);
    return p;
}

[[gnu::noinline]] void DisposePtr(char* p) {
    MemDisposePtr(p);
}

[[gnu::always_inline]] inline char* Hold(const Grant& grant, std::uint32_t size) {
    WriteExcess(grant.block, grant.usable, size);
    BlockHolds(grant.block, size);
    SetMemError(0);
    return grant.block;
}

[[gnu::noinline]] char* NewPtrBySearch(std::uint32_t size) {
    const Grant grant = AllocBySearch(InstancePool, size + kExcessSize);
    return grant.block != nullptr ? Hold(grant, size) : NewPtr(size, 0);
}

}  // namespace

char* _XNewPtr(std::int32_t size) {
    const auto wanted = static_cast<std::uint32_t>(size);
    if (wanted > kLargestSize || kStress) {
        return NewPtr(wanted, 0);
    }
    const Grant grant = AllocQuickly(InstancePool, wanted + kExcessSize);
    return grant.block != nullptr ? Hold(grant, wanted) : NewPtrBySearch(wanted);
}

char* _XNewPtrClear(std::int32_t size) {
    return NewPtr(static_cast<std::uint32_t>(size), kClear);
}

void XDisposePtr(char* p) {
    if (!FreeQuickly(p, [] { SetMemError(0); })) {
        DisposePtr(p);
    }
}

std::int32_t XGetPtrSize(char* p) {
    std::uint32_t size = 0;
    MemGetPtrSize(p, &size);
    return static_cast<std::int32_t>(size);
}

void _XSetPtrSize(char* p, std::int32_t size) {
    MemSetPtrSize(p, static_cast<std::uint32_t>(size));
}

char* XStripAddress(void* p) {
    return static_cast<char*>(p);
}
