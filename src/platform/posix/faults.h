// What tests use to make the operating system refuse, and to see what the layer holds.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veldt::platform::faults {

inline constexpr std::uint64_t kNever = ~std::uint64_t{0};

/// Commits that would bring the committed bytes of the process above this fail. kNever lifts it.
void LimitCommitted(std::uint64_t bytes);

/// The n-th VirtualAlloc from now on fails, 1 being the next; and each one after it if `onward`.
/// kNever lifts it.
void FailVirtualAlloc(std::uint64_t n, bool onward = false);

/// What VirtualAlloc calls, under its lock, when it fails for this reason.
void OnFault();

/// The same for GlobalAlloc and GlobalReAlloc.
void FailGlobalAlloc(std::uint64_t n, bool onward = false);

struct AddressSpaceCounts {
    std::uint64_t allocCalls;      ///< VirtualAlloc since the start, refused ones included
    std::uint64_t systemCalls;     ///< made for address space since the start
    std::uint64_t reservations;    ///< live now
    std::uint64_t committedBytes;  ///< now
    std::uint64_t idleBytes;       ///< perhaps resident now though not committed
};

/// Walks every run.
AddressSpaceCounts CountAddressSpace();

/// What is wrong with the tables of the address space, null if nothing is. Walks every run.
const char* CheckAddressSpace();

}  // namespace veldt::platform::faults
