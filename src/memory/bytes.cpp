// The exported calls on plain bytes. Moving, filling and comparing are the C library's, which must
// not be handed an invalid address even for a count of 0.
#include <veldt20/bytes.h>

#include <cstdint>
#include <cstring>

#include "memory/byte_logic.h"
#include "memory/few_bytes.h"

using namespace veldt::memory;

namespace {

/// Whether no byte of the mask is changed before it is used.
bool IsMaskAside(const void* target, const void* mask, std::size_t count) {
    const auto lag =
        reinterpret_cast<std::uintptr_t>(target) - reinterpret_cast<std::uintptr_t>(mask);
    return lag - 1 >= count - 1;
}

template <typename Combine>
bool CombineFewAside(void* target, const void* mask, std::size_t count, Combine combine) {
    const bool done = AreFew(count) && IsMaskAside(target, mask, count);
    if (done) {
        CombineFew(static_cast<char*>(target), static_cast<const char*>(mask), count, combine);
    }
    return done;
}

}  // namespace

void XBlockMove(const void* source, void* destination, unsigned int count) {
    if (count > 0) {
        std::memmove(destination, source, count);
    }
}

void XBlockClear(void* block, unsigned int count) {
    if (count > 0) {
        std::memset(block, 0, count);
    }
}

void XMemSet(char* block, char value, unsigned int count) {
    if (count > 0) {
        std::memset(block, value, count);
    }
}

int XBlockEqual(const void* a, const void* b, unsigned int count) {
    return count == 0 || std::memcmp(a, b, count) == 0;
}

void XMemSetOr(void* target, const void* mask, unsigned int count) {
    if (!CombineFewAside(target, mask, count, [](auto a, auto b) { return a | b; })) {
        OrBytes(target, mask, count, WidestVectors());
    }
}

void XMemSetAnd(void* target, const void* mask, unsigned int count) {
    if (!CombineFewAside(target, mask, count, [](auto a, auto b) { return a & b; })) {
        AndBytes(target, mask, count, WidestVectors());
    }
}

void XMemSetXor(void* target, const void* mask, unsigned int count) {
    if (!CombineFewAside(target, mask, count, [](auto a, auto b) { return a ^ b; })) {
        XorBytes(target, mask, count, WidestVectors());
    }
}
