#include "platform/posix/stretches.h"

#include <sys/mman.h>

#include <algorithm>
#include <span>

namespace veldt::platform {

namespace {

/// Large enough on 64 bits that a process rarely needs a second one; on 32 bits what a process
/// doesn't use should stay with it.
constexpr std::size_t kStretchBytes =
    sizeof(void*) == 8 ? std::size_t{1} << 36 : std::size_t{1} << 26;

/// Protection changes cost about 1 µs each, so that address space is opened by many units at once.
constexpr std::uint32_t kUnitsOpenedAtOnce = (4u << 20) >> kUnitShift;

std::byte* Map(std::size_t bytes, int protection) {
    ++addressSpaceSystemCalls;
    void* base =
        mmap(nullptr, bytes, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return base == MAP_FAILED ? nullptr : static_cast<std::byte*>(base);
}

void Unmap(std::byte* base, std::size_t bytes) {
    if (bytes == 0) return;
    ++addressSpaceSystemCalls;
    munmap(base, bytes);
}

/// Address space without access, on a slot's boundary.
std::byte* MapAligned(std::size_t bytes) {
    if (bytes > PTRDIFF_MAX - kSlotBytes) return nullptr;
    std::byte* base = Map(bytes + kSlotBytes, PROT_NONE);
    if (base == nullptr) return nullptr;
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(base) & (kSlotBytes - 1);
    Unmap(base, before);
    Unmap(base + before + bytes, kSlotBytes - before);
    return base + before;
}

bool AddStretch(std::size_t bytes) {
    std::byte* base = MapAligned(bytes);
    if (base == nullptr) return false;
    const std::size_t units = bytes >> kUnitShift;
    std::byte* table = Map(units * sizeof(Unit), PROT_READ | PROT_WRITE);
    if (table == nullptr) {
        Unmap(base, bytes);
        return false;
    }
    // Regions use a part of each 64 KB; large pages would make all of it resident.
    ++addressSpaceSystemCalls;
    madvise(base, bytes, MADV_NOHUGEPAGE);

    const std::size_t index = ++stretchTable.count;
    Stretch& stretch = stretchTable.stretches[index];
    stretch.units = reinterpret_cast<Unit*>(table);
    stretch.first = UnitOf(base);
    stretch.count = static_cast<std::uint32_t>(units);
    stretchTable.entries[index] =
        reinterpret_cast<std::uintptr_t>(table) - std::uintptr_t{stretch.first} * sizeof(Unit);
    std::fill_n(stretchTable.root + SlotOf(stretch.first), bytes >> kSlotShift,
                static_cast<std::uint8_t>(index));
    return true;
}

void DropStretch(Stretch& stretch) {
    const std::size_t bytes = std::size_t{stretch.count} << kUnitShift;
    std::fill_n(stretchTable.root + SlotOf(stretch.first), bytes >> kSlotShift, std::uint8_t{0});
    Unmap(BaseOf(stretch.first), bytes);
    Unmap(reinterpret_cast<std::byte*>(stretch.units), stretch.count * sizeof(Unit));
    stretch = {};
}

/// Adds a stretch that holds at least `span` units, as large as the kernel allows.
bool AddStretchFor(std::uint32_t span) {
    if (stretchTable.count + 1 == kMaxStretches) return false;
    const std::size_t slots = (std::size_t{span} + kUnitsPerSlot - 1) / kUnitsPerSlot;
    if (slots >= kSlots) return false;
    const std::size_t least = slots << kSlotShift;
    for (std::size_t bytes = std::max(kStretchBytes, least);; bytes /= 2) {
        if (bytes <= least) return AddStretch(least);
        if (AddStretch(bytes)) return true;
    }
}

bool Open(Stretch& stretch, std::uint32_t upTo) {
    if (upTo <= stretch.opened) return true;
    const std::uint32_t generous =
        std::min(stretch.count, (upTo + kUnitsOpenedAtOnce - 1) & ~(kUnitsOpenedAtOnce - 1));
    for (const std::uint32_t end : {generous, upTo}) {
        ++addressSpaceSystemCalls;
        if (mprotect(BaseOf(stretch.first + stretch.opened),
                     std::size_t{end - stretch.opened} << kUnitShift,
                     PROT_READ | PROT_WRITE) == 0) {
            stretch.opened = end;
            return true;
        }
    }
    return false;
}

Run CarveFrom(Stretch& stretch, std::uint32_t span) {
    if (span > stretch.count - stretch.carved) return {};
    if (!Open(stretch, stretch.carved + span)) return {};
    const UnitNumber unit = stretch.first + stretch.carved;
    stretch.carved += span;
    Unit& entry = stretch.At(unit);
    entry.resident = 0;
    return {unit, &entry};
}

}  // namespace

constinit StretchTable stretchTable = {};
constinit std::uint64_t addressSpaceSystemCalls = 0;

Run Carve(std::uint32_t span) {
    for (std::size_t index = 1; index <= stretchTable.count; ++index) {
        const Run run = CarveFrom(stretchTable.stretches[index], span);
        if (run.entry != nullptr) return run;
    }
    return AddStretchFor(span) ? CarveFrom(stretchTable.stretches[stretchTable.count], span)
                               : Run{};
}

void DropStretches(void (*goes)(char* from, std::size_t size)) {
    const std::span stretches(stretchTable.stretches + 1, stretchTable.count);
    if (std::ranges::any_of(stretches, [](const Stretch& s) { return s.carved != 0; })) return;
    for (Stretch& stretch : stretches) {
        goes(reinterpret_cast<char*>(BaseOf(stretch.first)),
             std::size_t{stretch.opened} << kUnitShift);
        DropStretch(stretch);
    }
    stretchTable.count = 0;
}

void GiveBack(std::byte* base, std::size_t bytes) {
    ++addressSpaceSystemCalls;
    madvise(base, bytes, MADV_DONTNEED);
}

}  // namespace veldt::platform
