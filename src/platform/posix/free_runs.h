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

    void PushFront(Run run) {
        const unsigned bin = BinOf(run.entry->Span());
        const UnitNumber head = heads_[bin];
        if (head == 0) {
            run.entry->next = run.entry->previous = run.unit;
            masks_[bin / 64] |= std::uint64_t{1} << bin % 64;
        } else {
            Unit& first = UnitAt(head);
            run.entry->next = head;
            run.entry->previous = first.previous;
            UnitAt(first.previous).next = run.unit;
            first.previous = run.unit;
        }
        heads_[bin] = run.unit;
    }

    void Remove(Run run) {
        const unsigned bin = BinOf(run.entry->Span());
        if (run.entry->next == run.unit) {
            heads_[bin] = 0;
            masks_[bin / 64] &= ~(std::uint64_t{1} << bin % 64);
            return;
        }
        UnitAt(run.entry->previous).next = run.entry->next;
        UnitAt(run.entry->next).previous = run.entry->previous;
        if (heads_[bin] == run.unit) heads_[bin] = run.entry->next;
    }

    /// The newest run of exactly one unit, or none.
    Run FindSingle() const { return RunAt(heads_[0]); }

    /// The newest run of the smallest sufficient bin, or none. Above 64 units it may walk the runs
    /// of the one bin in which lengths to both sides of `span` meet.
    Run Find(std::uint32_t span) const;

    /// The longest unused of the single units, or of the runs of several units in the lowest bin
    /// that has any; none if there is none.
    Run OldestSingle() const { return Oldest(0); }
    Run OldestOfShortestWide() const;

    UnitNumber Head(unsigned bin) const { return heads_[bin]; }

    static constexpr unsigned kBins = 128;

  private:
    static Run RunAt(UnitNumber unit) { return unit != 0 ? Run{unit, &UnitAt(unit)} : Run{}; }

    Run Oldest(unsigned bin) const {
        return heads_[bin] != 0 ? RunAt(UnitAt(heads_[bin]).previous) : Run{};
    }
    Run NewestFrom(unsigned bin) const;

    UnitNumber heads_[kBins];
    std::uint64_t masks_[kBins / 64];  ///< a bit for each bin that is not empty
};

}  // namespace veldt::platform
