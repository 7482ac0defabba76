#include "platform/posix/free_runs.h"

namespace veldt::platform {

Run FreeRuns::NewestFrom(unsigned bin) const {
    for (; bin < kBins; bin = (bin / 64 + 1) * 64) {
        const std::uint64_t mask = masks_[bin / 64] >> bin % 64;
        if (mask != 0) return RunAt(heads_[bin + static_cast<unsigned>(std::countr_zero(mask))]);
    }
    return {};
}

Run FreeRuns::Find(std::uint32_t span) const {
    const unsigned bin = BinOf(span);
    if (span <= kExactBins) return NewestFrom(bin);
    const UnitNumber head = heads_[bin];
    for (UnitNumber unit = head; unit != 0;) {
        Unit& entry = UnitAt(unit);
        if (entry.Span() >= span) return {unit, &entry};
        unit = entry.next != head ? entry.next : 0;
    }
    return NewestFrom(bin + 1);
}

Run FreeRuns::OldestOfShortestWide() const {
    constexpr std::uint64_t kSingles = 1;
    for (unsigned word = 0; word < kBins / 64; ++word) {
        const std::uint64_t mask = word == 0 ? masks_[0] & ~kSingles : masks_[word];
        if (mask == 0) continue;
        return Oldest(word * 64 + static_cast<unsigned>(std::countr_zero(mask)));
    }
    return {};
}

}  // namespace veldt::platform
