#include "platform/posix/address_space.h"

#include <algorithm>
#include <bit>

#include "platform/platform.h"

namespace veldt::platform {

constinit AddressSpace addressSpace = {};

namespace {

constexpr std::uint32_t kMaxRegionUnits = 1u << 20;

struct Region {
    UnitNumber base;
    Unit* entry;  ///< null if there is no region
};

std::uint64_t& WideWord(const Stretch& stretch, UnitNumber unit) {
    return stretch.wideRegions[(unit - stretch.first) / 64];
}

std::uint64_t WideBit(const Stretch& stretch, UnitNumber unit) {
    return std::uint64_t{1} << (unit - stretch.first) % 64;
}

/// The region of several units that `unit` lies in behind its base. Walks back a bit a unit.
Region WideRegionAround(const Stretch& stretch, UnitNumber unit) {
    const std::uint32_t index = unit - stretch.first;
    std::size_t word = index / 64;
    std::uint64_t bits = stretch.wideRegions[word] & (~std::uint64_t{0} >> (63 - index % 64));
    while (bits == 0) {
        if (word == 0) return {};
        bits = stretch.wideRegions[--word];
    }
    const auto base = static_cast<std::uint32_t>(word * 64 + 63) -
                      static_cast<std::uint32_t>(std::countl_zero(bits));
    Unit* entry = &stretch.units[base];
    return index - base < entry->Span() ? Region{stretch.first + base, entry} : Region{};
}

Region RegionAround(const void* address) {
    Unit* entry = FindUnit(address);
    if (entry == nullptr) return {};
    const UnitNumber unit = UnitOf(address);
    if (entry->State() == UnitState::kRegion) return {unit, entry};
    return WideRegionAround(StretchOf(unit), unit);
}

/// The entry of the region that begins at `address`, null if none does.
Unit* RegionAt(const void* address) {
    if (reinterpret_cast<std::uintptr_t>(address) % kUnitBytes != 0) return nullptr;
    Unit* entry = FindUnit(address);
    return entry != nullptr && entry->State() == UnitState::kRegion ? entry : nullptr;
}

void* Refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

bool ToldToFail() {
    return addressSpace.allocCalls++ - addressSpace.failFrom < addressSpace.failCount;
}

void* Reserve(SIZE_T size) {
    if (size == 0 || size > (SIZE_T{kMaxRegionUnits} - 1) * kUnitBytes) {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    const auto span = static_cast<std::uint32_t>((size + kUnitBytes - 1) >> kUnitShift);
    const UnitNumber unit = TakeRun(span);
    if (unit == 0) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    const Stretch& stretch = StretchOf(unit);
    Unit& entry = stretch.At(unit);
    entry.Set(UnitState::kRegion, span);
    entry.committed = 0;
    if (span > 1) {
        (&entry)[span - 1].Set(UnitState::kInside, 0);
        WideWord(stretch, unit) |= WideBit(stretch, unit);
    }
    ++addressSpace.reservations;
    return BaseOf(unit);
}

/// Gives back what a region has resident beyond its committed pages.
void DropIdle(UnitNumber unit, Unit& entry) {
    const std::uint32_t pages = entry.resident - entry.committed;
    GiveBack(BaseOf(unit) + (std::size_t{entry.committed} << kPageShift),
             std::size_t{pages} << kPageShift);
    addressSpace.idlePages -= pages;
    entry.resident = entry.committed;
}

/// Moves the end of a region's committed pages up.
bool GrowTo(UnitNumber unit, Unit& entry, std::uint32_t pages) {
    AddressSpace& space = addressSpace;
    const std::uint32_t more = pages - entry.committed;
    if (space.committedPages + more > space.committedLimit) return false;
    space.committedPages += more;
    space.idlePages -= std::min(pages, entry.resident) - entry.committed;
    entry.committed = pages;
    entry.resident = std::max(entry.resident, pages);
    if (entry.resident != pages && TooMuchIdle(space)) DropIdle(unit, entry);
    return true;
}

void* Commit(void* address, SIZE_T size) {
    const Region region = RegionAround(address);
    if (region.entry == nullptr || size == 0) return Refuse(ERROR_INVALID_ADDRESS);
    const auto offset = static_cast<SIZE_T>(static_cast<std::byte*>(address) - BaseOf(region.base));
    const SIZE_T reserved = SIZE_T{region.entry->Span()} << kUnitShift;
    if (offset >> kPageShift > region.entry->committed || size > reserved - offset) {
        return Refuse(ERROR_INVALID_ADDRESS);
    }
    const auto pages = static_cast<std::uint32_t>((offset + size + kPageBytes - 1) >> kPageShift);
    if (pages > region.entry->committed && !GrowTo(region.base, *region.entry, pages)) {
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
    return BaseOf(region.base) + (offset & ~(kPageBytes - 1));
}

BOOL Decommit(void* address, SIZE_T size) {
    /// Less than this much at the end of a region stays resident as long as the allowance has room.
    constexpr std::uint32_t kPagesWorthACall = kPagesPerUnit;
    const Region region = RegionAround(address);
    if (region.entry == nullptr) return Refuse(ERROR_INVALID_ADDRESS), 0;
    Unit& entry = *region.entry;
    const auto offset = static_cast<SIZE_T>(static_cast<std::byte*>(address) - BaseOf(region.base));
    if (size > (SIZE_T{entry.Span()} << kUnitShift) - offset) {
        return Refuse(ERROR_INVALID_ADDRESS), 0;
    }
    const SIZE_T committed = SIZE_T{entry.committed} << kPageShift;
    if (offset >= committed) return 1;
    if (offset + size < committed) return Refuse(ERROR_INVALID_PARAMETER), 0;
    const auto pages = static_cast<std::uint32_t>(offset >> kPageShift);
    const std::uint32_t fewer = entry.committed - pages;
    entry.committed = pages;
    addressSpace.committedPages -= fewer;
    addressSpace.idlePages += fewer;
    if (entry.resident - pages >= kPagesWorthACall || TooMuchIdle(addressSpace)) {
        DropIdle(region.base, entry);
    }
    return 1;
}

BOOL Release(void* address) {
    Unit* entry = RegionAt(address);
    if (entry == nullptr) return Refuse(ERROR_INVALID_ADDRESS), 0;
    const UnitNumber unit = UnitOf(address);
    Stretch& stretch = StretchOf(unit);
    const std::uint32_t span = entry->Span();
    if (span > 1) WideWord(stretch, unit) &= ~WideBit(stretch, unit);
    addressSpace.committedPages -= entry->committed;
    addressSpace.idlePages += entry->committed;
    --addressSpace.reservations;
    entry->Set(UnitState::kWarm, span);
    PutRun(unit, *entry, stretch);
    return 1;
}

}  // namespace

void* VirtualAlloc(void* address, SIZE_T size, DWORD type, DWORD) {
    const LockGuard guard(addressSpace.lock);
    if (ToldToFail()) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    if (type == MEM_COMMIT) return Commit(address, size);
    if (type == MEM_RESERVE && address == nullptr) return Reserve(size);
    return Refuse(ERROR_INVALID_PARAMETER);
}

BOOL VirtualFree(void* address, SIZE_T size, DWORD type) {
    const LockGuard guard(addressSpace.lock);
    if (type == MEM_RELEASE && size == 0) return Release(address);
    if (type == MEM_DECOMMIT && size != 0) return Decommit(address, size);
    return Refuse(ERROR_INVALID_PARAMETER), 0;
}

// Without the lock: the entry of a live region changes in its owner's calls only, and the tables of
// a stretch stay for good.
SIZE_T VirtualQuery(const void* address, MEMORY_BASIC_INFORMATION* info, SIZE_T length) {
    const Unit* entry = RegionAt(address);
    if (entry == nullptr || length < sizeof *info) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    info->BaseAddress = const_cast<void*>(address);
    info->RegionSize = SIZE_T{entry->committed} << kPageShift;
    return sizeof *info;
}

}  // namespace veldt::platform
