#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/platform.h"
#include "platform/posix/stretches.h"

namespace veldt::platform {

namespace {

/// Has the kernel set no bit of the aligned word that the address lies in: a write that changes
/// nothing, that no other thread can get between, and that fails where the word can't be written.
bool CanWriteWord(std::uintptr_t address) {
    std::uint32_t nobodyWaitsHere = 0;
    constexpr unsigned kOrNothing = FUTEX_OP(FUTEX_OP_OR, 0, FUTEX_OP_CMP_EQ, 0);
    return syscall(SYS_futex, &nobodyWaitsHere, FUTEX_WAKE_OP_PRIVATE, 0, 0,
                   address & ~std::uintptr_t{3}, kOrNothing) >= 0;
}

}  // namespace

BOOL IsBadWritePtr(void* pointer, SIZE_T size) {
    if (size == 0) return 0;
    const auto first = reinterpret_cast<std::uintptr_t>(pointer);
    const std::uintptr_t last = first + (size - 1);
    if (pointer == nullptr || last < first) return 1;
    for (std::uintptr_t page = first & ~(kPageBytes - 1);; page += kPageBytes) {
        if (!CanWriteWord(page < first ? first : page)) return 1;
        if (page == (last & ~(kPageBytes - 1))) return 0;
    }
}

BOOL IsBadCodePtr(int (*procedure)()) {
    return procedure == nullptr;
}

}  // namespace veldt::platform
