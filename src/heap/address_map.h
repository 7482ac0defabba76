// What stands in each 64 KB unit of the address space, as far as the heap is concerned: the base
// of a page, of a slot region or of a pool, or nothing. One byte a unit, found in constant time,
// lets every operation refuse a wild pointer before it reads through it. Beside the byte stands
// what else the heap notes of a page without touching it.
#pragma once

#include <atomic>

#include "heap/granule.h"

namespace veldt::heap {

/// What the heap notes of a unit at whose base a page stands.
union UnitNote {
    std::uintptr_t ringPlace;  ///< of a page in a ring index: where it is there (ring_index.h)
    std::uint32_t largeSize;   ///< of a large page: its committed bytes
};

/// The state of a unit: what it is in the upper bits, and how many commit steps from its base
/// belong to it, 1 to 16, in the lower ones.
enum UnitMark : std::uint8_t {
    kMarkNothing = 0,
    kMarkSteps = 0x1F,
    kMarkPage = 0x20,
    kMarkSlots = 0x40,
    kMarkPool = 0x80,
};

/// The map of 4 GB of address space, touched as it is used.
struct AddressZone {
    static constexpr std::uint32_t kUnits = 1U << 16;

    /// Of a unit at whose base a page stands: how many bytes behind the page's header block data
    /// may begin. 0 for all others.
    std::uint16_t reaches[kUnits];
    std::uint8_t marks[kUnits];
    UnitNote notes[kUnits];
};

/// 47 bits of address on a 64-bit machine, all 32 on a 32-bit one.
inline constexpr std::uint32_t kZones = sizeof(void*) == 8 ? 1U << (47 - 32) : 1;
extern constinit std::atomic<AddressZone*> addressZones[kZones];

inline std::uint64_t ZoneNumber(std::uintptr_t address) {
    return std::uint64_t{address} >> 32;
}

inline AddressZone* ZoneOf(std::uintptr_t address) {
    const std::uint64_t zone = ZoneNumber(address);
    return zone < kZones ? addressZones[zone].load(std::memory_order_acquire) : nullptr;
}

/// Makes the map of a zone that has none. False: out of memory.
bool AddZone(std::uint64_t number);
/// Gives all maps back to the system. No region is left.
void DropZones();

/// Sees to it that the map has room for the units of [base, base + 65536). False: out of memory.
inline bool AddressMapCover(const void* base) {
    const auto address = reinterpret_cast<std::uintptr_t>(base);
    return ZoneOf(address) != nullptr || AddZone(ZoneNumber(address));
}

inline std::uint8_t& MarkIn(AddressZone& zone, std::uintptr_t address) {
    return zone.marks[(address >> 16) & (AddressZone::kUnits - 1)];
}

/// Any address at all. Marks are read by other threads than the one that sets them.
inline unsigned MarkAt(const void* pointer) {
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    AddressZone* zone = ZoneOf(address);
    if (zone == nullptr) {
        return kMarkNothing;
    }
    return std::atomic_ref(MarkIn(*zone, address)).load(std::memory_order_relaxed);
}

/// `base` is covered.
inline void SetMark(const void* base, unsigned mark) {
    const auto address = reinterpret_cast<std::uintptr_t>(base);
    std::atomic_ref(MarkIn(*ZoneOf(address), address))
        .store(static_cast<std::uint8_t>(mark), std::memory_order_relaxed);
}

inline std::atomic_ref<std::uint16_t> ReachIn(AddressZone& zone, std::uintptr_t address) {
    return std::atomic_ref(zone.reaches[(address >> 16) & (AddressZone::kUnits - 1)]);
}

/// The mark of a region of `committed` bytes, of which the first unit counts.
constexpr unsigned MarkOf(UnitMark what, std::uint32_t committed) {
    const std::uint32_t steps = committed / kCommitStep;
    return what | (steps < kRegionUnit / kCommitStep ? steps : kRegionUnit / kCommitStep);
}

/// `base` is covered.
inline UnitNote& NoteOf(const void* base) {
    const auto address = reinterpret_cast<std::uintptr_t>(base);
    AddressZone* zone = addressZones[ZoneNumber(address)].load(std::memory_order_relaxed);
    return zone->notes[(address >> 16) & (AddressZone::kUnits - 1)];
}

/// Read by other threads than the one that resizes the page.
inline std::atomic_ref<std::uint32_t> LargeSizeAt(const void* base) {
    return std::atomic_ref(NoteOf(base).largeSize);
}

}  // namespace veldt::heap
