// What goes back to the kernel when more memory lies idle than is worth keeping.
#include <algorithm>
#include <array>
#include <span>

#include "platform/platform.h"
#include "platform/posix/address_space.h"

namespace veldt::platform {

namespace {

/// Runs on their way to the kernel, in no bin any more.
struct Batch {
    std::array<Run, 1024> runs;
    std::size_t count;

    bool Full() const { return count == runs.size(); }
    std::span<Run> All() { return {runs.data(), count}; }
    void Add(Run run, std::uint64_t& pages) {
        addressSpace.warm.Remove(run);
        pages -= run.entry->resident;
        runs[count++] = run;
    }
};

/// Takes runs out of the warm bins until these hold `leave` pages.
void Collect(Batch& batch, Run (FreeRuns::*next)() const, std::uint64_t& pages,
             std::uint64_t leave) {
    while (!batch.Full() && pages > leave) {
        const Run run = (addressSpace.warm.*next)();
        if (run.entry == nullptr) return;
        batch.Add(run, pages);
    }
}

/// Where the run that follows `run` may begin for one call to do for both: right behind it, or
/// behind a short cold run there.
UnitNumber ReachOf(Run run) {
    constexpr std::uint32_t kLongestBridge = 64;
    const Stretch& stretch = StretchOf(run.unit);
    const UnitNumber end = run.unit + run.entry->Span();
    if (end - stretch.first >= stretch.carved) return end;
    const Unit& next = stretch.At(end);
    const bool isBridge = next.State() == UnitState::kCold && next.Span() <= kLongestBridge;
    return isBridge ? end + next.Span() : end;
}

/// Gives the memory of sorted runs back, neighbours in one call.
void GiveBackRuns(std::span<const Run> runs) {
    for (std::size_t first = 0; first < runs.size();) {
        std::size_t last = first;
        while (last + 1 < runs.size() && runs[last + 1].unit <= ReachOf(runs[last])) ++last;
        std::byte* base = BaseOf(runs[first].unit);
        std::byte* end =
            BaseOf(runs[last].unit) + (std::size_t{runs[last].entry->resident} << kPageShift);
        GiveBack(base, static_cast<std::size_t>(end - base));
        first = last + 1;
    }
}

/// Trims what warm runs of several units and single ones hold down to these pages. Of several units
/// the shortest go first, since they serve the fewest requests.
void Trim(std::uint64_t leaveWide, std::uint64_t leaveSingle) {
    static Batch batch;
    do {
        batch.count = 0;
        Collect(batch, &FreeRuns::OldestOfShortestWide, addressSpace.widePages, leaveWide);
        Collect(batch, &FreeRuns::OldestSingle, addressSpace.singlePages, leaveSingle);
        const std::span<Run> runs = batch.All();
        std::sort(runs.begin(), runs.end(),
                  [](const Run& left, const Run& right) { return left.unit < right.unit; });
        GiveBackRuns(runs);
        // From the top down, so that the lowest address is the first one used again.
        std::for_each(runs.rbegin(), runs.rend(), [](Run run) { PutCold(run, run.entry->Span()); });
    } while (batch.Full());
}

}  // namespace

void TrimWarm() {
    AddressSpace& space = addressSpace;
    std::uint64_t leaveSingle = space.singlePages;
    if (leaveSingle > SingleAllowance(space)) {
        leaveSingle = SingleAllowance(space) / 4;
        space.singleRegret = EarnedBySingles(space) / 2;
    }
    std::uint64_t leaveWide = space.widePages;
    if (leaveWide > WideAllowance(space)) {
        leaveWide = WideAllowance(space) / 2;
        space.wideRegret = EarnedByWide(space) / 2;
    }
    if (leaveSingle != space.singlePages || leaveWide != space.widePages) {
        Trim(leaveWide, leaveSingle);
    }
}

void TrimAll() {
    CoolHotRun();
    while (addressSpace.singleCount != 0) CoolSingles();
    Trim(0, 0);
}

void GiveBackIdleMemory() {
    const LockGuard guard(addressSpace.lock);
    TrimAll();
}

void GiveBackAddressSpace(void (*goes)(char* from, std::size_t size)) {
    const LockGuard guard(addressSpace.lock);
    TrimAll();
    DropStretches(goes);
}

}  // namespace veldt::platform
