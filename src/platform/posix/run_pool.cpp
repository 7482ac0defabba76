// Free address space beyond the hot runs: warm bins first, then cold ones, then the untouched ends
// of stretches.
#include "platform/posix/address_space.h"

namespace veldt::platform {

namespace {

void MarkRun(Run run, UnitState first, UnitState last, std::uint32_t span) {
    run.entry->Set(first, span);
    if (span > 1) run.entry[span - 1].Set(last, span);
}

/// The run that ends before `run`, if it is in the state that these two stand for.
Run Before(Run run, UnitState first, UnitState last) {
    if (run.unit == StretchOf(run.unit).first) return {};
    const Unit& end = run.entry[-1];
    if (end.State() == first) return {run.unit - 1, run.entry - 1};
    if (end.State() != last) return {};
    return {run.unit - end.Span(), run.entry - end.Span()};
}

/// The run that begins behind `run`, if it is in this state.
Run After(Run run, std::uint32_t span, UnitState first) {
    const Stretch& stretch = StretchOf(run.unit);
    const Run next = {run.unit + span, run.entry + span};
    if (next.unit - stretch.first >= stretch.carved) return {};
    return next.entry->State() == first ? next : Run{};
}

void AddWarm(Run run, std::uint32_t span) {
    MarkRun(run, UnitState::kWarm, UnitState::kWarmEnd, span);
    addressSpace.warm.PushFront(run);
    (span > 1 ? addressSpace.widePages : addressSpace.singlePages) += run.entry->resident;
}

void RemoveWarm(Run run) {
    addressSpace.warm.Remove(run);
    (run.entry->Span() > 1 ? addressSpace.widePages : addressSpace.singlePages) -=
        run.entry->resident;
}

/// Adds a run of several units, joined with its warm neighbours of several units, so that large
/// blocks of changing sizes find it whole.
void AddWide(Run run, std::uint32_t span) {
    const Run after = After(run, span, UnitState::kWarm);
    if (after.entry != nullptr && after.entry->Span() > 1 &&
        CanJoin(span, run.entry->resident, after.entry->Span())) {
        RemoveWarm(after);
        run.entry->resident = span * kPagesPerUnit + after.entry->resident;
        span += after.entry->Span();
    }
    const Run before = Before(run, UnitState::kWarm, UnitState::kWarmEnd);
    if (before.entry != nullptr && before.entry->Span() > 1 &&
        CanJoin(before.entry->Span(), before.entry->resident, span)) {
        RemoveWarm(before);
        const std::uint32_t lowSpan = before.entry->Span();
        before.entry->resident = lowSpan * kPagesPerUnit + run.entry->resident;
        span += lowSpan;
        run = before;
    }
    AddWarm(run, span);
}

/// Puts the upper end of a run that is cut into two where it belongs; the lower `span` units stay
/// in no bin.
void PutRest(Run run, std::uint32_t span) {
    const Run rest = {run.unit + span, run.entry + span};
    const std::uint32_t restSpan = run.entry->Span() - span;
    const std::uint32_t pages = std::min(run.entry->resident, span * kPagesPerUnit);
    rest.entry->resident = run.entry->resident - pages;
    run.entry->resident = pages;
    MarkRun(run, UnitState::kInside, UnitState::kInside, span);
    if (rest.entry->resident == 0) {
        PutCold(rest, restSpan);
    } else {
        AddWarm(rest, restSpan);
    }
}

/// A single unit takes no larger run apart: it would rarely use what is resident there.
Run TakeWarm(std::uint32_t span) {
    const Run run = span == 1 ? addressSpace.warm.FindSingle() : addressSpace.warm.Find(span);
    if (run.entry == nullptr) return {};
    RemoveWarm(run);
    if (run.entry->Span() != span) PutRest(run, span);
    return run;
}

/// Counts a cold run that was wanted again, by what a page of the heap or a large block uses of it.
void Regret(std::uint32_t span) {
    constexpr std::uint32_t kUsualPages = 4;
    if (span == 1) addressSpace.singleRegret += kUsualPages;
    if (span > 1 && span <= kMaxWarmUnits) {
        addressSpace.wideRegret += std::uint64_t{span} * kPagesPerUnit;
    }
}

Run TakeCold(std::uint32_t span) {
    const Run run = addressSpace.cold.Find(span);
    if (run.entry == nullptr) return {};
    addressSpace.cold.Remove(run);
    if (run.entry->Span() != span) PutRest(run, span);
    Regret(span);
    return run;
}

}  // namespace

void PutCold(Run run, std::uint32_t span) {
    const Run after = After(run, span, UnitState::kCold);
    if (after.entry != nullptr) {
        addressSpace.cold.Remove(after);
        span += after.entry->Span();
    }
    const Run before = Before(run, UnitState::kCold, UnitState::kColdEnd);
    if (before.entry != nullptr) {
        addressSpace.cold.Remove(before);
        span += before.entry->Span();
        run = before;
    }
    run.entry->resident = 0;
    MarkRun(run, UnitState::kCold, UnitState::kColdEnd, span);
    Stretch& stretch = StretchOf(run.unit);
    if (run.unit - stretch.first + span == stretch.carved) {
        stretch.carved -= span;
    } else {
        addressSpace.cold.PushFront(run);
    }
}

Run TakeBinnedRun(std::uint32_t span) {
    Run run = TakeWarm(span);
    if (run.entry == nullptr) run = TakeCold(span);
    if (run.entry == nullptr) run = Carve(span);
    if (run.entry != nullptr) return run;
    TrimAll();
    run = TakeCold(span);
    return run.entry != nullptr ? run : Carve(span);
}

void CoolHotRun() {
    AddressSpace& space = addressSpace;
    const std::uint32_t span = space.hotSpan;
    if (span == 0) return;
    space.hot.entry->resident = space.hotResident;
    space.hotSpan = space.hotResident = 0;
    if (space.hot.entry->resident == 0) {
        PutCold(space.hot, span);
    } else if (span == 1) {
        AddWarm(space.hot, span);
    } else {
        AddWide(space.hot, span);
    }
}

void CoolSingles() {
    AddressSpace& space = addressSpace;
    const std::uint32_t half = (space.singleCount + 1) / 2;
    std::for_each_n(space.singles, half, [](Run run) { AddWarm(run, 1); });
    space.singleCount -= half;
    std::copy_n(space.singles + half, space.singleCount, space.singles);
}

}  // namespace veldt::platform
