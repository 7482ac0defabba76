// Plain bytes: moved, filled, compared and masked.
//
// Nothing here allocates, fails or touches what XMemError tells. Counts are bytes, and 0 does
// nothing, whatever the addresses. No address needs an alignment; one that is used must be good for
// `count` bytes. All run at the speed of the machine's memory, in vectors as wide as it has.
#pragma once

#include <veldt20/export.h>

#include <cstring>

/// Copies `count` bytes; the areas may overlap. Note the order: the source comes first.
///
///     char line[] = "abcdef";
///     XBlockMove(line, line + 2, 4);  // "ababcd"
VELDT20_API void XBlockMove(const void* source, void* destination, unsigned int count);
/// Writes `count` zero bytes.
VELDT20_API void XBlockClear(void* block, unsigned int count);
/// Writes `count` bytes of `value`.
VELDT20_API void XMemSet(char* block, char value, unsigned int count);
/// 1 if the `count` bytes at `a` and `b` are equal, else 0; 1 for count 0.
[[gnu::pure]] VELDT20_API int XBlockEqual(const void* a, const void* b, unsigned int count);

/// target[i] becomes target[i] OR mask[i], for i from 0 up. The areas may overlap: a byte of the
/// mask that is also an earlier byte of the target is read as changed, so a target `n` bytes ahead
/// of its mask carries the first `n` mask bytes forward through all of it.
VELDT20_API void XMemSetOr(void* target, const void* mask, unsigned int count);
/// The same with AND.
VELDT20_API void XMemSetAnd(void* target, const void* mask, unsigned int count);
/// The same with exclusive OR.
VELDT20_API void XMemSetXor(void* target, const void* mask, unsigned int count);

#if defined(VELDT20_IN_PLACE)
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wgnu-inline-cpp-without-extern"
#endif

// They are the C library's, which must not be handed an invalid address even for a count of 0.

VELDT20_IN_PLACE void XBlockMove(const void* source, void* destination, unsigned int count) {
    if (count > 0) std::memmove(destination, source, count);
}
VELDT20_IN_PLACE void XBlockClear(void* block, unsigned int count) {
    if (count > 0) std::memset(block, 0, count);
}
VELDT20_IN_PLACE void XMemSet(char* block, char value, unsigned int count) {
    if (count > 0) std::memset(block, value, count);
}
VELDT20_IN_PLACE int XBlockEqual(const void* a, const void* b, unsigned int count) {
    return count == 0 || std::memcmp(a, b, count) == 0;
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif
#endif
