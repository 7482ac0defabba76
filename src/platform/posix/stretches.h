// Address space as the kernel gives it: a few big stretches, opened from below, with a table that
// says of every 64 KB unit what stands there. The caller of everything here holds the lock of the
// address space, except for `FindUnit`.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veldt::platform {

/// A unit is 64 KB of address space; its number is its address divided by 64 KB. No unit has the
/// number 0, which stands for "none".
using UnitNumber = std::uint32_t;

inline constexpr unsigned kUnitShift = 16;
inline constexpr std::size_t kUnitBytes = std::size_t{1} << kUnitShift;
inline constexpr unsigned kPageShift = 12;
inline constexpr std::size_t kPageBytes = std::size_t{1} << kPageShift;
inline constexpr std::uint32_t kPagesPerUnit = 1u << (kUnitShift - kPageShift);

/// What a unit is the first or the last of. The last unit of a free run says so and repeats the
/// run's length, unless it is the first as well; the last unit of a region and everything between
/// first and last counts as `kInside`, though what is between is never read.
enum class UnitState : std::uint32_t { kInside, kRegion, kWarm, kCold, kWarmEnd, kColdEnd };

/// The entry of a unit. A run is a region or a stretch of free units; a free run is warm if some
/// of its memory may be resident, else cold. Two cold runs never touch.
struct Unit {
    std::uint32_t run;  ///< units of the run in the low 24 bits, the state above

    // First units only:
    std::uint32_t resident;  ///< pages from the run's base on that may hold memory
    union {
        std::uint32_t committed;  ///< regions: pages from the base on, at most `resident`
        UnitNumber next;          ///< free runs: ring of the bin
    };
    UnitNumber previous;  ///< free runs: ring of the bin

    std::uint32_t Span() const { return run & 0xFFFFFF; }
    UnitState State() const { return static_cast<UnitState>(run >> 24); }
    void Set(UnitState state, std::uint32_t span) {
        run = static_cast<std::uint32_t>(state) << 24 | span;
    }
};
static_assert(sizeof(Unit) == 16);

/// Units first to first + carved are runs without a gap; the rest has never been handed out, or
/// has come back. Units first to first + opened are readable and writable, the rest faults.
struct Stretch {
    Unit* units;
    /// One bit a unit, set for the first one of each region of several units, so that an address
    /// inside a region finds the base.
    std::uint64_t* wideRegions;
    UnitNumber first;
    std::uint32_t count;
    std::uint32_t carved;
    std::uint32_t opened;

    bool Contains(UnitNumber unit) const { return unit - first < count; }
    Unit& At(UnitNumber unit) const { return units[unit - first]; }
};

/// A stretch covers whole slots of the root, which names the stretch of every slot.
inline constexpr unsigned kSlotShift = sizeof(void*) == 8 ? 26 : 22;
inline constexpr unsigned kAddressBits = sizeof(void*) == 8 ? 47 : 32;
inline constexpr std::size_t kSlotBytes = std::size_t{1} << kSlotShift;
inline constexpr std::uint32_t kUnitsPerSlot = 1u << (kSlotShift - kUnitShift);
inline constexpr std::size_t kSlots = std::size_t{1} << (kAddressBits - kSlotShift);
inline constexpr std::size_t kMaxStretches = 256;

struct StretchTable {
    Stretch stretches[kMaxStretches];  ///< the first one is empty, for slots that are not ours
    std::size_t count;                 ///< without the empty one
    std::uint8_t root[kSlots];
};

extern StretchTable stretchTable;

inline Stretch& StretchOf(UnitNumber unit) {
    return stretchTable.stretches[stretchTable.root[unit >> (kSlotShift - kUnitShift)]];
}

inline Unit& UnitAt(UnitNumber unit) {
    return StretchOf(unit).At(unit);
}

/// The entry of the unit that an address lies in, null if it is not in any stretch.
inline Unit* FindUnit(const void* address) {
    const auto bits = reinterpret_cast<std::uintptr_t>(address);
    const auto unit = bits >> kUnitShift;
    if (unit >= kSlots * kUnitsPerSlot) return nullptr;
    const Stretch& stretch = StretchOf(static_cast<UnitNumber>(unit));
    return stretch.count != 0 ? &stretch.At(static_cast<UnitNumber>(unit)) : nullptr;
}

inline UnitNumber UnitOf(const void* address) {
    return static_cast<UnitNumber>(reinterpret_cast<std::uintptr_t>(address) >> kUnitShift);
}

inline std::byte* BaseOf(UnitNumber unit) {
    return reinterpret_cast<std::byte*>(static_cast<std::uintptr_t>(unit) << kUnitShift);
}

/// Takes `span` units off the untouched end of a stretch and opens them; 0 if neither the
/// stretches nor the kernel have that much. Looks at every stretch once.
UnitNumber Carve(std::uint32_t span);

/// Gives the memory of pages back to the kernel.
void GiveBack(std::byte* base, std::size_t bytes);

/// System calls made for address space since the start.
extern std::uint64_t addressSpaceSystemCalls;

}  // namespace veldt::platform
