// The search for a text within a text.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>

#include "strings/mismatch.h"

namespace veldt::strings {

/// One bit for each place from `text` on, as many as a `Word` has bytes, where the first and the
/// last byte of a text of `length` bytes stand.
template <typename Word>
unsigned PlacesOf(const char* text, __m128i first, __m128i last, std::size_t length) {
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(first, LoadBytes<Word>(text)),
                                        _mm_cmpeq_epi8(last, LoadBytes<Word>(text + length - 1)))));
}

/// FindText among the first `places`, which are at least as many as a `Word` has bytes.
template <typename Word>
const char* FindAmong(const char* text, std::size_t places, const char* sought,
                      std::size_t soughtLength) {
    constexpr std::size_t kStep = sizeof(Word);
    const __m128i first = _mm_set1_epi8(*sought);
    const __m128i last = _mm_set1_epi8(sought[soughtLength - 1]);
    // The last step reaches back over places that are known not to serve.
    for (std::size_t i = 0;; i = places - i < 2 * kStep ? places - kStep : i + kStep) {
        unsigned bits = PlacesOf<Word>(text + i, first, last, soughtLength);
        for (; bits != 0; bits &= bits - 1) {
            const char* place = text + i + std::countr_zero(bits);
            if (Mismatch(place, sought, soughtLength) == soughtLength) return place;
        }
        if (i == places - kStep) return nullptr;
    }
}

/// Where the `soughtLength` bytes at `sought`, one or more, first stand within the `length` bytes
/// at `text`; null for nowhere. The time it takes can grow with the product of the two lengths:
/// meant for short texts to seek.
inline const char* FindText(const char* text, std::size_t length, const char* sought,
                            std::size_t soughtLength) {
    if (soughtLength > length) return nullptr;
    const std::size_t places = length - soughtLength + 1;
    if (places >= 16) return FindAmong<__m128i>(text, places, sought, soughtLength);
    if (places >= 8) return FindAmong<std::uint64_t>(text, places, sought, soughtLength);
    for (const char* p = text; p != text + places; ++p) {
        if (*p == *sought && Mismatch(p, sought, soughtLength) == soughtLength) return p;
    }
    return nullptr;
}

}  // namespace veldt::strings
