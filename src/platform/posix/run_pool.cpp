// Free address space: warm runs first, then cold ones, then the untouched ends of stretches.
#include <algorithm>
#include <array>
#include <span>

#include "platform/posix/address_space.h"

namespace veldt::platform {

namespace {

void MarkRun(Unit& entry, UnitState first, UnitState last, std::uint32_t span) {
    entry.Set(first, span);
    if (span > 1) (&entry)[span - 1].Set(last, span);
}

/// The entry of the run before, if it is free and its first or last unit is in the given state.
Unit* RunBefore(const Stretch& stretch, UnitNumber unit, UnitState first, UnitState last) {
    if (unit == stretch.first) return nullptr;
    Unit* end = &stretch.At(unit - 1);
    if (end->State() == first) return end;
    return end->State() == last ? end - (end->Span() - 1) : nullptr;
}

Unit* RunAfter(const Stretch& stretch, UnitNumber unit, UnitState first) {
    if (unit - stretch.first >= stretch.carved) return nullptr;
    Unit* entry = &stretch.At(unit);
    return entry->State() == first ? entry : nullptr;
}

UnitNumber NumberOf(const Stretch& stretch, const Unit* entry) {
    return stretch.first + static_cast<UnitNumber>(entry - stretch.units);
}

/// Puts a run without memory among the cold ones, as one with its cold neighbours. What ends where
/// the untouched part of the stretch begins becomes part of that.
void PutCold(UnitNumber unit, std::uint32_t span, Stretch& stretch) {
    if (Unit* after = RunAfter(stretch, unit + span, UnitState::kCold)) {
        addressSpace.cold.Remove(unit + span, *after);
        span += after->Span();
    }
    if (Unit* before = RunBefore(stretch, unit, UnitState::kCold, UnitState::kColdEnd)) {
        unit = NumberOf(stretch, before);
        addressSpace.cold.Remove(unit, *before);
        span += before->Span();
    }
    Unit& entry = stretch.At(unit);
    entry.resident = 0;
    entry.Set(UnitState::kCold, span);
    if (unit - stretch.first + span == stretch.carved) {
        stretch.carved -= span;
        return;
    }
    MarkRun(entry, UnitState::kCold, UnitState::kColdEnd, span);
    addressSpace.cold.PushFront(unit, entry);
}

void Forget(UnitNumber unit) {
    if (addressSpace.kept != unit) return;
    addressSpace.kept = 0;
    addressSpace.keptPages = 0;
}

void Keep(UnitNumber unit, const Unit& entry) {
    addressSpace.kept = unit;
    addressSpace.keptPages = entry.resident;
}

/// Two runs can be one if that counts less than a unit of holes as resident.
bool CanJoin(const Unit& low, const Unit& high) {
    return low.Span() + high.Span() <= kMaxWarmUnits &&
           low.resident > (low.Span() - 1) * kPagesPerUnit;
}

/// Joins the entry of the run above into the one below.
void Join(Unit& low, const Unit& high) {
    const std::uint32_t resident = low.Span() * kPagesPerUnit + high.resident;
    addressSpace.idlePages += resident - (low.resident + high.resident);
    low.resident = resident;
    low.Set(UnitState::kWarm, low.Span() + high.Span());
}

/// Joins a run of several units with its warm neighbours, so that large blocks of changing sizes
/// find it whole.
UnitNumber JoinWarmNeighbours(UnitNumber unit, const Stretch& stretch) {
    Unit* entry = &stretch.At(unit);
    Unit* after = RunAfter(stretch, unit + entry->Span(), UnitState::kWarm);
    if (after != nullptr && CanJoin(*entry, *after)) {
        const UnitNumber number = NumberOf(stretch, after);
        addressSpace.warm.Remove(number, *after);
        Forget(number);
        Join(*entry, *after);
    }
    Unit* before = RunBefore(stretch, unit, UnitState::kWarm, UnitState::kWarmEnd);
    if (before == nullptr || !CanJoin(*before, *entry)) return unit;
    const UnitNumber number = NumberOf(stretch, before);
    addressSpace.warm.Remove(number, *before);
    Forget(number);
    Join(*before, *entry);
    return number;
}

/// Cuts a run that has left its bin down to `span` units and puts the rest back.
void SplitRun(UnitNumber unit, Unit& entry, std::uint32_t span, bool keepRest) {
    const std::uint32_t rest = entry.Span() - span;
    MarkRun(entry, UnitState::kInside, UnitState::kInside, span);
    const std::uint32_t pages = std::min(entry.resident, span * kPagesPerUnit);
    const UnitNumber restUnit = unit + span;
    Unit& restEntry = (&entry)[span];
    restEntry.resident = entry.resident - pages;
    entry.resident = pages;
    if (restEntry.resident == 0) {
        PutCold(restUnit, rest, StretchOf(unit));
        return;
    }
    MarkRun(restEntry, UnitState::kWarm, UnitState::kWarmEnd, rest);
    addressSpace.warm.PushFront(restUnit, restEntry);
    if (keepRest) Keep(restUnit, restEntry);
}

/// A single unit takes no larger run apart: it would rarely use what is resident there.
UnitNumber FindWarm(std::uint32_t span) {
    if (span == 1) return addressSpace.warm.FindSingle();
    return span <= kMaxWarmUnits ? addressSpace.warm.Find(span) : 0;
}

using Batch = std::span<UnitNumber>;

/// Takes up to `batch.size()` warm runs, the longest first and of those the ones longest unused,
/// until half of the allowance is left.
std::size_t CollectIdle(Batch batch) {
    AddressSpace& space = addressSpace;
    std::size_t count = 0;
    unsigned limit = FreeRuns::kBins;
    while (count < batch.size() && space.idlePages - space.keptPages > IdleAllowance(space) / 2) {
        unsigned bin = 0;
        UnitNumber unit = space.warm.Oldest(limit, &bin);
        if (unit == 0) break;
        if (unit == space.kept) unit = UnitAt(unit).previous;
        if (unit == space.kept) {
            limit = bin;
            continue;
        }
        Unit& entry = UnitAt(unit);
        space.warm.Remove(unit, entry);
        space.idlePages -= entry.resident;
        batch[count++] = unit;
    }
    return count;
}

/// Where the run of the batch that follows `end` may begin for one call to do for both: at `end`,
/// or behind a short cold run there.
UnitNumber BridgeFrom(UnitNumber end) {
    constexpr std::uint32_t kLongestBridge = 64;
    const Unit* cold = RunAfter(StretchOf(end - 1), end, UnitState::kCold);
    return cold != nullptr && cold->Span() <= kLongestBridge ? end + cold->Span() : end;
}

/// Gives the memory of sorted runs back, neighbours in one call.
void GiveBackRuns(Batch batch) {
    for (std::size_t first = 0; first < batch.size();) {
        std::size_t last = first;
        while (last + 1 < batch.size() &&
               batch[last + 1] <= BridgeFrom(batch[last] + UnitAt(batch[last]).Span())) {
            ++last;
        }
        std::byte* base = BaseOf(batch[first]);
        std::byte* end =
            BaseOf(batch[last]) + (std::size_t{UnitAt(batch[last]).resident} << kPageShift);
        GiveBack(base, static_cast<std::size_t>(end - base));
        first = last + 1;
    }
}

void Trim() {
    static std::array<UnitNumber, 1024> runs;
    for (;;) {
        const Batch batch(runs.data(), CollectIdle(runs));
        if (batch.empty()) return;
        std::sort(batch.begin(), batch.end());
        GiveBackRuns(batch);
        // From the top down, so that the lowest address is the first one used again.
        for (std::size_t index = batch.size(); index-- > 0;) {
            Stretch& stretch = StretchOf(batch[index]);
            PutCold(batch[index], stretch.At(batch[index]).Span(), stretch);
        }
        if (batch.size() < runs.size()) return;
    }
}

}  // namespace

UnitNumber TakeRun(std::uint32_t span) {
    AddressSpace& space = addressSpace;
    UnitNumber unit = FindWarm(span);
    if (unit != 0) {
        Unit& entry = UnitAt(unit);
        space.warm.Remove(unit, entry);
        const bool wasKept = unit == space.kept;
        Forget(unit);
        if (entry.Span() != span) SplitRun(unit, entry, span, wasKept);
        return unit;
    }
    unit = space.cold.Find(span);
    if (unit != 0) {
        Unit& entry = UnitAt(unit);
        space.cold.Remove(unit, entry);
        if (entry.Span() != span) SplitRun(unit, entry, span, false);
        return unit;
    }
    unit = Carve(span);
    if (unit != 0) UnitAt(unit).resident = 0;
    return unit;
}

void PutRun(UnitNumber unit, Unit& entry, Stretch& stretch) {
    const std::uint32_t span = entry.Span();
    if (entry.resident == 0) {
        PutCold(unit, span, stretch);
        return;
    }
    if (span > kMaxWarmUnits) {
        GiveBack(BaseOf(unit), std::size_t{entry.resident} << kPageShift);
        addressSpace.idlePages -= entry.resident;
        PutCold(unit, span, stretch);
        return;
    }
    const UnitNumber joined = span > 1 ? JoinWarmNeighbours(unit, stretch) : unit;
    Unit& warm = stretch.At(joined);
    MarkRun(warm, UnitState::kWarm, UnitState::kWarmEnd, warm.Span());
    addressSpace.warm.PushFront(joined, warm);
    if (span > 1) Keep(joined, warm);
    if (TooMuchIdle(addressSpace)) Trim();
}

}  // namespace veldt::platform
