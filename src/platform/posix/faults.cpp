#include "platform/posix/faults.h"

#include "platform/posix/address_space.h"

namespace veldt::platform::faults {

void LimitCommitted(std::uint64_t bytes) {
    const LockGuard guard(addressSpace.lock);
    addressSpace.committedLimit = bytes == kNever ? kNever : bytes >> kPageShift;
}

void FailVirtualAlloc(std::uint64_t n, bool onward) {
    const LockGuard guard(addressSpace.lock);
    addressSpace.failFrom = n == kNever ? 0 : addressSpace.allocCalls + n - 1;
    addressSpace.failCount = n == kNever ? 0 : onward ? kNever : 1;
}

AddressSpaceCounts CountAddressSpace() {
    const LockGuard guard(addressSpace.lock);
    return {addressSpace.allocCalls, addressSpaceSystemCalls, addressSpace.reservations,
            addressSpace.committedPages << kPageShift, addressSpace.idlePages << kPageShift};
}

}  // namespace veldt::platform::faults
