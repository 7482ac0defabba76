// The heap's three locks. They nest in this order: pool lock, HandleLock, RegistryLock; nothing is
// taken under RegistryLock. Depth counters stand beside the first two, so that the dispatcher of
// errors can drop every hold of its thread and take them back.
#pragma once

#include <atomic>

#include "heap/records.h"

namespace veldt::heap {

/// A process-wide lock, usable before any initialisation and never deleted.
class ProcessLock {
  public:
    void Take() {
        if (state_.load(std::memory_order_acquire) != kReady) {
            Initialise();
        }
        platform::EnterCriticalSection(&section_);
    }
    /// False if another thread has it, or none has ever had it.
    bool TryTake() {
        return state_.load(std::memory_order_acquire) == kReady &&
               platform::TryEnterCriticalSection(&section_) != 0;
    }
    void Release() { platform::LeaveCriticalSection(&section_); }

  private:
    enum : std::uint32_t { kUntouched, kBusy, kReady };
    void Initialise();

    CRITICAL_SECTION section_{};
    std::atomic<std::uint32_t> state_{kUntouched};
};

/// Guards a slot's block word and the header of the block it names, against the block moving.
extern constinit ProcessLock HandleLock;
/// Holds on HandleLock; touched by the holder only.
extern std::uint32_t HandleLockDepth;
/// Guards the handler, the chain of pools and the thread table.
extern constinit ProcessLock RegistryLock;

void TakeHandleLock();
void ReleaseHandleLock();

inline void TakePoolLock(HeapPool* pool) {
    if ((pool->flags & PoolSerialised) != 0) {
        platform::EnterCriticalSection(&pool->lock);
        ++pool->lockDepth;
    }
}

inline void ReleasePoolLock(HeapPool* pool) {
    if ((pool->flags & PoolSerialised) != 0) {
        --pool->lockDepth;
        platform::LeaveCriticalSection(&pool->lock);
    }
}

/// A handler that throws takes its thread out of the heap with the pool lock dropped already.
class [[nodiscard]] PoolHold {
  public:
    [[gnu::always_inline]] explicit PoolHold(HeapPool* pool)
        : pool_((pool->flags & PoolSerialised) != 0 ? pool : nullptr) {
        if (pool_ != nullptr) [[unlikely]] {
            Take();
        }
    }
    [[gnu::always_inline]] ~PoolHold() {
        if (pool_ != nullptr) [[unlikely]] {
            Release();
        }
    }
    PoolHold(const PoolHold&) = delete;
    PoolHold& operator=(const PoolHold&) = delete;

  private:
    void Take();
    void Release();

    HeapPool* pool_;  ///< null where there is no lock to hold
    int exceptions_ = 0;
};

/// Takes no lock where no other thread can want it: none starts while a hold lasts.
class [[nodiscard]] HandleHold {
  public:
    HandleHold() : held_(!platform::OnlyThread()) {
        if (held_) [[unlikely]] {
            TakeHandleLock();
        }
    }
    ~HandleHold() {
        if (held_) [[unlikely]] {
            ReleaseHandleLock();
        }
    }
    HandleHold(const HandleHold&) = delete;
    HandleHold& operator=(const HandleHold&) = delete;

  private:
    bool held_;
};

class [[nodiscard]] RegistryHold {
  public:
    RegistryHold() { RegistryLock.Take(); }
    ~RegistryHold() { RegistryLock.Release(); }
    RegistryHold(const RegistryHold&) = delete;
    RegistryHold& operator=(const RegistryHold&) = delete;
};

}  // namespace veldt::heap
