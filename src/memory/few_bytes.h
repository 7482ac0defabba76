// Two areas of few bytes combined word by word: 1 to 64 bytes, as words that overlap in the middle.
// All are read before any is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace veldt::memory {

/// Whether there are few bytes, but any.
inline bool AreFew(std::size_t count) {
    return count - 1 < 64;
}

using Vector = std::uint64_t __attribute__((vector_size(16)));

template <typename Word>
inline Word Read(const char* source) {
    Word word;
    std::memcpy(&word, source, sizeof(Word));
    return word;
}

template <typename Word>
inline void Write(char* target, Word word) {
    std::memcpy(target, &word, sizeof(Word));
}

/// Writes `combine(old word of the target, word of the source)`, for one to two words' bytes.
template <typename Word, typename Combine>
inline void CombineEnds(char* target, const char* source, std::size_t count, Combine combine) {
    const std::size_t last = count - sizeof(Word);
    const auto first = combine(Read<Word>(target), Read<Word>(source));
    const auto second = combine(Read<Word>(target + last), Read<Word>(source + last));
    Write<Word>(target, static_cast<Word>(first));
    Write<Word>(target + last, static_cast<Word>(second));
}

/// The same for AreFew(count).
template <typename Combine>
inline void CombineFew(char* target, const char* source, std::size_t count, Combine combine) {
    if (count > 32) {
        const std::size_t last = count - 32;
        const Vector second = combine(Read<Vector>(target + 16), Read<Vector>(source + 16));
        const Vector third = combine(Read<Vector>(target + last), Read<Vector>(source + last));
        CombineEnds<Vector>(target, source, count, combine);
        Write(target + 16, second);
        Write(target + last, third);
    } else if (count >= 16) {
        CombineEnds<Vector>(target, source, count, combine);
    } else if (count >= 8) {
        CombineEnds<std::uint64_t>(target, source, count, combine);
    } else if (count >= 4) {
        CombineEnds<std::uint32_t>(target, source, count, combine);
    } else if (count >= 2) {
        CombineEnds<std::uint16_t>(target, source, count, combine);
    } else {
        CombineEnds<std::uint8_t>(target, source, count, combine);
    }
}

}  // namespace veldt::memory
