// A search that looks for two bytes of the pattern at many places at a time, and compares the rest
// where both stand. Should comparing become more work than a bounded number of steps for each byte
// of the text, a search that is linear in the worst case goes on from there.
#include "memory/find_bytes.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "memory/two_way_search.h"

namespace veldt::memory {

namespace {

using Byte = unsigned char;

constexpr std::size_t kStep = sizeof(__m128i);
constexpr std::size_t kBlock = 4 * kStep;

struct Pattern {
    const Byte* bytes;
    std::size_t length;  ///< at least 2
    /// The places in it of the two bytes that are looked for, and of one for a second look.
    std::size_t first;
    std::size_t second;
    std::size_t third;
};

/// Bytes that stand often in text, and in records.
constexpr auto kCommon = [] {
    std::array<bool, 256> table{};
    for (const char c : {'\0', ' ', 'e', 't', 'a', 'o', 'i', 'n', 's', 'h', 'r'}) {
        table[static_cast<Byte>(c)] = true;
    }
    return table;
}();

/// Two neighbours that differ, near the end of the pattern: in text that repeats one byte, as
/// cleared memory and blank lines do, such a pair is rare. The longer the text, the more pairs are
/// looked at for one of bytes that are seldom seen. Where no neighbours differ, all bytes are
/// equal.
Pattern ChooseBytes(const Byte* bytes, std::size_t length, std::size_t count) {
    const std::size_t reach = std::min<std::size_t>(count / 128, 16);
    std::size_t best = 0;
    int fewest = 3;  // common bytes of a pair
    for (std::size_t i = length - 1; i > 0; --i) {
        const int common = kCommon[bytes[i]] + kCommon[bytes[i - 1]];
        if (bytes[i] != bytes[i - 1] && common < fewest) {
            best = i;
            fewest = common;
        }
        if (fewest == 0 || (best != 0 && length - i > reach)) {
            break;
        }
    }
    if (best == 0) {
        return {bytes, length, 0, length - 1, length / 2};
    }
    return {bytes, length, best - 1, best, best > 1 ? 0 : length - 1};
}

/// Places are offsets in the text at which the whole pattern has room.
class Search {
  public:
    Search(const Byte* text, std::size_t count, const Pattern& pattern)
        : pattern_(pattern),
          text_(text),
          places_(count - pattern.length + 1),
          first_(Spread(pattern.bytes[pattern.first])),
          second_(Spread(pattern.bytes[pattern.second])),
          third_(Spread(pattern.bytes[pattern.third])) {}

    /// The first place of a match, kNotFound, or kTooDear with `at` the place to go on from.
    std::size_t Run(std::size_t& at);

    static constexpr std::size_t kTooDear = kNotFound - 1;

  private:
    static __m128i Spread(Byte byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
    /// All ones for each place from `at` on that has `byte` at the distance `offset`.
    __m128i Equal(std::size_t at, std::size_t offset, __m128i byte) const {
        const void* text = text_ + at + offset;
        return _mm_cmpeq_epi8(_mm_loadu_si128(static_cast<const __m128i*>(text)), byte);
    }
    __m128i Hits(std::size_t at) const {
        return _mm_and_si128(Equal(at, pattern_.first, first_),
                             Equal(at, pattern_.second, second_));
    }
    /// A bit for each of `hits` that stands up to the second look.
    std::uint64_t CloserHits(std::size_t at, __m128i hits) const {
        const __m128i closer = _mm_and_si128(hits, Equal(at, pattern_.third, third_));
        return static_cast<unsigned int>(_mm_movemask_epi8(closer));
    }
    bool IsHit(std::size_t at) const {
        return text_[at + pattern_.first] == pattern_.bytes[pattern_.first] &&
               text_[at + pattern_.second] == pattern_.bytes[pattern_.second];
    }
    /// Whether comparing has cost more than the linear search would have, for the text up to `at`.
    bool IsTooDear(std::size_t at) const {
        constexpr std::size_t kPerByte = 8;
        constexpr std::size_t kAtLeast = 1024;
        return compared_ > kPerByte * at + kAtLeast;
    }
    std::size_t RunShort(std::size_t& at);
    std::size_t RunBlock(std::size_t at);
    std::size_t TryBlock(std::size_t at, __m128i a, __m128i b, __m128i c, __m128i d);
    bool Matches(std::size_t at);

    Pattern pattern_;
    const Byte* text_;
    std::size_t places_;
    __m128i first_;
    __m128i second_;
    __m128i third_;
    std::size_t compared_ = 0;  ///< bytes of candidates, at most
};

bool Search::Matches(std::size_t at) {
    // A first look, so that few of a long pattern's bytes count as compared when they were not.
    constexpr std::size_t kLook = 32;
    const Byte* text = text_ + at;
    compared_ += kLook;
    if (std::memcmp(text, pattern_.bytes, std::min(pattern_.length, kLook)) != 0) {
        return false;
    }
    compared_ += pattern_.length;
    return std::memcmp(text, pattern_.bytes, pattern_.length) == 0;
}

/// The place of the first match in the block at `at`, given the hits in its four steps; kNotFound,
/// or kTooDear. Not inlined, which leaves the loop around it the registers.
__attribute__((noinline)) std::size_t Search::TryBlock(std::size_t at, __m128i a, __m128i b,
                                                       __m128i c, __m128i d) {
    std::uint64_t hits = CloserHits(at, a) | CloserHits(at + kStep, b) << kStep |
                         CloserHits(at + 2 * kStep, c) << 2 * kStep |
                         CloserHits(at + 3 * kStep, d) << 3 * kStep;
    for (; hits != 0; hits &= hits - 1) {
        const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(hits));
        if (Matches(place)) {
            return place;
        }
    }
    return IsTooDear(at) ? kTooDear : kNotFound;
}

inline std::size_t Search::RunBlock(std::size_t at) {
    const __m128i a = Hits(at);
    const __m128i b = Hits(at + kStep);
    const __m128i c = Hits(at + 2 * kStep);
    const __m128i d = Hits(at + 3 * kStep);
    const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    return _mm_movemask_epi8(any) == 0 ? kNotFound : TryBlock(at, a, b, c, d);
}

std::size_t Search::RunShort(std::size_t& at) {
    for (at = 0; at < places_; ++at) {
        if (IsHit(at) && Matches(at)) {
            return at;
        }
        if (IsTooDear(at)) {
            return kTooDear;
        }
    }
    return kNotFound;
}

std::size_t Search::Run(std::size_t& at) {
    if (places_ < kBlock) {
        return RunShort(at);
    }
    for (at = 0; at + kBlock <= places_; at += kBlock) {
        const std::size_t place = RunBlock(at);
        if (place != kNotFound) {
            return place;
        }
    }
    // The last block ends at the last place, and looks at some places again.
    at = places_ - kBlock;
    return RunBlock(at);
}

std::size_t FindLong(const Byte* text, std::size_t count, const Byte* bytes, std::size_t length) {
    Search search(text, count, ChooseBytes(bytes, length, count));
    std::size_t at = 0;
    const std::size_t place = search.Run(at);
    if (place != Search::kTooDear) {
        return place;
    }
    const std::size_t found = TwoWaySearch(text + at, count - at, bytes, length);
    return found == kNotFound ? kNotFound : at + found;
}

std::size_t FindByte(const Byte* text, std::size_t count, Byte byte) {
    const void* found = std::memchr(text, byte, count);
    return found == nullptr ? kNotFound
                            : static_cast<std::size_t>(static_cast<const Byte*>(found) - text);
}

}  // namespace

std::int32_t MemFindBytes(const void* base, std::int32_t count, const void* pattern,
                          std::int32_t length) {
    if (pattern == nullptr || length <= 0 || count < length) {
        return -1;
    }
    const auto* text = static_cast<const Byte*>(base);
    const auto* bytes = static_cast<const Byte*>(pattern);
    const auto size = static_cast<std::size_t>(count);
    const std::size_t found = length == 1
                                  ? FindByte(text, size, bytes[0])
                                  : FindLong(text, size, bytes, static_cast<std::size_t>(length));
    return found == kNotFound ? -1 : static_cast<std::int32_t>(found);
}

}  // namespace veldt::memory
