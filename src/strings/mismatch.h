// Where two texts part ways: the step under every comparison.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace veldt::strings {

/// Sixteen bytes as they stand.
inline __m128i AsTheyStand(__m128i bytes) {
    return bytes;
}

/// Sixteen bytes with A to Z as a to z.
inline __m128i AsLower(__m128i bytes) {
    const __m128i capital = _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8('A' - 1)),
                                          _mm_cmpgt_epi8(_mm_set1_epi8('Z' + 1), bytes));
    return _mm_add_epi8(bytes, _mm_and_si128(capital, _mm_set1_epi8('a' - 'A')));
}

/// Loads the bytes of one `Word` at `p`; the others of the sixteen are zero.
template <typename Word>
__m128i LoadBytes(const char* p) {
    if constexpr (sizeof(Word) == 16) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    } else if constexpr (sizeof(Word) == 8) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    } else {
        std::int32_t word;
        std::memcpy(&word, p, sizeof(word));
        return _mm_cvtsi32_si128(word);
    }
}

/// Bytes in a step that not every machine can take.
inline constexpr std::size_t kWideStep = 32;

/// Whether a search through so many bytes can take wide steps.
inline bool TakesWideSteps(std::size_t length) {
    return length >= kWideStep && __builtin_cpu_supports("avx2");
}

__attribute__((target("avx2"))) inline __m256i LoadWide(const char* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

__attribute__((target("avx2"))) inline unsigned DifferingWide(const char* a, const char* b) {
    return ~static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(LoadWide(a), LoadWide(b))));
}

__attribute__((target("avx2"))) inline bool FourStepsAgree(const char* a, const char* b) {
    __m256i agree = _mm256_cmpeq_epi8(LoadWide(a), LoadWide(b));
    for (std::size_t i = kWideStep; i < 4 * kWideStep; i += kWideStep) {
        agree = _mm256_and_si256(agree, _mm256_cmpeq_epi8(LoadWide(a + i), LoadWide(b + i)));
    }
    return _mm256_movemask_epi8(agree) == -1;
}

/// Mismatch for TakesWideSteps(length).
__attribute__((target("avx2"))) inline std::size_t MismatchWide(const char* a, const char* b,
                                                                std::size_t length) {
    std::size_t i = 0;
    while (length - i >= 4 * kWideStep && FourStepsAgree(a + i, b + i)) {
        i += 4 * kWideStep;
    }
    // The last step reaches back over bytes that are known to agree.
    for (;; i += kWideStep) {
        const std::size_t step = std::min(i, length - kWideStep);
        if (const unsigned bits = DifferingWide(a + step, b + step)) {
            return step + static_cast<std::size_t>(std::countr_zero(bits));
        }
        if (step == length - kWideStep) return length;
    }
}

/// The search for the first difference between `a` and `b` after `Fold`.
template <__m128i Fold(__m128i)>
class MismatchSearch {
  public:
    MismatchSearch(const char* a, const char* b, std::size_t length)
        : a_(a), b_(b), length_(length) {}

    std::size_t Run() const {
        if (length_ >= 16) return InSteps();
        if (length_ >= 8) return InTwo<std::uint64_t>();
        if (length_ >= 4) return InTwo<std::uint32_t>();
        for (std::size_t i = 0; i < length_; ++i) {
            if (Lone(a_[i]) != Lone(b_[i])) return i;
        }
        return length_;
    }

  private:
    template <typename Word>
    __m128i Equal(std::size_t i) const {
        return _mm_cmpeq_epi8(Fold(LoadBytes<Word>(a_ + i)), Fold(LoadBytes<Word>(b_ + i)));
    }

    static int Lone(char c) { return _mm_cvtsi128_si32(Fold(_mm_cvtsi32_si128(c))) & 0xFF; }

    /// One bit a byte, set where they differ.
    static unsigned Differing(__m128i equal) {
        return static_cast<unsigned>(_mm_movemask_epi8(equal)) ^ 0xFFFFu;
    }

    static std::size_t First(unsigned bits) {
        return static_cast<std::size_t>(std::countr_zero(bits));
    }

    std::size_t InSteps() const {
        std::size_t i = 0;
        for (; length_ - i >= 64; i += 64) {
            const __m128i low = _mm_and_si128(Equal<__m128i>(i), Equal<__m128i>(i + 16));
            const __m128i high = _mm_and_si128(Equal<__m128i>(i + 32), Equal<__m128i>(i + 48));
            if (Differing(_mm_and_si128(low, high)) != 0) break;
        }
        for (; length_ - i >= 16; i += 16) {
            if (const unsigned bits = Differing(Equal<__m128i>(i))) return i + First(bits);
        }
        // The last step reaches back over bytes that are known to agree.
        const unsigned bits = Differing(Equal<__m128i>(length_ - 16));
        return bits != 0 ? length_ - 16 + First(bits) : length_;
    }

    /// For lengths from one word to two, which overlap.
    template <typename Word>
    std::size_t InTwo() const {
        if (const unsigned bits = Differing(Equal<Word>(0))) return First(bits);
        const std::size_t second = length_ - sizeof(Word);
        const unsigned bits = Differing(Equal<Word>(second));
        return bits != 0 ? second + First(bits) : length_;
    }

    const char* a_;
    const char* b_;
    std::size_t length_;
};

/// The index of the first byte in which `a` and `b` differ, or `length`. Reads nothing from there
/// on.
inline std::size_t Mismatch(const char* a, const char* b, std::size_t length) {
    if (TakesWideSteps(length)) return MismatchWide(a, b, length);
    return MismatchSearch<AsTheyStand>(a, b, length).Run();
}

/// The same for texts in which A to Z count as a to z.
inline std::size_t MismatchNoCase(const char* a, const char* b, std::size_t length) {
    return MismatchSearch<AsLower>(a, b, length).Run();
}

}  // namespace veldt::strings
