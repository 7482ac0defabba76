// Handles copied from and appended to other handles, pointers and global memory blocks. Wherever a
// handle is made or resized, its block's address is read only afterwards.
#include <veldt20/handle_composition.h>

#include "memory/mem_copy.h"
#include "memory/memory_calls.h"
#include "platform/platform.h"

using namespace veldt::memory;
using namespace veldt::platform;

namespace {

/// A new handle with a copy of `size` bytes, or null.
char** NewCopy(const void* source, std::uint32_t size) {
    char** h = nullptr;
    if (MemNewHandle(&h, size, 0) == 0) {
        MemCopy(source, *h, size);
    }
    return h;
}

/// Makes room for `added` bytes behind the `size` that `h` has. False if there is none.
bool Extend(char** h, std::uint32_t size, std::uint32_t added) {
    if (added > kLargestSize - size) {
        SetMemError(kMemFull);
        return false;
    }
    return MemSetHandleSize(h, size + added) == 0;
}

bool IsNull(char** h) {
    return h == nullptr || *h == nullptr;
}

}  // namespace

int _XHandToHand(char*** h) {
    char** old = *h;
    std::uint32_t size = 0;
    MemGetHandleSize(old, &size);
    if (MemNewHandle(h, size, 0) != 0) {
        return 0;
    }
    if (size > 0) {
        MemCopy(*old, **h, size);
    }
    return 1;
}

int _XPtrToXHand(const void* source, char** h, std::int32_t size) {
    const auto bytes = static_cast<std::uint32_t>(size);
    if (IsNull(h) || MemSetHandleSize(h, bytes) != 0) {
        return 0;
    }
    MemCopy(source, *h, bytes);
    return 1;
}

int _XPtrToHand(const void* source, char*** h, std::int32_t size) {
    *h = NewCopy(source, static_cast<std::uint32_t>(size));
    return *h != nullptr;
}

int _XHandAndHand(char** from, char** to) {
    if (IsNull(from)) {
        return 0;
    }
    std::uint32_t added = 0;
    std::uint32_t size = 0;
    MemGetHandleSize(from, &added);
    MemGetHandleSize(to, &size);
    if (!Extend(to, size, added)) {
        return 0;
    }
    MemCopy(*from, *to + size, added);
    return 1;
}

int _XPtrAndHand(const void* source, char** h, std::int32_t size) {
    if (IsNull(h)) {
        return 0;
    }
    const auto added = static_cast<std::uint32_t>(size);
    std::uint32_t former = 0;
    MemGetHandleSize(h, &former);
    if (!Extend(h, former, added)) {
        return 0;
    }
    MemCopy(source, *h + former, added);
    return 1;
}

int XPtrToXGlobal(char* source, void** global, std::int32_t size) {
    if (source == nullptr || global == nullptr) {
        return 0;
    }
    const auto bytes = static_cast<std::uint32_t>(size);
    *global = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes);
    if (*global == nullptr) {
        return 0;
    }
    void* block = GlobalLock(*global);
    if (block == nullptr) {
        GlobalFree(*global);
        *global = nullptr;
        return 0;
    }
    MemCopy(source, block, bytes);
    GlobalUnlock(*global);
    return 1;
}

int _XGlobalToHand(void* global, char*** h) {
    if (global == nullptr || h == nullptr) {
        return 0;
    }
    *h = nullptr;
    const SIZE_T size = GlobalSize(global);
    if (size > kLargestSize) {
        SetMemError(kMemFull);
        return 0;
    }
    char** fresh = nullptr;
    if (MemNewHandle(&fresh, static_cast<std::uint32_t>(size), 0) != 0) {
        return 0;
    }
    const void* block = GlobalLock(global);
    if (block == nullptr) {
        MemDisposeHandle(fresh);
        return 0;
    }
    MemChangeLock(fresh, 1);
    MemCopy(block, *fresh, size);
    MemChangeLock(fresh, -1);
    GlobalUnlock(global);
    *h = fresh;
    return 1;
}

unsigned char** XNewString(const unsigned char* s) {
    return reinterpret_cast<unsigned char**>(NewCopy(s, s[0] + 1U));
}
