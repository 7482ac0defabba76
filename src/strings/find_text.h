// The search for a text within a text.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "strings/mismatch.h"

namespace veldt::strings {

/// Where the text to search is over: at its length, or already at its first zero byte.
enum class Ends { kAtLength, kAtZero };

template <typename Word>
bool WordsAgree(const char* a, const char* b) {
    return std::memcmp(a, b, sizeof(Word)) == 0;
}

/// Whether two texts of one length agree, whose first and last bytes are known to. It makes no
/// call, so that a search keeps its vectors in registers.
inline bool InnerBytesAgree(const char* a, const char* b, std::size_t length) {
    if (length <= 2) return true;
    if (length == 3) return a[1] == b[1];
    if (length < 8) {
        const std::size_t last = length - 4;
        return WordsAgree<std::uint32_t>(a, b) && WordsAgree<std::uint32_t>(a + last, b + last);
    }
    const std::size_t last = length - 8;
    for (std::size_t i = 0; i < last; i += 8) {
        if (!WordsAgree<std::uint64_t>(a + i, b + i)) return false;
    }
    return WordsAgree<std::uint64_t>(a + last, b + last);
}

/// FindText among the first `places`, which are at least as many as a `Word` has bytes.
template <Ends ends, typename Word>
const char* FindAmong(const char* text, std::size_t places, const char* sought,
                      std::size_t soughtLength) {
    constexpr std::size_t kStep = sizeof(Word);
    const __m128i first = _mm_set1_epi8(*sought);
    const __m128i last = _mm_set1_epi8(sought[soughtLength - 1]);
    // The last step reaches back over places that are known not to serve.
    for (std::size_t i = 0;; i = std::min(i + kStep, places - kStep)) {
        const __m128i here = LoadBytes<Word>(text + i);
        const __m128i ahead = LoadBytes<Word>(text + i + soughtLength - 1);
        const __m128i both =
            _mm_and_si128(_mm_cmpeq_epi8(first, here), _mm_cmpeq_epi8(last, ahead));
        const unsigned zeros = ends == Ends::kAtZero ? Zeros(here) & kAllOf<Word> : 0;
        unsigned hits = BitsOf(both) & (zeros != 0 ? BelowFirst(zeros) : kAllOf<Word>);
        for (; hits != 0; hits &= hits - 1) {
            const char* place = text + i + First(hits);
            if (InnerBytesAgree(place, sought, soughtLength)) return place;
        }
        if (zeros != 0 || i == places - kStep) return nullptr;
    }
}

/// Where the `soughtLength` bytes at `sought`, one or more, first stand within the `length` bytes
/// at `text`; null for nowhere. For a text that ends at a zero byte they hold none. The time it
/// takes can grow with the product of the two lengths: meant for short texts to seek.
template <Ends ends>
const char* FindText(const char* text, std::size_t length, const char* sought,
                     std::size_t soughtLength) {
    if (soughtLength > length) return nullptr;
    const std::size_t places = length - soughtLength + 1;
    if (places >= 16) return FindAmong<ends, __m128i>(text, places, sought, soughtLength);
    if (places >= 8) return FindAmong<ends, std::uint64_t>(text, places, sought, soughtLength);
    for (const char* p = text; p != text + places; ++p) {
        if (*p == *sought && p[soughtLength - 1] == sought[soughtLength - 1] &&
            InnerBytesAgree(p, sought, soughtLength)) {
            return p;
        }
        if (ends == Ends::kAtZero && *p == 0) return nullptr;
    }
    return nullptr;
}

}  // namespace veldt::strings
