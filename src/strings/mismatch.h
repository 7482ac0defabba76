// Where two texts part ways: the step under every comparison.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#define VELDT20_WIDE __attribute__((target("avx2")))
// The same for a part of the one function that uses it: a call would cost as much as the search of
// 64 bytes.
#define VELDT20_WIDE_WITHIN __attribute__((target("avx2"), always_inline)) inline

namespace veldt::strings {

// What a comparison goes on over. Of two vectors GoesOn gives one with a 0 for each byte at which
// it stops.

/// Bytes that are the same.
struct Same {
    static __m128i GoesOn(__m128i a, __m128i b) { return _mm_cmpeq_epi8(a, b); }
    VELDT20_WIDE static __m256i GoesOn(__m256i a, __m256i b) { return _mm256_cmpeq_epi8(a, b); }
};

/// Bytes that are the same, up to the first 0.
struct SameText {
    static __m128i GoesOn(__m128i a, __m128i b) { return _mm_and_si128(a, _mm_cmpeq_epi8(a, b)); }
    VELDT20_WIDE static __m256i GoesOn(__m256i a, __m256i b) {
        return _mm256_and_si256(a, _mm256_cmpeq_epi8(a, b));
    }
};

/// The same for texts in which A to Z count as a to z.
struct SameTextNoCase {
    static __m128i GoesOn(__m128i a, __m128i b) { return SameText::GoesOn(Lower(a), Lower(b)); }
    VELDT20_WIDE static __m256i GoesOn(__m256i a, __m256i b) {
        return SameText::GoesOn(Lower(a), Lower(b));
    }

  private:
    static __m128i Lower(__m128i bytes) {
        const __m128i capital = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('A' - 1)),
                                              _mm_cmpgt_epi8(_mm_set1_epi8('Z' + 1), bytes));
        return _mm_or_si128(bytes, _mm_and_si128(capital, _mm_set1_epi8('a' - 'A')));
    }
    VELDT20_WIDE static __m256i Lower(__m256i bytes) {
        const __m256i capital =
            _mm256_and_si256(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8('A' - 1)),
                             _mm256_cmpgt_epi8(_mm256_set1_epi8('Z' + 1), bytes));
        return _mm256_or_si256(bytes, _mm256_and_si256(capital, _mm256_set1_epi8('a' - 'A')));
    }
};

/// Loads the bytes of one `Word` at `p`; the others of the sixteen are zero.
template <typename Word>
__m128i LoadBytes(const char* p) {
    if constexpr (sizeof(Word) == 16) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    } else if constexpr (sizeof(Word) == 8) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    } else {
        Word word;
        std::memcpy(&word, p, sizeof(word));
        return _mm_cvtsi32_si128(static_cast<std::int32_t>(word));
    }
}

/// One bit for each byte of a `Word`.
template <typename Word>
inline constexpr unsigned kAllOf = (1u << sizeof(Word)) - 1;

/// One bit a byte, the top one of it.
inline unsigned BitsOf(__m128i bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

/// One bit a byte, set for a 0.
inline unsigned Zeros(__m128i bytes) {
    return BitsOf(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
}
VELDT20_WIDE inline unsigned Zeros(__m256i bytes) {
    return static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, _mm256_setzero_si256())));
}

template <typename Bits>
std::size_t First(Bits bits) {
    return static_cast<std::size_t>(std::countr_zero(bits));
}

/// All bits below the lowest that is set.
inline unsigned BelowFirst(unsigned bits) {
    return (bits & -bits) - 1;
}

// A result is what becomes of the place of the first stop, as result(a, b, i); `i` is the length
// for none.

/// Two steps of 1 to 2 words' bytes, which overlap: the place of a stop among their bits, one
/// behind the other.
template <typename Word>
std::size_t PlaceInTwo(std::size_t bit, std::size_t length) {
    return bit < sizeof(Word) ? bit : bit + length - 2 * sizeof(Word);
}

/// The search in steps of any machine's.
template <typename Over>
class Search {
  public:
    template <typename Result>
    static auto Run(const char* a, const char* b, std::size_t length, Result result) {
        if (length > 2 * kStep) return result(a, b, InSteps(a, b, length));
        if (length >= 16) return result(a, b, InTwo<__m128i>(a, b, length));
        if (length >= 8) return result(a, b, InTwo<std::uint64_t>(a, b, length));
        if (length >= 4) return result(a, b, InTwo<std::uint32_t>(a, b, length));
        if (length >= 2) return result(a, b, InTwo<std::uint16_t>(a, b, length));
        return result(a, b, length != 0 && (Stops<std::uint8_t>(a, b) & 1) != 0 ? 0 : length);
    }

  private:
    static constexpr std::size_t kStep = sizeof(__m128i);

    template <typename Word>
    static unsigned Stops(const char* a, const char* b) {
        const __m128i bytes = LoadBytes<Word>(a);
        return Zeros(Over::GoesOn(bytes, LoadBytes<Word>(b))) & kAllOf<Word>;
    }

    static std::size_t InSteps(const char* a, const char* b, std::size_t length) {
        for (std::size_t i = 0;; i += kStep) {
            // The last step reaches back over bytes that are done with.
            const std::size_t step = std::min(i, length - kStep);
            if (const unsigned stops = Stops<__m128i>(a + step, b + step))
                return step + First(stops);
            if (step == length - kStep) return length;
        }
    }

    template <typename Word>
    static std::size_t InTwo(const char* a, const char* b, std::size_t length) {
        const std::size_t last = length - sizeof(Word);
        const unsigned stops = Stops<Word>(a, b) | Stops<Word>(a + last, b + last) << sizeof(Word);
        return stops != 0 ? PlaceInTwo<Word>(First(stops), length) : length;
    }
};

/// The search in steps that not every machine can take, for more than one of them.
template <typename Over>
class WideSearch {
  public:
    static constexpr std::size_t kStep = sizeof(__m256i);

    template <typename Result>
    VELDT20_WIDE static auto Run(const char* a, const char* b, std::size_t length, Result result) {
        return result(a, b, length <= 2 * kStep ? InTwo(a, b, length) : InBlocks(a, b, length));
    }

  private:
    VELDT20_WIDE static __m256i Load(const char* p) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    }

    VELDT20_WIDE static __m256i Step(const char* a, const char* b) {
        __m256i bytes = Load(a);
        asm("" : "+x"(bytes));  // read once, whatever the compiler thinks of reading it twice
        return Over::GoesOn(bytes, Load(b));
    }

    VELDT20_WIDE static std::uint64_t Both(__m256i first, __m256i second) {
        return Zeros(first) | std::uint64_t{Zeros(second)} << kStep;
    }

    /// For more than one step and at most two, which then overlap.
    VELDT20_WIDE_WITHIN static std::size_t InTwo(const char* a, const char* b, std::size_t length) {
        const std::size_t last = length - kStep;
        const std::uint64_t stops = Both(Step(a, b), Step(a + last, b + last));
        return stops != 0 ? PlaceInTwo<__m256i>(First(stops), length) : length;
    }

    /// For more than two steps and at most four, which then overlap.
    VELDT20_WIDE_WITHIN static std::size_t InBlock(const char* a, const char* b,
                                                   std::size_t length) {
        const std::size_t upper = length - kBlock / 2;
        const __m256i s0 = Step(a, b);
        const __m256i s1 = Step(a + kStep, b + kStep);
        const __m256i s2 = Step(a + upper, b + upper);
        const __m256i s3 = Step(a + upper + kStep, b + upper + kStep);
        if (Zeros(_mm256_min_epu8(_mm256_min_epu8(s0, s1), _mm256_min_epu8(s2, s3))) == 0) {
            return length;
        }
        const std::uint64_t stops = Both(s0, s1);
        return stops != 0 ? First(stops) : upper + First(Both(s2, s3));
    }

    /// For more than two steps. The last block reaches back over bytes that are done with.
    VELDT20_WIDE_WITHIN static std::size_t InBlocks(const char* a, const char* b,
                                                    std::size_t length) {
        if (length <= kBlock) return InBlock(a, b, length);
        // From the second block on at least `a` is aligned.
        std::size_t step = kBlock - reinterpret_cast<std::uintptr_t>(a) % kStep;
        std::size_t i = 0;
        for (; i < length - kBlock; i += step, step = kBlock) {
            const std::size_t stop = InBlock(a + i, b + i, kBlock);
            if (stop != kBlock) return i + stop;
        }
        if (length - i <= 2 * kStep) {
            i = length - 2 * kStep;
            return i + InTwo(a + i, b + i, 2 * kStep);
        }
        i = length - kBlock;
        return i + InBlock(a + i, b + i, kBlock);
    }

    static constexpr std::size_t kBlock = 4 * kStep;
};

/// The result for the first byte at which `Over` stops. Reads nothing from `length` on.
template <typename Over, typename Result>
auto AtFirstStop(const char* a, const char* b, std::size_t length, Result result) {
    if (length > WideSearch<Over>::kStep && __builtin_cpu_supports("avx2")) {
        return WideSearch<Over>::Run(a, b, length, result);
    }
    return Search<Over>::Run(a, b, length, result);
}

/// The index of the first byte at which `Over` stops, or `length`.
template <typename Over>
std::size_t FirstStop(const char* a, const char* b, std::size_t length) {
    return AtFirstStop<Over>(a, b, length,
                             [](const char*, const char*, std::size_t i) { return i; });
}

}  // namespace veldt::strings

#undef VELDT20_WIDE_WITHIN
#undef VELDT20_WIDE
