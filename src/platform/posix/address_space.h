// The state of the address space, shared by its source files.
#pragma once

#include "platform/posix/free_runs.h"
#include "platform/posix/locks.h"

namespace veldt::platform {

/// A warm run is at most this long: a block of 4 MB and its header.
inline constexpr std::uint32_t kMaxWarmUnits = 65;

struct AddressSpace {
    CRITICAL_SECTION lock;  ///< guards all the rest, and the stretches; the innermost lock of all

    FreeRuns warm;
    FreeRuns cold;

    /// The free run of several units that was released last: it stays warm whatever it holds, so
    /// that a large block which comes and goes costs no system call. 0 if there is none.
    UnitNumber kept;
    std::uint32_t keptPages;  ///< its `resident`

    /// Pages that may be resident without being committed: over all runs, `resident` less, for
    /// regions, `committed`.
    std::uint64_t idlePages;
    std::uint64_t committedPages;
    std::uint64_t reservations;

    std::uint64_t allocCalls;
    std::uint64_t committedLimit = ~std::uint64_t{0};  ///< in pages
    std::uint64_t failFrom;  ///< the calls failFrom to failFrom + failCount - 1 are refused
    std::uint64_t failCount;
};

extern AddressSpace addressSpace;

/// What may stay resident without being committed, besides the run kept: enough for the pages of a
/// small heap to come and go, and little against what a large one uses.
inline std::uint64_t IdleAllowance(const AddressSpace& space) {
    constexpr std::uint64_t kLeast = (96u << 10) >> kPageShift;
    return kLeast + space.committedPages / 64;
}

inline bool TooMuchIdle(const AddressSpace& space) {
    return space.idlePages - space.keptPages > IdleAllowance(space);
}

/// Takes `span` units out of the free runs or off a stretch; 0 if there are none. The entry gives
/// the length and the resident pages of the run, the rest is unset.
UnitNumber TakeRun(std::uint32_t span);

/// The way back for a run of any length, resident or not.
void PutRun(UnitNumber unit, Unit& entry, Stretch& stretch);

}  // namespace veldt::platform
