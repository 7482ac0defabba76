// The three ways to keep a trace's blocks: handles, pointers, and the C library for comparison.
// Each keeper knows blocks by number; Allocate and Resize give false when memory runs out, and then
// the block is as it was.
#pragma once

#include <malloc.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

class HandleKeeper {
  public:
    explicit HandleKeeper(std::size_t blocks) : handles_(blocks) {}
    bool Allocate(std::uint32_t block, std::uint32_t size) {
        handles_[block] = _XNewHandle(static_cast<std::int32_t>(size));
        return handles_[block] != nullptr;
    }
    bool Resize(std::uint32_t block, std::uint32_t /*oldSize*/, std::uint32_t size) {
        return _XSetHandleSize(handles_[block], static_cast<std::int32_t>(size)) != 0;
    }
    void Free(std::uint32_t block) { XDisposeHandle(handles_[block]); }
    unsigned char* Bytes(std::uint32_t block) const {
        return reinterpret_cast<unsigned char*>(*handles_[block]);
    }
    static std::uint64_t Footprint() { return XHeapFootprint(); }
    static void Compact() { XMemCompactHeap(); }
    /// Operations between two looks at the footprint.
    static constexpr std::size_t kLook = 1;

  private:
    std::vector<char**> handles_;
};

class PointerKeeper {
  public:
    explicit PointerKeeper(std::size_t blocks) : pointers_(blocks) {}
    bool Allocate(std::uint32_t block, std::uint32_t size) {
        pointers_[block] = _XNewPtr(static_cast<std::int32_t>(size));
        return pointers_[block] != nullptr;
    }
    bool Resize(std::uint32_t block, std::uint32_t oldSize, std::uint32_t size) {
        _XSetPtrSize(pointers_[block], static_cast<std::int32_t>(size));
        if (XMemError() == 0) {
            return true;
        }
        char* moved = _XNewPtr(static_cast<std::int32_t>(size));
        if (moved == nullptr) {
            return false;
        }
        std::memcpy(moved, pointers_[block], std::min(oldSize, size));
        XDisposePtr(pointers_[block]);
        pointers_[block] = moved;
        return true;
    }
    void Free(std::uint32_t block) { XDisposePtr(pointers_[block]); }
    unsigned char* Bytes(std::uint32_t block) const {
        return reinterpret_cast<unsigned char*>(pointers_[block]);
    }
    static std::uint64_t Footprint() { return XHeapFootprint(); }
    static void Compact() { XMemCompactHeap(); }
    static constexpr std::size_t kLook = 1;

  private:
    std::vector<char*> pointers_;
};

class MallocKeeper {
  public:
    explicit MallocKeeper(std::size_t blocks) : pointers_(blocks) {}
    bool Allocate(std::uint32_t block, std::uint32_t size) {
        pointers_[block] = std::malloc(std::max(size, 1U));
        return pointers_[block] != nullptr;
    }
    bool Resize(std::uint32_t block, std::uint32_t /*oldSize*/, std::uint32_t size) {
        void* moved = std::realloc(pointers_[block], std::max(size, 1U));
        if (moved != nullptr) {
            pointers_[block] = moved;
        }
        return moved != nullptr;
    }
    void Free(std::uint32_t block) { std::free(pointers_[block]); }
    unsigned char* Bytes(std::uint32_t block) const {
        return static_cast<unsigned char*>(pointers_[block]);
    }
    static std::uint64_t Footprint() {
        const struct mallinfo2 figures = mallinfo2();
        return figures.arena + figures.hblkhd;
    }
    static void Compact() { malloc_trim(0); }
    /// mallinfo2 walks the free lists, so the peak is a sampled one.
    static constexpr std::size_t kLook = 4096;

  private:
    std::vector<void*> pointers_;
};
