// Where two texts part ways: the step under every comparison.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>

namespace veldt::strings {

/// One bit a byte, set where 16 bytes of `a` and `b` differ.
inline unsigned DifferingBytes(const char* a, const char* b) {
    const __m128i equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(b)));
    return static_cast<unsigned>(_mm_movemask_epi8(equal)) ^ 0xFFFFu;
}

/// The index of the first byte in which `a` and `b` differ, or `length`. Reads nothing from there
/// on.
inline std::size_t Mismatch(const char* a, const char* b, std::size_t length) {
    std::size_t i = 0;
    for (; length - i >= 16; i += 16) {
        if (const unsigned bits = DifferingBytes(a + i, b + i)) {
            return i + static_cast<std::size_t>(std::countr_zero(bits));
        }
    }
    while (i < length && a[i] == b[i]) ++i;
    return i;
}

}  // namespace veldt::strings
