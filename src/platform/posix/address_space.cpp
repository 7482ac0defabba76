#include "platform/posix/address_space.h"

#include <atomic>

#include "platform/platform.h"
#include "platform/posix/faults.h"

namespace veldt::platform {

constinit AddressSpace addressSpace = {};

namespace {

constexpr std::uint32_t kMaxRegionUnits = 1u << 20;

/// The region that `address` lies in. Walks back an entry a unit from there to the base.
Run RegionAround(const void* address) {
    Unit* entry = FindUnit(address);
    if (entry == nullptr) return {};
    const UnitNumber unit = UnitOf(address);
    const std::uint32_t index = unit - StretchOf(unit).first;
    for (std::uint32_t back = 0; back <= index; ++back, --entry) {
        if (entry->State() != UnitState::kRegion) continue;
        return back < entry->Span() ? Run{unit - back, entry} : Run{};
    }
    return {};
}

/// The entry of the region that begins at `address`, null if none does.
Unit* RegionAt(const void* address) {
    if (reinterpret_cast<std::uintptr_t>(address) % kUnitBytes != 0) return nullptr;
    Unit* entry = FindUnit(address);
    return entry != nullptr && entry->State() == UnitState::kRegion ? entry : nullptr;
}

std::uint32_t PagesOf(SIZE_T size) {
    return static_cast<std::uint32_t>((size + kPageBytes - 1) >> kPageShift);
}

void* Refuse(DWORD error) {
    SetLastError(error);
    return nullptr;
}

/// Whether this call is one that a test wants refused.
bool CountsDownToFault() {
    if (--addressSpace.callsToFault != 0) [[likely]]
        return false;
    faults::OnFault();
    return true;
}

Run TakeRun(std::uint32_t span) {
    AddressSpace& space = addressSpace;
    if (span == 1 && space.singleCount != 0) return space.singles[--space.singleCount];
    if (span != 1 && span <= space.hotSpan) return TakeHot(space, span);
    return TakeBinnedRun(span);
}

Run ReserveUnits(std::uint32_t span) {
    const Run run = TakeRun(span);
    if (run.entry == nullptr) return run;
    run.entry->Set(UnitState::kRegion, span);
    run.entry->committed = 0;
    if (span > 1) run.entry[span - 1].Set(UnitState::kInside, 0);
    return run;
}

/// What a region has resident beyond its committed pages, as counted in `endPages`.
std::uint32_t IdleOf(const Unit& entry) {
    return entry.committed != 0 ? entry.resident - entry.committed : 0;
}

/// Gives back what a region has resident beyond its committed pages. It isn't counted as idle.
void DropIdle(Run region) {
    const std::uint32_t pages = region.entry->resident - region.entry->committed;
    GiveBack(BaseOf(region.unit) + (std::size_t{region.entry->committed} << kPageShift),
             std::size_t{pages} << kPageShift);
    region.entry->resident = region.entry->committed;
}

/// Decides about what a region has resident beyond its committed pages, not yet counted: much of it
/// goes at once, less only when there is too much of it already.
void SettleIdle(Run region, std::uint32_t pagesWorthACall) {
    AddressSpace& space = addressSpace;
    const std::uint32_t pages = region.entry->resident - region.entry->committed;
    if (pages >= pagesWorthACall || space.endPages + pages > EndAllowance(space)) {
        DropIdle(region);
    } else {
        space.endPages += pages;
    }
}

/// VirtualQuery reads this without the lock.
void SetCommitted(Unit& entry, std::uint32_t pages) {
    std::atomic_ref(entry.committed).store(pages, std::memory_order_relaxed);
}

/// Commits the first pages of a region of which nothing is counted; false if that goes over the
/// limit.
inline bool CommitFirst(Run region, std::uint32_t pages) {
    AddressSpace& space = addressSpace;
    Unit& entry = *region.entry;
    if (space.committedPages + pages > space.committedLimit) return false;
    space.committedPages += pages;
    SetCommitted(entry, pages);
    if (entry.resident > pages) [[unlikely]] {
        SettleIdle(region, 4 * kPagesPerUnit);
    } else {
        entry.resident = pages;
    }
    return true;
}

/// Moves the end of a region's committed pages up; false if that goes over the limit.
bool GrowTo(Run region, std::uint32_t pages) {
    AddressSpace& space = addressSpace;
    Unit& entry = *region.entry;
    const std::uint32_t before = entry.committed;
    if (space.committedPages + pages - before > space.committedLimit) return false;
    space.committedPages -= before;
    space.endPages -= IdleOf(entry);
    return CommitFirst(region, pages);
}

void ShrinkTo(Run region, std::uint32_t pages) {
    AddressSpace& space = addressSpace;
    space.committedPages -= region.entry->committed - pages;
    space.endPages -= IdleOf(*region.entry);
    SetCommitted(*region.entry, pages);
    SettleIdle(region, pages == 0 ? 0 : kPagesPerUnit);
}

/// The way of a region's units where no hot place is free for them. This is where memory gets warm
/// or the allowances fall, so what is warm is looked at here and not at every release.
void DissolveSlowly(Run region, std::uint32_t span) {
    AddressSpace& space = addressSpace;
    if (region.entry->resident == 0 || span > kMaxWarmUnits) {
        region.entry->committed = 0;
        if (region.entry->resident != 0) DropIdle(region);
        PutCold(region, span);
    } else if (span == 1) {
        CoolSingles();
        space.singles[space.singleCount++] = region;
    } else {
        CoolHotRun();
        PutHot(space, region, span);
    }
    TrimWarm();
}

/// Puts a region's units among the free ones.
void Dissolve(Run region) {
    AddressSpace& space = addressSpace;
    Unit& entry = *region.entry;
    const std::uint32_t span = entry.Span();
    space.committedPages -= entry.committed;
    if (entry.resident != entry.committed) [[unlikely]]
        space.endPages -= IdleOf(entry);
    entry.Set(UnitState::kHot, span);
    if (entry.resident == 0 || span > kMaxWarmUnits) return DissolveSlowly(region, span);
    if (span > 1) {
        if (!PutHot(space, region, span)) DissolveSlowly(region, span);
    } else if (space.singleCount != AddressSpace::kHotSingles) {
        space.singles[space.singleCount++] = region;
    } else {
        DissolveSlowly(region, span);
    }
}

/// Reserves `size` bytes, and commits them as well if asked to: all of it or nothing.
void* Reserve(SIZE_T size, bool commit) {
    if (size == 0) return Refuse(ERROR_INVALID_PARAMETER);
    if (size > SIZE_T{kMaxRegionUnits} * kUnitBytes - kUnitBytes) {
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
    const Run region = ReserveUnits(static_cast<std::uint32_t>((size - 1) >> kUnitShift) + 1);
    if (region.entry == nullptr) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    if (commit && !CommitFirst(region, PagesOf(size))) {
        Dissolve(region);
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
    return BaseOf(region.unit);
}

void* Commit(void* address, SIZE_T size) {
    const Run region = RegionAround(address);
    if (region.entry == nullptr || size == 0) return Refuse(ERROR_INVALID_ADDRESS);
    const auto offset = static_cast<SIZE_T>(static_cast<std::byte*>(address) - BaseOf(region.unit));
    const SIZE_T reserved = SIZE_T{region.entry->Span()} << kUnitShift;
    if (offset >> kPageShift > region.entry->committed || size > reserved - offset) {
        return Refuse(ERROR_INVALID_ADDRESS);
    }
    const std::uint32_t pages = PagesOf(offset + size);
    if (pages > region.entry->committed && !GrowTo(region, pages)) {
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    }
    return BaseOf(region.unit) + (offset & ~(kPageBytes - 1));
}

BOOL Decommit(void* address, SIZE_T size) {
    const Run region = RegionAround(address);
    if (region.entry == nullptr) return Refuse(ERROR_INVALID_ADDRESS), 0;
    const auto offset = static_cast<SIZE_T>(static_cast<std::byte*>(address) - BaseOf(region.unit));
    if (size > (SIZE_T{region.entry->Span()} << kUnitShift) - offset) {
        return Refuse(ERROR_INVALID_ADDRESS), 0;
    }
    const SIZE_T committed = SIZE_T{region.entry->committed} << kPageShift;
    if (offset >= committed) return 1;
    if (offset + size < committed) return Refuse(ERROR_INVALID_PARAMETER), 0;
    ShrinkTo(region, static_cast<std::uint32_t>(offset >> kPageShift));
    return 1;
}

BOOL Release(void* address) {
    Unit* entry = RegionAt(address);
    if (entry == nullptr) return Refuse(ERROR_INVALID_ADDRESS), 0;
    Dissolve({UnitOf(address), entry});
    return 1;
}

}  // namespace

void* VirtualAlloc(void* address, SIZE_T size, DWORD type, DWORD) {
    const LockGuard guard(addressSpace.lock);
    if (CountsDownToFault()) [[unlikely]]
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    if (type == MEM_COMMIT) return Commit(address, size);
    if (address == nullptr && (type & ~MEM_COMMIT) == MEM_RESERVE) {
        return Reserve(size, (type & MEM_COMMIT) != 0);
    }
    return Refuse(ERROR_INVALID_PARAMETER);
}

void* VirtualAllocUnits(SIZE_T size) {
    const LockGuard guard(addressSpace.lock);
    if (CountsDownToFault()) [[unlikely]]
        return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    return Reserve(size, true);
}

BOOL VirtualFree(void* address, SIZE_T size, DWORD type) {
    const LockGuard guard(addressSpace.lock);
    if (type == MEM_RELEASE && size == 0) return Release(address);
    if (type == MEM_DECOMMIT && size != 0) return Decommit(address, size);
    return Refuse(ERROR_INVALID_PARAMETER), 0;
}

// Without the lock: the tables of a stretch stay as long as the module, and of the entry of a live
// region only what is committed changes that is read here, when its owner says so.
SIZE_T VirtualQuery(const void* address, MEMORY_BASIC_INFORMATION* info, SIZE_T length) {
    Unit* entry = RegionAt(address);
    if (entry == nullptr || length < sizeof *info) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    info->BaseAddress = const_cast<void*>(address);
    const std::uint32_t pages = std::atomic_ref(entry->committed).load(std::memory_order_relaxed);
    info->RegionSize = SIZE_T{pages} << kPageShift;
    return sizeof *info;
}

}  // namespace veldt::platform
