#include <algorithm>

#include "platform/posix/address_space.h"
#include "platform/posix/faults.h"

namespace veldt::platform::faults {

namespace {

struct Sums {
    std::uint64_t committed = 0;
    std::uint64_t endPages = 0;
    std::uint64_t singlePages = 0;
    std::uint64_t warmRuns = 0;
    std::uint64_t coldRuns = 0;
    std::uint64_t hotRuns = 0;
    std::uint64_t widePages = 0;
};

const char* CheckRegion(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    const Unit& entry = stretch.units[index];
    const std::uint32_t span = entry.Span();
    if (entry.committed > entry.resident) return "a region has more committed than resident";
    if (entry.resident > span * kPagesPerUnit) return "a region has memory beyond its end";
    if (span > 1 && (&entry)[span - 1].State() != UnitState::kInside) {
        return "the last unit of a region looks free";
    }
    sums.committed += entry.committed;
    if (entry.committed != 0) sums.endPages += entry.resident - entry.committed;
    return nullptr;
}

const char* CheckHot(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    const UnitNumber unit = stretch.first + index;
    const Unit& entry = stretch.units[index];
    ++sums.hotRuns;
    if (unit == addressSpace.hot.unit && addressSpace.hotSpan != 0) {
        if (addressSpace.hot.entry != &entry) return "the hot run's entry is another one's";
        return entry.Span() == addressSpace.hotSpan ? nullptr : "the hot run's length is wrong";
    }
    const auto isThis = [unit](const Run& run) { return run.unit == unit; };
    if (std::count_if(addressSpace.singles, addressSpace.singles + addressSpace.singleCount,
                      isThis) != 1) {
        return "a hot run is not known as one";
    }
    return entry.Span() == 1 && entry.resident != 0 ? nullptr : "a hot single unit is not one";
}

const char* CheckBinned(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    const Unit& entry = stretch.units[index];
    const std::uint32_t span = entry.Span();
    const bool warm = entry.State() == UnitState::kWarm;
    const Unit& last = (&entry)[span - 1];
    const UnitState lastState = warm ? UnitState::kWarmEnd : UnitState::kColdEnd;
    if (span > 1 && (last.State() != lastState || last.Span() != span)) {
        return "the last unit of a free run disagrees with the first";
    }
    if (warm != (entry.resident != 0)) return "a run's memory disagrees with its state";
    if (entry.resident > span * kPagesPerUnit) return "a free run has memory beyond its end";
    if (warm && span > kMaxWarmUnits) return "a warm run is too long";
    if (!warm && index + span == stretch.carved) return "a cold run ends at the untouched part";
    (span > 1 ? sums.widePages : sums.singlePages) += entry.resident;
    ++(warm ? sums.warmRuns : sums.coldRuns);
    return nullptr;
}

const char* CheckRun(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    switch (stretch.units[index].State()) {
        case UnitState::kRegion:
            return CheckRegion(stretch, index, sums);
        case UnitState::kHot:
            return CheckHot(stretch, index, sums);
        case UnitState::kWarm:
        case UnitState::kCold:
            return CheckBinned(stretch, index, sums);
        default:
            return "a run's state";
    }
}

/// No unit behind a run's first may pass for a region.
const char* CheckInside(const Stretch& stretch, std::uint32_t index) {
    for (std::uint32_t unit = 1; unit < stretch.units[index].Span(); ++unit) {
        if (stretch.units[index + unit].State() == UnitState::kRegion) return "a region in a run";
    }
    return nullptr;
}

const char* CheckStretch(const Stretch& stretch, Sums& sums) {
    bool afterCold = false;
    std::uint32_t index = 0;
    while (index < stretch.carved) {
        const Unit& entry = stretch.units[index];
        const bool cold = entry.State() == UnitState::kCold;
        if (entry.Span() == 0 || entry.Span() > stretch.carved - index) return "a run's length";
        if (cold && afterCold) return "two cold runs touch";
        const char* wrong = CheckRun(stretch, index, sums);
        if (wrong == nullptr) wrong = CheckInside(stretch, index);
        if (wrong != nullptr) return wrong;
        afterCold = cold;
        index += entry.Span();
    }
    if (index != stretch.carved || stretch.opened < stretch.carved) return "a stretch's marks";
    return nullptr;
}

/// Counts the runs of all bins; each must stand in the bin of its length and in the right state.
const char* CheckBins(const FreeRuns& runs, UnitState state, std::uint64_t expected) {
    std::uint64_t count = 0;
    for (unsigned bin = 0; bin < FreeRuns::kBins; ++bin) {
        const UnitNumber head = runs.Head(bin);
        for (UnitNumber unit = head; unit != 0;) {
            const Unit& entry = UnitAt(unit);
            if (entry.State() != state) return "a run is in a bin of another state";
            if (FreeRuns::BinOf(entry.Span()) != bin) return "a run is in a bin of another length";
            if (UnitAt(entry.next).previous != unit) return "a ring is broken";
            if (++count > expected) return "a bin has runs that are not in the tables";
            unit = entry.next != head ? entry.next : 0;
        }
    }
    return count == expected ? nullptr : "a free run is in no bin";
}

}  // namespace

const char* CheckAddressSpace() {
    const LockGuard guard(addressSpace.lock);
    Sums sums;
    for (std::size_t index = 1; index <= stretchTable.count; ++index) {
        const char* wrong = CheckStretch(stretchTable.stretches[index], sums);
        if (wrong != nullptr) return wrong;
    }
    if (sums.committed != addressSpace.committedPages) return "the committed pages don't add up";
    if (sums.endPages != addressSpace.endPages) return "the ends of regions don't add up";
    if (sums.singlePages != addressSpace.singlePages) return "the single pages don't add up";
    if (sums.widePages != addressSpace.widePages) return "the wide pages don't add up";
    const std::uint64_t hotRuns = addressSpace.singleCount + (addressSpace.hotSpan != 0 ? 1u : 0u);
    if (sums.hotRuns != hotRuns) return "a hot run is not in the tables";
    const char* wrong = CheckBins(addressSpace.warm, UnitState::kWarm, sums.warmRuns);
    if (wrong != nullptr) return wrong;
    return CheckBins(addressSpace.cold, UnitState::kCold, sums.coldRuns);
}

}  // namespace veldt::platform::faults
