#include "platform/posix/free_runs.h"

namespace veldt::platform {

UnitNumber FreeRuns::NewestFrom(unsigned bin) const {
    for (; bin < kBins; bin = (bin / 64 + 1) * 64) {
        const std::uint64_t mask = masks_[bin / 64] >> bin % 64;
        if (mask != 0) return heads_[bin + static_cast<unsigned>(std::countr_zero(mask))];
    }
    return 0;
}

UnitNumber FreeRuns::Find(std::uint32_t span) const {
    const unsigned bin = BinOf(span);
    if (span <= kExactBins) return NewestFrom(bin);
    const UnitNumber head = heads_[bin];
    for (UnitNumber unit = head; unit != 0;) {
        const Unit& entry = UnitAt(unit);
        if (entry.Span() >= span) return unit;
        unit = entry.next != head ? entry.next : 0;
    }
    return NewestFrom(bin + 1);
}

UnitNumber FreeRuns::Oldest(unsigned limit, unsigned* bin) const {
    for (unsigned word = kBins / 64; word-- > 0;) {
        if (limit <= word * 64) continue;
        const unsigned keep = limit - word * 64;
        const std::uint64_t mask =
            keep >= 64 ? masks_[word] : masks_[word] & ((std::uint64_t{1} << keep) - 1);
        if (mask == 0) continue;
        *bin = word * 64 + static_cast<unsigned>(std::bit_width(mask)) - 1;
        return UnitAt(heads_[*bin]).previous;
    }
    return 0;
}

}  // namespace veldt::platform
