// The dispatcher of errors and its handlers, several threads among them.
#include <stdexcept>
#include <thread>

#include "heap/locks.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;
namespace platform = veldt::platform;

/// Takes every lock of the heap on another thread; never ends if this thread holds one.
void UseHeapFromOutside(HeapPool* pool) {
    std::thread([pool] {
        HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 100);
        EXPECT_NE(RelocLock(slot), nullptr);
        EXPECT_EQ(RelocFree(slot), 1);
    }).join();
}

TEST(Handlers, AreExchanged) {
    RaisedErrors errors;
    const auto other = [](const HeapErrorRecord*) -> std::int32_t { return 5; };
    EXPECT_EQ(HeapErrorDispatch(nullptr, 3), 0);
    const HeapErrorHandler first = PoolSetErrorHandler(other);
    EXPECT_EQ(HeapErrorDispatch(nullptr, 3), 5);
    EXPECT_EQ(PoolSetErrorHandler(nullptr), +other);
    EXPECT_EQ(HeapErrorDispatch(nullptr, 3), 0);
    EXPECT_EQ(PoolSetErrorHandler(first), nullptr);
    EXPECT_EQ(errors.Take(), Raised{3});
    void* const nowhere = reinterpret_cast<void*>(std::uintptr_t{1});
    if (platform::IsBadCodePtr(reinterpret_cast<platform::FARPROC>(nowhere)) != 0) {
        EXPECT_EQ(PoolSetErrorHandler(reinterpret_cast<HeapErrorHandler>(nowhere)), nullptr);
        EXPECT_EQ(heapRegistry.handler, first);
    }
}

HeapPool* handlersPool;

TEST(Handlers, RunWithoutLocks) {
    TestPool pool(20, PoolSerialised);
    handlersPool = pool;
    const HeapErrorHandler before = PoolSetErrorHandler([](const HeapErrorRecord* record) {
        EXPECT_EQ(handlersPool->lockDepth, 0U);
        UseHeapFromOutside(handlersPool);
        return record->error;
    });
    TakePoolLock(pool);
    TakePoolLock(pool);
    TakeHandleLock();
    EXPECT_EQ(HeapErrorDispatch(pool, 4), 4);
    EXPECT_EQ(pool->lockDepth, 2U);
    EXPECT_EQ(HandleLockDepth, 1U);
    ReleaseHandleLock();
    ReleasePoolLock(pool);
    ReleasePoolLock(pool);
    EXPECT_EQ(PoolAlloc(pool, 0, 0), nullptr);
    EXPECT_EQ(pool->lockDepth, 0U);
    EXPECT_EQ(HandleLockDepth, 0U);
    EXPECT_EQ(heapRegistry.threadCount, 0U);
    PoolSetErrorHandler(before);
}

TEST(Handlers, MayThrow) {
    TestPool pool(20, PoolSerialised);
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 100);
    const HeapErrorHandler before = PoolSetErrorHandler(
        [](const HeapErrorRecord*) -> std::int32_t { throw std::runtime_error("enough"); });
    EXPECT_THROW(PoolAlloc(pool, 0, 0), std::runtime_error);
    EXPECT_THROW(RelocUnlock(slot), std::runtime_error);
    EXPECT_EQ(heapRegistry.threadCount, 0U);
    TakePoolLock(pool);
    EXPECT_THROW(HeapErrorDispatch(pool, 4), std::runtime_error);
    EXPECT_EQ(pool->lockDepth, 0U) << "dropped for good";
    EXPECT_EQ(HandleLockDepth, 0U);
    UseHeapFromOutside(pool);
    PoolSetErrorHandler(before);
}

}  // namespace
