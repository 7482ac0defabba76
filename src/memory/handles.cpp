// Handle blocks: reached through a slot, which keeps their logical size. The excess word counts
// only while the block stands in a fixed place.
#include <algorithm>

#include "heap/block_life.h"
#include "heap/quick_calls.h"
#include "heap/stress.h"
#include "memory/memory_calls.h"

namespace veldt::memory {

using namespace heap;

namespace {

HandleSlot* SlotOfHandle(char** h) {
    return reinterpret_cast<HandleSlot*>(h);
}

void Unlock(HandleSlot* slot, std::uint32_t times) {
    for (; times > 0; --times) {
        RelocUnlock(slot);
    }
}

/// Takes a lock off a block in a fixed place, which brings it back when it was the last.
void Unfix(HandleSlot* slot) {
    const std::uint32_t physical = RelocSize(slot);
    if (physical == kNoSize) {
        return;
    }
    const std::uint32_t logical = physical - ReadExcess(slot->block, physical);
    RelocUnfix(slot);
    slot->size = logical;
    StressMoves(InstancePool, nullptr);
}

}  // namespace

std::int16_t MemNewHandle(char*** h, std::uint32_t size, std::int16_t clear) {
    *h = nullptr;
    if (size > kLargestSize) {
        return SetMemError(kMemFull);
    }
    StressMoves(InstancePool, nullptr);
    const std::uint32_t flags = AllocRelocatable | (clear != 0 ? AllocZero : 0U);
    HandleSlot* slot = RelocAlloc(InstancePool, flags, size + kExcessSize);
    if (slot == nullptr) {
        return SetMemError(kMemFull);
    }
    slot->size = size;
    BlockHolds(slot->block, size);
    *h = &slot->block;
    return SetMemError(0);
}

std::int16_t MemDisposeHandle(char** h) {
    return SetMemError(RelocFree(SlotOfHandle(h)) != 0 ? 0 : kMemBadBlock);
}

std::int16_t MemGetHandleSize(char** h, std::uint32_t* size) {
    HandleSlot* slot = SlotOfHandle(h);
    if (RelocSize(slot) == kNoSize) {
        *size = 0;
        return SetMemError(kMemBadBlock);
    }
    *size = slot->size;
    return SetMemError(0);
}

std::int16_t MemSetHandleSize(char** h, std::uint32_t size) {
    HandleSlot* slot = SlotOfHandle(h);
    if (size > kLargestSize || RelocResize(slot, size + kExcessSize, AllocRelocatable) == nullptr) {
        return SetMemError(kMemFull);
    }
    StressMoves(InstancePool, slot);
    slot->size = size;
    if (!InMoveablePlace(PageBase(slot->block))) {
        WriteExcess(slot->block, UsableSize(slot->block), size);
    }
    BlockHolds(slot->block, size);
    return SetMemError(0);
}

std::int16_t MemChangeLock(char** h, std::int16_t mode) {
    HandleSlot* slot = SlotOfHandle(h);
    if (RelocChangePins(slot, mode) == 0 && mode == 0) {
        Unfix(slot);
    }
    return SetMemError(0);
}

std::int16_t MemMoveHigh(char** h) {
    HandleSlot* slot = SlotOfHandle(h);
    if (RelocIsMoveable(slot) != 0) {
        const std::uint32_t logical = slot->size;
        RelocFix(slot);
        WriteExcess(slot->block, RelocSize(slot), logical);
    }
    return SetMemError(0);
}

std::int16_t MemGetState(char** h, char* state) {
    constexpr std::uint32_t kMostState = 127;
    *state = static_cast<char>(std::min(RelocLockCount(SlotOfHandle(h)), kMostState));
    return SetMemError(0);
}

std::int16_t MemSetState(char** h, char state) {
    HandleSlot* slot = SlotOfHandle(h);
    const std::uint32_t count = RelocLockCount(slot);
    const int wanted = static_cast<signed char>(state);
    if (count == kNoCount || wanted < 0 || count == static_cast<std::uint32_t>(wanted)) {
        return MemErrorCode;
    }
    const auto target = static_cast<std::uint32_t>(wanted);
    if (target == 0) {
        return MemChangeLock(h, 0);
    }
    if (count > target) {
        Unlock(slot, count - target);
    }
    for (std::uint32_t locks = count; locks < target; ++locks) {
        RelocLock(slot);
    }
    return MemErrorCode;
}

}  // namespace veldt::memory

using namespace veldt::memory;

namespace {

constexpr std::int16_t kClear = 64;

[[gnu::noinline]] char** NewHandle(std::uint32_t size, std::int16_t clear) {
    char** h = nullptr;
    MemNewHandle(&h, size, clear);
    return h;
}

[[gnu::noinline]] void DisposeHandle(char** h) {
    MemDisposeHandle(h);
}

[[gnu::noinline]] char** NotedHandle(HandleSlot* slot, const PageLink* raised) {
    RingIndexRaise(raised);
    return &slot->block;
}

}  // namespace

char** _XNewHandle(std::int32_t size) {
    const auto wanted = static_cast<std::uint32_t>(size);
    if (wanted > kLargestSize || kStress) {
        return NewHandle(wanted, 0);
    }
    const auto [slot, raised] = RelocAllocQuickly(InstancePool, wanted + kExcessSize);
    if (slot == nullptr) {
        return NewHandle(wanted, 0);
    }
    slot->size = wanted;
    BlockHolds(slot->block, wanted);
    SetMemError(0);
    return raised == nullptr ? &slot->block : NotedHandle(slot, raised);
}

char** _XNewHandleClear(std::int32_t size) {
    return NewHandle(static_cast<std::uint32_t>(size), kClear);
}

void XDisposeHandle(char** h) {
    if (!RelocFreeQuickly(SlotOfHandle(h), [] { SetMemError(0); })) {
        DisposeHandle(h);
    }
}

std::int32_t XGetHandleSize(char** h) {
    std::uint32_t size = 0;
    MemGetHandleSize(h, &size);
    return static_cast<std::int32_t>(size);
}

int _XSetHandleSize(char** h, std::int32_t size) {
    return MemSetHandleSize(h, static_cast<std::uint32_t>(size)) == 0;
}

void XEmptyHandle(char** h) {
    _XSetHandleSize(h, 0);
}

void XHLock(char** h) {
    MemChangeLock(h, 1);
}

void XHUnlock(char** h) {
    MemChangeLock(h, 0);
}

char XHGetState(char** h) {
    char state = 0;
    MemGetState(h, &state);
    return state;
}

void XHSetState(char** h, char state) {
    MemSetState(h, state);
}

void XMoveHHi(char** h) {
    MemMoveHigh(h);
}

void XHPurge(char** /*h*/) {}

void XHNoPurge(char** /*h*/) {}
