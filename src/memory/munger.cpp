// Find, replace, insert and delete on a handle's bytes. Positions and lengths are reckoned with 64
// bits, in which no sum of the arguments overflows.
#include <veldt20/handle_composition.h>

#include <algorithm>

#include "memory/find_bytes.h"
#include "memory/mem_copy.h"
#include "memory/memory_calls.h"

using namespace veldt::memory;

namespace {

/// Bytes that a block which moves in order to shrink can have at most: it leaves the large ones.
constexpr std::size_t kMostToMove = veldt::heap::kDefaultLargeThreshold;

bool SetSize(char** h, std::int64_t size) {
    if (size > INT32_MAX) {
        SetMemError(kMemFull);
        return false;
    }
    return MemSetHandleSize(h, static_cast<std::uint32_t>(size)) == 0;
}

/// Moves the `tail` bytes at `from` to `to`, where the handle then ends with them. False, with
/// nothing changed, if there is no room.
bool MoveTail(char** h, std::int64_t from, std::int64_t to, std::size_t tail) {
    const std::int64_t size = to + static_cast<std::int64_t>(tail);
    if (to > from) {
        if (!SetSize(h, size)) {
            return false;
        }
        MemCopy(*h + from, *h + to, tail);
        return true;
    }
    if (tail > kMostToMove) {
        MemCopy(*h + from, *h + to, tail);
        return SetSize(h, size);
    }
    // There may be no room to shrink into, so the tail waits elsewhere until the size is set.
    char waiting[kMostToMove];
    MemCopy(*h + from, waiting, tail);
    if (!SetSize(h, size)) {
        return false;
    }
    MemCopy(waiting, *h + to, tail);
    return true;
}

/// Puts `added` bytes in the place of the `removed` ones at `at`, which may lie behind the end of
/// the handle's `size` bytes if none are removed. The position behind them, or -1 with nothing
/// changed.
std::int32_t Replace(char** h, std::int64_t size, std::int64_t at, std::int64_t removed,
                     const void* bytes, std::int64_t added) {
    const std::int64_t tail = std::max<std::int64_t>(size - at - removed, 0);
    if (added != removed &&
        !MoveTail(h, at + removed, at + added, static_cast<std::size_t>(tail))) {
        return -1;
    }
    MemCopy(bytes, *h + at, static_cast<std::size_t>(added));
    return static_cast<std::int32_t>(at + added);
}

/// Replaces all from `at` on, or from the end on if that comes first.
std::int32_t ReplaceRest(char** h, std::int64_t at, const void* bytes, std::int64_t added) {
    if (!SetSize(h, at + added)) {
        return -1;
    }
    MemCopy(bytes, *h + at, static_cast<std::size_t>(added));
    return static_cast<std::int32_t>(at + added);
}

std::int32_t Delete(char** h, std::int64_t size, std::int32_t at, std::int64_t removed) {
    if (removed < 0) {
        removed = size - at;
    }
    if (removed < 0 || removed > size) {
        return -1;
    }
    if (at + removed > size) {
        return SetSize(h, size - removed) ? at : -1;
    }
    return Replace(h, size, at, removed, nullptr, 0);
}

/// The first place of the pattern from `at` on, or -1.
std::int64_t Find(char** h, std::int64_t size, std::int64_t at, const void* pattern,
                  std::int32_t length) {
    if (at >= size) {
        return -1;
    }
    const std::int32_t found =
        MemFindBytes(*h + at, static_cast<std::int32_t>(size - at), pattern, length);
    return found < 0 ? -1 : at + found;
}

}  // namespace

std::int32_t __XMunger(char** h, std::int32_t offset, const void* ptr1, std::int32_t len1,
                       const void* ptr2, std::int32_t len2) {
    std::uint32_t logical = 0;
    MemGetHandleSize(h, &logical);
    const std::int64_t size = logical;
    if (offset < 0 || size > INT32_MAX || (ptr2 != nullptr && len2 < 0)) {
        return -1;
    }
    if (ptr2 != nullptr && len2 > 0) {
        if (ptr1 == nullptr && len1 < 0) {
            return ReplaceRest(h, offset, ptr2, len2);
        }
        if (len1 == 0) {
            return Replace(h, size, offset, 0, ptr2, len2);
        }
    }
    if (size == 0) {
        return -1;
    }
    if (ptr1 == nullptr && len1 != 0 && ptr2 != nullptr && len2 == 0) {
        return Delete(h, size, offset, len1);
    }
    const std::int64_t at = ptr1 == nullptr ? offset : Find(h, size, offset, ptr1, len1);
    if (ptr2 == nullptr || at < 0) {
        return static_cast<std::int32_t>(at);
    }
    return at + len1 > size ? -1 : Replace(h, size, at, len1, ptr2, len2);
}
