// Serialised pools, hammered by four threads.
#include <random>
#include <thread>

#include "heap_fixture.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

constexpr int kThreads = 4;

template <class Work>
void OnAllThreads(const Work& work) {
    const unsigned seed = Seed();
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back(
            [&work, seed, i] { work(std::mt19937(seed + i), static_cast<char>(i + 1)); });
    }
    for (std::thread& thread : threads) thread.join();
}

bool AllBytesAre(const char* block, std::uint32_t size, char byte) {
    return std::all_of(block, block + size, [byte](char at) { return at == byte; });
}

/// Blocks of one thread, each filled with the thread's byte.
class Worker {
  public:
    Worker(HeapPool* pool, std::mt19937 random, char byte)
        : pool_(pool), random_(random), byte_(byte) {}

    void Step() {
        const std::uint32_t size = 1 + Below(Below(20) == 0 ? 20000 : 400);
        if (handles_.size() < 60) AddHandle(size);
        if (pointers_.size() < 60) AddPointer(size);
        Touch(handles_[Below(handles_.size())], size);
        auto& [block, held] = pointers_[Below(pointers_.size())];
        EXPECT_TRUE(AllBytesAre(block, held, byte_));
        if (char* resized = PoolResize(block, size, 0); resized != nullptr) {
            std::memset(resized, byte_, size);
            block = resized;
            held = size;
        }
        if (Below(2) == 0) Drop(size);
        if (Below(100) == 0) PoolCompact(pool_);
    }

  private:
    struct Handle {
        HandleSlot* slot;
        std::uint32_t size;
    };

    std::uint32_t Below(std::size_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

    void AddHandle(std::uint32_t size) {
        HandleSlot* slot = RelocAlloc(pool_, AllocRelocatable, size);
        std::memset(RelocLock(slot), byte_, size);
        RelocUnlock(slot);
        handles_.push_back({slot, size});
    }
    void AddPointer(std::uint32_t size) {
        char* block = PoolAlloc(pool_, size, 0);
        std::memset(block, byte_, size);
        pointers_.emplace_back(block, size);
    }
    void Touch(Handle& handle, std::uint32_t size) {
        const bool fixed = Below(4) == 0;
        EXPECT_TRUE(AllBytesAre(fixed ? RelocFix(handle.slot) : RelocLock(handle.slot), handle.size,
                                byte_));
        EXPECT_EQ(RelocLockCount(handle.slot), 1U);
        if (Below(3) == 0 && RelocResize(handle.slot, size, AllocRelocatable) != nullptr) {
            std::memset(handle.slot->block, byte_, size);
            handle.size = size;
        }
        EXPECT_EQ(fixed ? RelocUnfix(handle.slot) : RelocUnlock(handle.slot), 0U);
        EXPECT_GE(RelocSize(handle.slot), handle.size);
    }
    void Drop(std::uint32_t number) {
        Handle& handle = handles_[number % handles_.size()];
        RelocFree(handle.slot);
        handle = handles_.back();
        handles_.pop_back();
        auto& pointer = pointers_[number % pointers_.size()];
        EXPECT_GE(PoolBlockSize(pointer.first), pointer.second);
        PoolFree(pointer.first);
        pointer = pointers_.back();
        pointers_.pop_back();
    }

    HeapPool* pool_;
    std::mt19937 random_;
    char byte_;
    std::vector<Handle> handles_;
    std::vector<std::pair<char*, std::uint32_t>> pointers_;
};

TEST(Threads, BlocksOfTheirOwn) {
    TestPool pool(20, PoolSerialised);
    OnAllThreads([&pool](std::mt19937 random, char byte) {
        Worker worker(pool, random, byte);
        for (int i = 0; i < 4000; ++i) worker.Step();
    });
}

TEST(Threads, HandlesInCommon) {
    constexpr char kByte = 0x33;
    TestPool pool(20, PoolSerialised);
    const HeapErrorHandler before = PoolSetErrorHandler(nullptr);
    std::vector<HandleSlot*> shared;
    for (std::uint32_t i = 0; i < 40; ++i) {
        const std::uint32_t size = i % 8 == 0 ? 9000 : 20 + 17 * i;
        shared.push_back(RelocAlloc(pool, AllocRelocatable, size));
        shared.back()->size = size;
        std::memset(shared.back()->block, kByte, size);
    }
    OnAllThreads([&](std::mt19937 random, char) {
        for (int i = 0; i < 10000; ++i) {
            HandleSlot* slot = shared[random() % shared.size()];
            const std::uint32_t size = slot->size;
            EXPECT_GE(RelocSize(slot), size) << "a live handle is never invalid";
            EXPECT_NE(RelocLockCount(slot), kNoCount);
            RelocIsMoveable(slot);
            switch (random() % 8) {
                case 0:
                    // Never below `size`, and in place if anybody has the block locked.
                    RelocResize(slot, size + static_cast<std::uint32_t>(random() % 70000), 0);
                    break;
                case 1:
                    if (RelocFix(slot) != nullptr) RelocUnfix(slot);
                    break;
                case 2:
                    if (random() % 10 == 0) PoolCompact(pool);
                    break;
                default:
                    if (const char* block = RelocLock(slot); block != nullptr) {
                        EXPECT_TRUE(AllBytesAre(block, size, kByte));
                        RelocUnlock(slot);
                    }
            }
        }
    });
    for (HandleSlot* slot : shared) {
        EXPECT_EQ(RelocLockCount(slot), 0U);
        EXPECT_TRUE(AllBytesAre(slot->block, slot->size, kByte));
    }
    PoolSetErrorHandler(before);
}

TEST(Threads, PoolsOfTheirOwn) {
    OnAllThreads([](std::mt19937 random, char byte) {
        for (int round = 0; round < 20; ++round) {
            TestPool pool(round % 2 == 0 ? 20 : 0);
            Worker worker(pool, random, byte);
            for (int i = 0; i < 100; ++i) worker.Step();
        }
    });
}

}  // namespace
