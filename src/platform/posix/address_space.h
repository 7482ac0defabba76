// The state of the address space, shared by its source files, and the short ways through it.
#pragma once

#include <algorithm>

#include "platform/posix/free_runs.h"
#include "platform/posix/locks.h"

namespace veldt::platform {

/// A warm run is at most this long: a block of 4 MB and its header.
inline constexpr std::uint32_t kMaxWarmUnits = 65;

struct AddressSpace {
    CRITICAL_SECTION lock;  ///< guards all the rest, and the stretches; the innermost lock of all

    std::uint64_t callsToFault = ~std::uint64_t{0};  ///< the VirtualAlloc that counts it to 0 fails
    std::uint64_t committedPages;                    ///< of all regions
    std::uint64_t committedLimit = ~std::uint64_t{0};  ///< in pages

    /// The hot run: the run of several units that was released last, or what is left of it. Blocks
    /// that come and go are cut off its low end and put back there, so that no bin is touched.
    /// `hotSpan` is 0 if there is none.
    Run hot;
    std::uint32_t hotSpan;
    std::uint32_t hotResident;  ///< pages, as in the entry of a unit

    /// Single units released last, in no bin either; the newest on top.
    static constexpr std::uint32_t kHotSingles = 4;
    std::uint32_t singleCount;
    Run singles[kHotSingles];

    // The pages that may be resident without being committed, but for those of the hot runs, which
    // are few, and of regions that have nothing committed, which soon will:
    std::uint64_t endPages;     ///< at the ends of regions
    std::uint64_t singlePages;  ///< in warm runs of one unit
    std::uint64_t widePages;    ///< in warm runs of several units

    // Pages taken out of cold runs, which would have been worth keeping warm, for single units and
    // for several. Halved whenever warm ones are given back.
    std::uint64_t singleRegret;
    std::uint64_t wideRegret;

    FreeRuns warm;
    FreeRuns cold;

    std::uint64_t callsBefore;  ///< VirtualAlloc calls until `callsToFault` was set to
    std::uint64_t callsArmed = ~std::uint64_t{0};  ///< this
    bool faultsGoOn;
};

extern AddressSpace addressSpace;

/// What the ends of regions may hold that was resident before a smaller commit.
inline std::uint64_t EndAllowance(const AddressSpace& space) {
    return kPagesPerUnit + space.committedPages / 8;
}

// A heap that has shrunk should be small, so that little stays warm at first. Where memory is
// given back only to be asked for again, regret raises the allowance, up to a share of what is in
// use or, for a heap that comes and goes as a whole, up to a fixed bound.

inline constexpr std::uint64_t kMostEarnedWhenEmpty = (16u << 20) >> kPageShift;

inline std::uint64_t EarnedBySingles(const AddressSpace& space) {
    return std::min(space.singleRegret, std::max(space.committedPages / 8, kMostEarnedWhenEmpty));
}

inline std::uint64_t EarnedByWide(const AddressSpace& space) {
    return std::min(space.wideRegret, std::max(space.committedPages / 2, kMostEarnedWhenEmpty));
}

inline std::uint64_t SingleAllowance(const AddressSpace& space) {
    constexpr std::uint64_t kLeast = (32u << 10) >> kPageShift;
    return kLeast + space.committedPages / 128 + EarnedBySingles(space);
}

/// With the hot run, one run of the greatest length.
inline std::uint64_t WideAllowance(const AddressSpace& space) {
    return kMaxWarmUnits * kPagesPerUnit - space.hotResident + EarnedByWide(space);
}

/// Two runs can be one if that counts less than a unit of holes as resident.
inline bool CanJoin(std::uint32_t lowSpan, std::uint32_t lowResident, std::uint32_t highSpan) {
    return lowSpan + highSpan <= kMaxWarmUnits && lowResident > (lowSpan - 1) * kPagesPerUnit;
}

/// Cuts `span` units off the low end of the hot run, which has at least so many.
inline Run TakeHot(AddressSpace& space, std::uint32_t span) {
    const Run run = space.hot;
    const std::uint32_t pages = std::min(space.hotResident, span * kPagesPerUnit);
    run.entry->resident = pages;
    space.hotResident -= pages;
    space.hotSpan -= span;
    space.hot = {run.unit + span, run.entry + span};
    if (space.hotSpan != 0) space.hot.entry->Set(UnitState::kHot, space.hotSpan);
    return run;
}

/// Makes a run of several units the hot one, or its new low end; false if another one is hot.
inline bool PutHot(AddressSpace& space, Run run, std::uint32_t span) {
    std::uint32_t pages = run.entry->resident;
    if (space.hotSpan != 0) {
        if (run.unit + span != space.hot.unit || !CanJoin(span, pages, space.hotSpan)) return false;
        pages = span * kPagesPerUnit;
    }
    space.hot = run;
    space.hotSpan += span;
    space.hotResident += pages;
    run.entry->Set(UnitState::kHot, space.hotSpan);
    return true;
}

/// Takes `span` units out of the bins or off a stretch; none if there is no room. The entry tells
/// the resident pages.
Run TakeBinnedRun(std::uint32_t span);

/// Makes a run cold that has no memory, joined with its neighbours.
void PutCold(Run run, std::uint32_t span);

/// Sends the hot run to the bins.
void CoolHotRun();

/// Sends the older half of the hot single units to the bins.
void CoolSingles();

/// Gives warm runs back to the kernel where they hold more than their allowance.
void TrimWarm();

/// Gives all free memory back, hot runs included, so that address space lies together again.
void TrimAll();

}  // namespace veldt::platform
