// The two-way search: the pattern is cut where the shortest repetition around the cut is as long as
// the whole pattern's period. The right side is compared forwards; a mismatch there allows a shift
// by as many bytes as had matched. The left side is compared backwards afterwards; a mismatch there
// allows a shift by the period.
#include "memory/two_way_search.h"

#include <algorithm>
#include <cstring>

namespace veldt::memory {

namespace {

using Byte = unsigned char;

struct Suffix {
    std::size_t start;
    std::size_t period;
};

/// The largest suffix in the order of bytes, or, with `reversed`, in the opposite order of bytes,
/// and its period.
Suffix LargestSuffix(const Byte* pattern, std::size_t length, bool reversed) {
    std::size_t start = 0;
    std::size_t rival = 1;
    std::size_t matched = 0;
    std::size_t period = 1;
    while (rival + matched < length) {
        const Byte mine = pattern[start + matched];
        const Byte other = pattern[rival + matched];
        if (mine == other) {
            if (++matched == period) {
                rival += period;
                matched = 0;
            }
        } else if ((other < mine) != reversed) {
            rival += matched + 1;
            matched = 0;
            period = rival - start;
        } else {
            start = rival++;
            matched = 0;
            period = 1;
        }
    }
    return {start, period};
}

/// The later of the two largest suffixes begins at a critical cut.
Suffix CriticalCut(const Byte* pattern, std::size_t length) {
    const Suffix forward = LargestSuffix(pattern, length, false);
    const Suffix backward = LargestSuffix(pattern, length, true);
    return forward.start > backward.start ? forward : backward;
}

}  // namespace

std::size_t TwoWaySearch(const Byte* text, std::size_t count, const Byte* pattern,
                         std::size_t length) {
    const Suffix cut = CriticalCut(pattern, length);
    const bool periodic = cut.start + cut.period <= length &&
                          std::memcmp(pattern, pattern + cut.period, cut.start) == 0;
    const std::size_t shift = periodic ? cut.period : std::max(cut.start, length - cut.start) + 1;
    // After a shift by the period, this many bytes from the pattern's start on are known to match.
    const std::size_t kept = periodic ? length - cut.period : 0;
    std::size_t known = 0;
    for (std::size_t at = 0; at <= count - length;) {
        const Byte* window = text + at;
        std::size_t right = std::max(cut.start, known);
        while (right < length && pattern[right] == window[right]) {
            ++right;
        }
        if (right < length) {
            at += right - cut.start + 1;
            known = 0;
            continue;
        }
        std::size_t left = cut.start;
        while (left > known && pattern[left - 1] == window[left - 1]) {
            --left;
        }
        if (left <= known) {
            return at;
        }
        at += shift;
        known = kept;
    }
    return kNotFound;
}

}  // namespace veldt::memory
