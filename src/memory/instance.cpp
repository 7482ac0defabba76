// The one pool that the exported memory calls work on, and the register of their last result.
#include "heap/errors.h"
#include "heap/stress.h"
#include "memory/memory_calls.h"
#include "platform/platform.h"

namespace veldt::memory {

heap::HeapPool* InstancePool = nullptr;
std::int16_t MemErrorCode = 0;

}  // namespace veldt::memory

using namespace veldt::memory;

int XMemInitInstance() {
    constexpr std::uint32_t kInstanceFlags = 0x8000;
    InstancePool = veldt::heap::PoolCreateDefault(kInstanceFlags);
    SetMemError(InstancePool != nullptr ? 0 : kMemFull);
    // Only now, so that a refused pool can still be retried by the default handler.
    veldt::heap::PoolSetErrorHandler(nullptr);
    return MemErrorCode == 0;
}

void XMemExitInstance() {
    veldt::heap::PoolDestroy(InstancePool);
    InstancePool = nullptr;
}

std::int16_t XMemError() {
    return MemErrorCode;
}

void XMemCompactHeap() {
    veldt::heap::PoolCompact(InstancePool);
    veldt::heap::StressMoves(InstancePool, nullptr);
    veldt::platform::GiveBackIdleMemory();
}
