// Free runs by length. Each bin is a ring through the entries of the runs' first units, the one
// freed last in front.
#pragma once

#include <bit>

#include "platform/posix/stretches.h"

namespace veldt::platform {

/// Runs of 1 to 64 units have a bin for each length. Longer ones share four bins an octave, so that
/// any run of a higher bin is long enough for every length of a lower one.
class FreeRuns {
  public:
    static constexpr unsigned kExactBins = 64;

    static unsigned BinOf(std::uint32_t span) {
        if (span <= kExactBins) return span - 1;
        const unsigned octave = static_cast<unsigned>(std::bit_width(span - 1)) - 1;
        return kExactBins + (octave - 6) * 4 + (((span - 1) >> (octave - 2)) & 3);
    }

    void PushFront(UnitNumber unit, Unit& entry) {
        const unsigned bin = BinOf(entry.Span());
        const UnitNumber head = heads_[bin];
        if (head == 0) {
            entry.next = entry.previous = unit;
            masks_[bin / 64] |= std::uint64_t{1} << bin % 64;
        } else {
            Unit& first = UnitAt(head);
            entry.next = head;
            entry.previous = first.previous;
            UnitAt(first.previous).next = unit;
            first.previous = unit;
        }
        heads_[bin] = unit;
    }

    void Remove(UnitNumber unit, Unit& entry) {
        const unsigned bin = BinOf(entry.Span());
        if (entry.next == unit) {
            heads_[bin] = 0;
            masks_[bin / 64] &= ~(std::uint64_t{1} << bin % 64);
            return;
        }
        UnitAt(entry.previous).next = entry.next;
        UnitAt(entry.next).previous = entry.previous;
        if (heads_[bin] == unit) heads_[bin] = entry.next;
    }

    /// The newest run of exactly one unit, or 0.
    UnitNumber FindSingle() const { return heads_[0]; }

    /// The newest run of the smallest sufficient bin, or 0. Above 64 units it may walk the runs of
    /// the one bin in which lengths to both sides of `span` meet.
    UnitNumber Find(std::uint32_t span) const;

    /// The run longest unused in the highest bin below `limit`, or 0; gives its bin as well.
    UnitNumber Oldest(unsigned limit, unsigned* bin) const;

    UnitNumber Head(unsigned bin) const { return heads_[bin]; }

    static constexpr unsigned kBins = 128;

  private:
    UnitNumber NewestFrom(unsigned bin) const;

    UnitNumber heads_[kBins];
    std::uint64_t masks_[kBins / 64];  ///< a bit for each bin that is not empty
};

}  // namespace veldt::platform
