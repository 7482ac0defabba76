// Global memory: blocks from malloc, named by an index into a table of slots and by the slot's
// generation, so that a name that was never given, or is no longer good, is known as such.
#include <bit>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"
#include "platform/posix/faults.h"

namespace veldt::platform {

namespace {

struct Slot {
    std::byte* data;      ///< null for an empty block, and in a free slot
    SIZE_T size;          ///< as asked for
    SIZE_T capacity;      ///< of `data`
    std::uintptr_t turn;  ///< odd while a block lives here; wraps with the width of a name
    std::uint32_t locks;
    std::uint32_t nextFree;  ///< free slots: index of the next one plus 1, 0 at the end
};

// A name, from the low end: two bits that no address of a block has, the slot's index, its turn.
constexpr unsigned kTagBits = 2;
constexpr std::uintptr_t kTag = 2;
constexpr unsigned kIndexBits = sizeof(void*) == 8 ? 30 : 18;
constexpr unsigned kTurnShift = kTagBits + kIndexBits;
constexpr std::uintptr_t kTurnMask = ~std::uintptr_t{0} >> kTurnShift;
constexpr std::uint32_t kMaxSlots = 1u << kIndexBits;

/// Chunk k holds kFirstChunk << k slots and stays where it is, so that growing moves no slot.
constexpr std::uint32_t kFirstChunk = 64;
constexpr unsigned kChunks = kIndexBits - 6;

struct GlobalMemory {
    CRITICAL_SECTION lock;
    Slot* chunks[kChunks];
    unsigned chunkCount;
    std::uint32_t slots;      ///< of all chunks
    std::uint32_t firstFree;  ///< index plus 1, 0 if there is none
    std::uint64_t calls;
    std::uint64_t failFrom;  ///< the calls failFrom to failFrom + failCount - 1 are refused
    std::uint64_t failCount;
};

constinit GlobalMemory memory = {};

Slot& SlotAt(std::uint32_t index) {
    const std::uint32_t place = index + kFirstChunk;
    const auto chunk = static_cast<unsigned>(std::bit_width(place / kFirstChunk / 2));
    return memory.chunks[chunk][place - (kFirstChunk << chunk)];
}

HGLOBAL NameOf(std::uint32_t index, const Slot& slot) {
    return reinterpret_cast<HGLOBAL>(slot.turn << kTurnShift | std::uintptr_t{index} << kTagBits |
                                     kTag);
}

std::uint32_t IndexOf(HGLOBAL name) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(name) >> kTagBits) &
           (kMaxSlots - 1);
}

/// The slot of a live block; null, and the last error says so, for any other name.
Slot* Find(HGLOBAL name) {
    const std::uint32_t index = IndexOf(name);
    if (index < memory.slots) {
        Slot& slot = SlotAt(index);
        if (slot.turn % 2 != 0 && NameOf(index, slot) == name) return &slot;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

bool AddChunk() {
    if (memory.chunkCount == kChunks) return false;
    const std::uint32_t count = kFirstChunk << memory.chunkCount;
    auto* chunk = static_cast<Slot*>(std::calloc(count, sizeof(Slot)));
    if (chunk == nullptr) return false;
    memory.chunks[memory.chunkCount++] = chunk;
    for (std::uint32_t at = count; at-- > 0;) {
        chunk[at].nextFree = memory.firstFree;
        memory.firstFree = memory.slots + at + 1;
    }
    memory.slots += count;
    return true;
}

/// Names a block. Null if the table is full and can't grow.
HGLOBAL Enter(std::byte* data, SIZE_T size, SIZE_T capacity) {
    if (memory.firstFree == 0 && !AddChunk()) return nullptr;
    const std::uint32_t index = memory.firstFree - 1;
    Slot& slot = SlotAt(index);
    memory.firstFree = slot.nextFree;
    slot = {data, size, capacity, (slot.turn + 1) & kTurnMask, 0, 0};
    return NameOf(index, slot);
}

bool ToldToFail() {
    return memory.calls++ - memory.failFrom < memory.failCount;
}

/// Nothing larger is ever asked of malloc.
constexpr SIZE_T kMaxBytes = PTRDIFF_MAX / 2;

/// What malloc would round up to anyway, so that a locked block has room to grow in its place.
SIZE_T CapacityFor(SIZE_T size) {
    constexpr SIZE_T kStep = 2 * sizeof(void*);
    return (size + kStep - 1) & ~(kStep - 1);
}

/// Makes room for `size` bytes. A locked block stays where it is, even when it gets smaller.
bool Resize(Slot& slot, SIZE_T size) {
    if (slot.locks != 0) return size <= slot.capacity;
    const SIZE_T capacity = CapacityFor(size);
    if (capacity == slot.capacity) return true;
    if (size == 0) {
        std::free(slot.data);
        slot.data = nullptr;
    } else {
        void* data = std::realloc(slot.data, capacity);
        if (data == nullptr) return false;
        slot.data = static_cast<std::byte*>(data);
    }
    slot.capacity = capacity;
    return true;
}

HGLOBAL OutOfMemory() {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
    if ((flags & GMEM_MOVEABLE) == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const LockGuard guard(memory.lock);
    if (ToldToFail() || size > kMaxBytes) return OutOfMemory();
    const SIZE_T capacity = CapacityFor(size);
    std::byte* data = nullptr;
    if (size != 0) {
        const bool zero = (flags & GMEM_ZEROINIT) != 0;
        data = static_cast<std::byte*>(zero ? std::calloc(capacity, 1) : std::malloc(capacity));
        if (data == nullptr) return OutOfMemory();
    }
    const HGLOBAL name = Enter(data, size, capacity);
    if (name != nullptr) return name;
    std::free(data);
    return OutOfMemory();
}

HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T size, UINT flags) {
    const LockGuard guard(memory.lock);
    Slot* slot = Find(block);
    if (slot == nullptr) return nullptr;
    if (ToldToFail() || size > kMaxBytes || !Resize(*slot, size)) return OutOfMemory();
    if ((flags & GMEM_ZEROINIT) != 0 && size > slot->size) {
        std::memset(slot->data + slot->size, 0, size - slot->size);
    }
    slot->size = size;
    return block;
}

void* GlobalLock(HGLOBAL block) {
    const LockGuard guard(memory.lock);
    Slot* slot = Find(block);
    if (slot == nullptr) return nullptr;
    if (slot->data == nullptr) {
        SetLastError(ERROR_DISCARDED);
        return nullptr;
    }
    ++slot->locks;
    return slot->data;
}

BOOL GlobalUnlock(HGLOBAL block) {
    const LockGuard guard(memory.lock);
    Slot* slot = Find(block);
    if (slot == nullptr) return 0;
    if (slot->locks == 0) {
        SetLastError(ERROR_NOT_LOCKED);
        return 0;
    }
    if (--slot->locks != 0) return 1;
    SetLastError(0);
    return 0;
}

HGLOBAL GlobalFree(HGLOBAL block) {
    if (block == nullptr) return nullptr;
    const LockGuard guard(memory.lock);
    Slot* slot = Find(block);
    if (slot == nullptr) return block;
    std::free(slot->data);
    *slot = {nullptr, 0, 0, (slot->turn + 1) & kTurnMask, 0, memory.firstFree};
    memory.firstFree = IndexOf(block) + 1;
    return nullptr;
}

SIZE_T GlobalSize(HGLOBAL block) {
    const LockGuard guard(memory.lock);
    const Slot* slot = Find(block);
    return slot != nullptr ? slot->size : 0;
}

namespace faults {

void FailGlobalAlloc(std::uint64_t n, bool onward) {
    const LockGuard guard(memory.lock);
    memory.failFrom = n == kNever ? 0 : memory.calls + n - 1;
    // Half of all numbers, since a call before the n-th stands at a wrapped distance.
    memory.failCount = n == kNever ? 0 : onward ? kNever / 2 : 1;
}

}  // namespace faults

}  // namespace veldt::platform
