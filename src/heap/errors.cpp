#include "heap/errors.h"

#include "heap/locks.h"
#include "heap/pools.h"

namespace veldt::heap {

using namespace platform;

constinit HeapRegistry heapRegistry{
    .handler = DefaultErrorHandler, .pools = nullptr, .threads = {}, .threadCount = 0};

namespace {

bool CanCall(HeapErrorHandler handler) {
    return IsBadCodePtr(reinterpret_cast<FARPROC>(reinterpret_cast<void*>(handler))) == 0;
}

/// The handler to run. One that can't be called is replaced for good.
HeapErrorHandler CurrentHandler() {
    const RegistryHold hold;
    if (heapRegistry.handler != nullptr && !CanCall(heapRegistry.handler)) {
        heapRegistry.handler = DefaultErrorHandler;
    }
    return heapRegistry.handler;
}

/// The holds that this thread had on the heap's locks, all of them released.
class DroppedLocks {
  public:
    explicit DroppedLocks(HeapPool* pool) : pool_(pool) {
        if (pool != nullptr && PoolIsValid(pool) && (pool->flags & PoolSerialised) != 0) {
            TakePoolLock(pool);
            poolHolds_ = pool->lockDepth;
        }
        TakeHandleLock();
        handleHolds_ = HandleLockDepth;
        Repeat(handleHolds_--, ReleaseHandleLock);
        Repeat(poolHolds_, [this] { ReleasePoolLock(pool_); });
        if (poolHolds_ > 0) {
            --poolHolds_;
        }
    }

    void TakeBack() {
        Repeat(poolHolds_, [this] { TakePoolLock(pool_); });
        Repeat(handleHolds_, TakeHandleLock);
    }

  private:
    template <class Action>
    static void Repeat(std::uint32_t times, Action action) {
        for (; times > 0; --times) {
            action();
        }
    }

    HeapPool* pool_;
    std::uint32_t poolHolds_ = 0;
    std::uint32_t handleHolds_ = 0;
};

/// The calling thread's stay in the handler, which an exception may end.
class HandlerStay {
  public:
    HandlerStay() : barred_(ErrorDepthEnter(0)) {}
    ~HandlerStay() { ErrorDepthLeave(); }
    HandlerStay(const HandlerStay&) = delete;
    HandlerStay& operator=(const HandlerStay&) = delete;
    bool Barred() const { return barred_; }

  private:
    bool barred_;
};

}  // namespace

std::int32_t HeapErrorDispatch(HeapPool* pool, std::int32_t error) {
    const HeapErrorRecord record{.error = error, .pool = pool};
    const HeapErrorHandler handler = CurrentHandler();
    if (handler == nullptr) {
        return 0;
    }
    DroppedLocks locks(pool);
    std::int32_t verdict = 0;
    {
        const HandlerStay stay;
        if (!stay.Barred()) {
            verdict = handler(&record);
        }
    }
    locks.TakeBack();
    return verdict;
}

HeapErrorHandler PoolSetErrorHandler(HeapErrorHandler handler) {
    const RegistryHold hold;
    if (handler != nullptr && !CanCall(handler)) {
        return nullptr;
    }
    const HeapErrorHandler previous = heapRegistry.handler;
    heapRegistry.handler = handler;
    return previous;
}

std::int32_t DefaultErrorHandler(const HeapErrorRecord* record) {
    return ErrorMessageBox(HeapErrorText(record->error), record->error == MEM_OUT_OF_MEMORY);
}

bool ErrorDepthEnter(std::int32_t limit) {
    constexpr std::int32_t kTableFull = -1;
    std::int32_t old = 0;
    {
        const RegistryHold hold;
        ThreadDepthSlot* slot = ThreadDepthFind(1);
        old = slot != nullptr ? slot->depth++ : kTableFull;
    }
    if (old == kTableFull) {
        ErrorMessageBox("\n\rMemory errors in too many threads concurrently.\n\r", 0);
        return true;
    }
    if (old == limit + 1) {
        ErrorMessageBox("\n\rTessera error handler recursively re-entered.\n\r", 0);
    }
    return old > limit;
}

void ErrorDepthLeave() {
    const RegistryHold hold;
    ThreadDepthSlot* slot = ThreadDepthFind(0);
    if (slot != nullptr && --slot->depth == 0) {
        ThreadDepthRemove(slot);
    }
}

ThreadDepthSlot* ThreadDepthFind(int create) {
    const std::uint32_t thread = GetCurrentThreadId();
    for (std::uint32_t i = 0; i < heapRegistry.threadCount; ++i) {
        if (heapRegistry.threads[i].thread == thread) {
            return &heapRegistry.threads[i];
        }
    }
    if (create != 1 || heapRegistry.threadCount == HeapRegistry::kThreads) {
        return nullptr;
    }
    ThreadDepthSlot* slot = &heapRegistry.threads[heapRegistry.threadCount++];
    *slot = {.thread = thread, .depth = 0};
    return slot;
}

void ThreadDepthRemove(ThreadDepthSlot* slot) {
    *slot = heapRegistry.threads[--heapRegistry.threadCount];
}

}  // namespace veldt::heap
