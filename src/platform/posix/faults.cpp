#include "platform/posix/faults.h"

#include "platform/posix/address_space.h"

namespace veldt::platform::faults {

namespace {

void Arm(std::uint64_t n, bool onward) {
    AddressSpace& space = addressSpace;
    space.callsBefore += space.callsArmed - space.callsToFault;
    space.callsArmed = space.callsToFault = n;
    space.faultsGoOn = onward;
}

template <typename Visit>
void ForEachRun(Visit visit) {
    for (std::size_t index = 1; index <= stretchTable.count; ++index) {
        const Stretch& stretch = stretchTable.stretches[index];
        for (std::uint32_t unit = 0; unit < stretch.carved; unit += stretch.units[unit].Span()) {
            visit(Run{stretch.first + unit, stretch.units + unit});
        }
    }
}

}  // namespace

void LimitCommitted(std::uint64_t bytes) {
    const LockGuard guard(addressSpace.lock);
    addressSpace.committedLimit = bytes == kNever ? kNever : bytes >> kPageShift;
}

void FailVirtualAlloc(std::uint64_t n, bool onward) {
    const LockGuard guard(addressSpace.lock);
    Arm(n, onward);
}

void OnFault() {
    Arm(addressSpace.faultsGoOn ? 1 : kNever, addressSpace.faultsGoOn);
}

AddressSpaceCounts CountAddressSpace() {
    const LockGuard guard(addressSpace.lock);
    const AddressSpace& space = addressSpace;
    AddressSpaceCounts counts = {};
    counts.allocCalls = space.callsBefore + (space.callsArmed - space.callsToFault);
    counts.systemCalls = addressSpaceSystemCalls;
    counts.committedBytes = space.committedPages << kPageShift;
    std::uint64_t resident = 0;
    ForEachRun([&](Run run) {
        if (run.entry->State() == UnitState::kRegion) ++counts.reservations;
        resident += run.entry->State() == UnitState::kHot && run.unit == space.hot.unit
                        ? space.hotResident
                        : run.entry->resident;
    });
    counts.idleBytes = (resident - space.committedPages) << kPageShift;
    return counts;
}

}  // namespace veldt::platform::faults
