// The search for a text within a text.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>

#include "strings/mismatch.h"

namespace veldt::strings {

/// One bit for each of the 16 places from `text` on where the first and the last byte of a text of
/// `length` bytes stand.
inline unsigned PlacesOf(const char* text, __m128i first, __m128i last, std::size_t length) {
    const auto* begin = reinterpret_cast<const __m128i*>(text);
    const auto* end = reinterpret_cast<const __m128i*>(text + length - 1);
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(first, _mm_loadu_si128(begin)),
                                        _mm_cmpeq_epi8(last, _mm_loadu_si128(end)))));
}

/// Where the `soughtLength` bytes at `sought`, one or more, first stand within the `length` bytes
/// at `text`; null for nowhere. The time it takes can grow with the product of the two lengths:
/// meant for short texts to seek.
inline const char* FindText(const char* text, std::size_t length, const char* sought,
                            std::size_t soughtLength) {
    if (soughtLength > length) return nullptr;
    const char last = sought[soughtLength - 1];
    const std::size_t places = length - soughtLength + 1;
    if (places < 16) {
        for (const char* p = text; p != text + places; ++p) {
            if (*p == *sought && p[soughtLength - 1] == last &&
                Mismatch(p, sought, soughtLength) == soughtLength) {
                return p;
            }
        }
        return nullptr;
    }
    const __m128i firstBytes = _mm_set1_epi8(*sought);
    const __m128i lastBytes = _mm_set1_epi8(last);
    // The last step reaches back over places that are known not to serve.
    for (std::size_t i = 0;; i = places - i < 32 ? places - 16 : i + 16) {
        unsigned bits = PlacesOf(text + i, firstBytes, lastBytes, soughtLength);
        for (; bits != 0; bits &= bits - 1) {
            const char* place = text + i + std::countr_zero(bits);
            if (Mismatch(place, sought, soughtLength) == soughtLength) return place;
        }
        if (i == places - 16) return nullptr;
    }
}

}  // namespace veldt::strings
