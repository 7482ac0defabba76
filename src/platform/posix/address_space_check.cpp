#include "platform/posix/address_space.h"
#include "platform/posix/faults.h"

namespace veldt::platform::faults {

namespace {

struct Sums {
    std::uint64_t regions = 0;
    std::uint64_t committed = 0;
    std::uint64_t idle = 0;
    std::uint64_t warmRuns = 0;
    std::uint64_t coldRuns = 0;
    bool keptSeen = false;
};

bool IsWide(const Stretch& stretch, std::uint32_t index) {
    return (stretch.wideRegions[index / 64] >> index % 64 & 1) != 0;
}

const char* CheckRegion(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    const Unit& entry = stretch.units[index];
    const std::uint32_t span = entry.Span();
    if (entry.committed > entry.resident) return "a region has more committed than resident";
    if (entry.resident > span * kPagesPerUnit) return "a region has memory beyond its end";
    for (std::uint32_t unit = 0; unit < span; ++unit) {
        if (IsWide(stretch, index + unit) != (span > 1 && unit == 0)) return "a wide mark is wrong";
    }
    if (span > 1 && (&entry)[span - 1].State() != UnitState::kInside) {
        return "the last unit of a region looks free";
    }
    ++sums.regions;
    sums.committed += entry.committed;
    sums.idle += entry.resident - entry.committed;
    return nullptr;
}

const char* CheckFree(const Stretch& stretch, std::uint32_t index, Sums& sums) {
    const Unit& entry = stretch.units[index];
    const std::uint32_t span = entry.Span();
    const bool warm = entry.State() == UnitState::kWarm;
    const Unit& last = (&entry)[span - 1];
    const UnitState lastState = warm ? UnitState::kWarmEnd : UnitState::kColdEnd;
    if (span > 1 && (last.State() != lastState || last.Span() != span)) {
        return "the last unit of a free run disagrees with the first";
    }
    for (std::uint32_t unit = 0; unit < span; ++unit) {
        if (IsWide(stretch, index + unit)) return "a wide mark in a free run";
    }
    if (warm != (entry.resident != 0)) return "a run's memory disagrees with its state";
    if (entry.resident > span * kPagesPerUnit) return "a free run has memory beyond its end";
    if (warm && span > kMaxWarmUnits) return "a warm run is too long";
    if (!warm && index + span == stretch.carved) return "a cold run ends at the untouched part";
    if (stretch.first + index == addressSpace.kept) {
        sums.keptSeen = true;
        if (addressSpace.keptPages != entry.resident) return "the kept run's pages are wrong";
    }
    sums.idle += entry.resident;
    ++(warm ? sums.warmRuns : sums.coldRuns);
    return nullptr;
}

const char* CheckStretch(const Stretch& stretch, Sums& sums) {
    bool afterCold = false;
    std::uint32_t index = 0;
    while (index < stretch.carved) {
        const Unit& entry = stretch.units[index];
        const UnitState state = entry.State();
        const bool cold = state == UnitState::kCold;
        if (entry.Span() == 0 || entry.Span() > stretch.carved - index) return "a run's length";
        if (cold && afterCold) return "two cold runs touch";
        if (!cold && state != UnitState::kWarm && state != UnitState::kRegion)
            return "a run's state";
        const char* wrong = state == UnitState::kRegion ? CheckRegion(stretch, index, sums)
                                                        : CheckFree(stretch, index, sums);
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
    if (sums.regions != addressSpace.reservations) return "the count of reservations is wrong";
    if (sums.committed != addressSpace.committedPages) return "the committed pages don't add up";
    if (sums.idle != addressSpace.idlePages) return "the idle pages don't add up";
    if (sums.keptSeen != (addressSpace.kept != 0)) return "the kept run is not a free run";
    const char* wrong = CheckBins(addressSpace.warm, UnitState::kWarm, sums.warmRuns);
    if (wrong != nullptr) return wrong;
    return CheckBins(addressSpace.cold, UnitState::kCold, sums.coldRuns);
}

}  // namespace veldt::platform::faults
