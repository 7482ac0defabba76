// The exported calls on plain bytes. The header holds the bodies of those that move, fill and
// compare.
#define VELDT20_IN_PLACE
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
