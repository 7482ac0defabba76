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

/// What a unit is the first or the last of. The last unit of a warm or cold run says so and repeats
/// the run's length, unless it is the first as well; the last unit of a region or a hot run is
/// `kInside`. What stands between first and last is never read, but for one thing: it is never
/// `kRegion`, so that no address inside a run passes for a region's base.
enum class UnitState : std::uint32_t { kInside, kRegion, kHot, kWarm, kCold, kWarmEnd, kColdEnd };

/// The entry of a unit. A run is a region or a row of free units; a free run is cold if none of its
/// memory can be resident, else warm or, among the ones released last, hot. Two cold runs never
/// touch.
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
    UnitNumber first;
    std::uint32_t count;
    std::uint32_t carved;
    std::uint32_t opened;

    Unit& At(UnitNumber unit) const { return units[unit - first]; }
};

/// A stretch covers whole slots of the root, which names the stretch of every slot.
inline constexpr unsigned kSlotShift = sizeof(void*) == 8 ? 26 : 22;
inline constexpr unsigned kAddressBits = sizeof(void*) == 8 ? 47 : 32;
inline constexpr std::size_t kSlotBytes = std::size_t{1} << kSlotShift;
inline constexpr std::uint32_t kUnitsPerSlot = 1u << (kSlotShift - kUnitShift);
inline constexpr std::size_t kSlots = std::size_t{1} << (kAddressBits - kSlotShift);
inline constexpr std::size_t kMaxStretches = 256;

/// By a stretch's index; the first one stands for all slots that are not ours.
struct StretchTable {
    std::size_t count;                      ///< without the one that isn't ours
    std::uintptr_t entries[kMaxStretches];  ///< where the entry of unit 0 would be; 0 if not ours
    Stretch stretches[kMaxStretches];
    std::uint8_t root[kSlots];
};

extern StretchTable stretchTable;

inline std::size_t SlotOf(UnitNumber unit) {
    return unit >> (kSlotShift - kUnitShift);
}

inline std::size_t StretchIndexOf(UnitNumber unit) {
    return stretchTable.root[SlotOf(unit)];
}

inline Stretch& StretchOf(UnitNumber unit) {
    return stretchTable.stretches[StretchIndexOf(unit)];
}

inline Unit& UnitAt(UnitNumber unit) {
    const std::uintptr_t entries = stretchTable.entries[StretchIndexOf(unit)];
    return *reinterpret_cast<Unit*>(entries + std::uintptr_t{unit} * sizeof(Unit));
}

inline UnitNumber UnitOf(const void* address) {
    return static_cast<UnitNumber>(reinterpret_cast<std::uintptr_t>(address) >> kUnitShift);
}

inline std::byte* BaseOf(UnitNumber unit) {
    return reinterpret_cast<std::byte*>(std::uintptr_t{unit} << kUnitShift);
}

/// The entry of the unit that an address lies in, null if it is not in any stretch.
inline Unit* FindUnit(const void* address) {
    if (reinterpret_cast<std::uintptr_t>(address) >> (kAddressBits - 1) > 1) return nullptr;
    const UnitNumber unit = UnitOf(address);
    return stretchTable.entries[StretchIndexOf(unit)] != 0 ? &UnitAt(unit) : nullptr;
}

/// A run, or none at all, when both are null.
struct Run {
    UnitNumber unit;
    Unit* entry;
};

/// Takes `span` units off the untouched end of a stretch and opens them; none if neither the
/// stretches nor the kernel have that much. Looks at every stretch once.
Run Carve(std::uint32_t span);

/// Gives the memory of pages back to the kernel.
void GiveBack(std::byte* base, std::size_t bytes);

/// Gives the kernel all stretches back, if no unit of any is in use or warm. Tells of what was
/// opened of each before it goes.
void DropStretches(void (*goes)(char* from, std::size_t size));

/// System calls made for address space since the start.
extern std::uint64_t addressSpaceSystemCalls;

}  // namespace veldt::platform
