// The result-code layer under the exported memory calls. Each operation stores a code in the
// register, 0, kMemFull or kMemBadBlock, and gives that same code back.
//
// The heap is always asked for two bytes more than the caller asked for: in a block that has no
// slot to keep its logical size, they hold by how much the physical size exceeds it.
#pragma once

#include <veldt20/memory.h>

#include "heap/pools.h"

namespace veldt::memory {

/// The instance's heap: null before the first XMemInitInstance.
extern heap::HeapPool* InstancePool;
/// The result of the last call, for all threads together.
extern std::int16_t MemErrorCode;

/// Sizes above this fail without asking the heap.
inline constexpr std::uint32_t kLargestSize = 0xFFFFFFFD;
inline constexpr std::uint32_t kExcessSize = 2;

inline std::int16_t SetMemError(std::int16_t code) {
    MemErrorCode = code;
    return code;
}

/// A clear flag of anything but 0 zeroes the new block.
std::int16_t MemNewPtr(char** p, std::uint32_t size, std::int16_t clear);
std::int16_t MemDisposePtr(char* p);
std::int16_t MemGetPtrSize(char* p, std::uint32_t* size);
std::int16_t MemSetPtrSize(char* p, std::uint32_t size);

std::int16_t MemNewHandle(char*** h, std::uint32_t size, std::int16_t clear);
std::int16_t MemDisposeHandle(char** h);
std::int16_t MemGetHandleSize(char** h, std::uint32_t* size);
std::int16_t MemSetHandleSize(char** h, std::uint32_t size);
/// Mode 1 locks, 0 takes all locks off, -1 takes one off.
std::int16_t MemChangeLock(char** h, std::int16_t mode);
std::int16_t MemMoveHigh(char** h);
std::int16_t MemGetState(char** h, char* state);
std::int16_t MemSetState(char** h, char state);

/// Writes the excess of a block of `physical` bytes that holds `logical`.
void WriteExcess(char* block, std::size_t physical, std::uint32_t logical);
std::uint32_t ReadExcess(const char* block, std::uint32_t physical);

}  // namespace veldt::memory
