// The exported calls on the operating system's global memory blocks.
#include <veldt20/allocator.h>

#include <algorithm>

#include "platform/platform.h"

using namespace veldt::platform;

namespace {

constexpr UINT kShared = GMEM_MOVEABLE | GMEM_SHARE;

/// The system discards a moveable block of size 0, which then can't be locked.
SIZE_T Requested(std::uint32_t size) {
    constexpr std::uint32_t kForNone = 2;
    return size == 0 ? kForNone : size;
}

}  // namespace

void* XGlobalAlloc(std::uint32_t size) {
    return GlobalAlloc(kShared | GMEM_ZEROINIT, Requested(size));
}

void XGlobalFree(void* block) {
    if (block != nullptr) {
        GlobalFree(block);
    }
}

void* XGlobalLock(void* block) {
    return GlobalLock(block);
}

void XGlobalUnlock(void* block) {
    GlobalUnlock(block);
}

std::uint32_t XGlobalSize(void* block) {
    return static_cast<std::uint32_t>(GlobalSize(block));
}

void* XGlobalReAlloc(void* block, std::uint32_t size) {
    return GlobalReAlloc(block, Requested(size), kShared);
}
