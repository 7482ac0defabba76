// Ways to hold a block, so that one sequence of calls can be run on each.
#pragma once

#include <veldt20/memory.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace veldt::bench {

/// The block; without room there is nothing to measure.
template <class Block>
Block Must(Block block) {
    if (block == nullptr) std::exit(2);
    return block;
}

struct Pointers {
    using Block = char*;
    static Block New(std::uint32_t size) { return Must(_XNewPtr(static_cast<std::int32_t>(size))); }
    static void Dispose(Block block) { XDisposePtr(block); }
    /// Where the block can't change its size in its place, through a new one.
    static void Resize(Block& block, std::uint32_t size) {
        _XSetPtrSize(block, static_cast<std::int32_t>(size));
        if (XMemError() == 0) return;
        const Block moved = New(size);
        std::memcpy(moved, block, std::min(static_cast<std::uint32_t>(XGetPtrSize(block)), size));
        Dispose(block);
        block = moved;
    }
};

struct Handles {
    using Block = char**;
    static Block New(std::uint32_t size) {
        return Must(_XNewHandle(static_cast<std::int32_t>(size)));
    }
    static void Dispose(Block block) { XDisposeHandle(block); }
    static void Resize(Block& block, std::uint32_t size) {
        _XSetHandleSize(block, static_cast<std::int32_t>(size));
    }
    static char* Bytes(Block block) { return *block; }
};

/// Or whatever allocator was loaded in its place.
struct CLibrary {
    using Block = void*;
    static Block New(std::uint32_t size) { return Must(std::malloc(size)); }
    static void Dispose(Block block) { std::free(block); }
    static void Resize(Block& block, std::uint32_t size) { block = std::realloc(block, size); }
    static char* Bytes(Block block) { return static_cast<char*>(block); }
};

}  // namespace veldt::bench
