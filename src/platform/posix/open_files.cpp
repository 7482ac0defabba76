#include "platform/posix/open_files.h"

#include <climits>
#include <new>

namespace veldt::platform {

namespace {

// A handle is a generation, a descriptor and two zero bits, so it is never INVALID_HANDLE_VALUE.
constexpr unsigned kDescriptorBits = 20;
constexpr unsigned kDescriptorShift = 2;
constexpr unsigned kGenerationShift = kDescriptorShift + kDescriptorBits;
constexpr std::uintptr_t kDescriptorLimit = std::uintptr_t{1} << kDescriptorBits;
constexpr std::uintptr_t kGenerationMask = UINTPTR_MAX >> kGenerationShift;

constexpr std::size_t kSlotsInChunk = 256;

struct Chunk {
    OpenFile slots[kSlotsInChunk];
};

std::atomic<Chunk*> chunks[kDescriptorLimit / kSlotsInChunk];

// Two threads may need the same chunk first; the one that comes second drops its own.
Chunk* ChunkOf(std::size_t index) {
    Chunk* chunk = chunks[index].load(std::memory_order_acquire);
    if (chunk != nullptr) return chunk;
    Chunk* fresh = new (std::nothrow) Chunk{};
    if (fresh == nullptr) return nullptr;
    if (chunks[index].compare_exchange_strong(chunk, fresh, std::memory_order_acq_rel)) {
        return fresh;
    }
    delete fresh;
    return chunk;
}

}  // namespace

OpenFile* SlotOf(int descriptor) {
    const auto number = static_cast<std::uintptr_t>(descriptor);
    if (number >= kDescriptorLimit) return nullptr;
    Chunk* chunk = ChunkOf(number / kSlotsInChunk);
    if (chunk == nullptr) return nullptr;
    OpenFile& file = chunk->slots[number % kSlotsInChunk];
    // The kernel gave this number to one thread after the other; the load lets C++ know that what
    // the last one did to the slot is over.
    file.handle.load(std::memory_order_acquire);
    return &file;
}

HANDLE PublishFile(OpenFile& file) {
    file.generation = (file.generation + 1) & kGenerationMask;
    if (file.generation == 0) file.generation = 1;
    const std::uintptr_t handle = file.generation << kGenerationShift |
                                  static_cast<std::uintptr_t>(file.descriptor) << kDescriptorShift;
    file.handle.store(handle, std::memory_order_release);
    return reinterpret_cast<HANDLE>(handle);
}

OpenFile* FindFile(HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::uintptr_t number = value >> kDescriptorShift & (kDescriptorLimit - 1);
    Chunk* chunk = chunks[number / kSlotsInChunk].load(std::memory_order_acquire);
    if (chunk == nullptr || value == 0) return nullptr;
    OpenFile& file = chunk->slots[number % kSlotsInChunk];
    return file.handle.load(std::memory_order_acquire) == value ? &file : nullptr;
}

}  // namespace veldt::platform
