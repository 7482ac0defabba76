// Blocks used at random, on one thread and on four, against what is known of them.
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
            [&work, seed, i] { work(Random(seed + i), static_cast<char>(i + 1)); });
    }
    for (std::thread& thread : threads) thread.join();
}

/// Blocks of one thread, each filled with the thread's byte as far as it can hold any.
class Worker {
  public:
    Worker(HeapPool* pool, Random random, char byte) : pool_(pool), random_(random), byte_(byte) {}

    void Step() {
        if (handles_.size() < 60) AddHandle(Size());
        if (pointers_.size() < 60) AddPointer(Size());
        Handle& handle = handles_[Below(handles_.size())];
        const std::uint32_t call = Below(4);
        const std::uint32_t times = Below(100) == 0 ? kMostLocks + 1 : 1;
        for (std::uint32_t i = 0; i < times; ++i) ChangeCount(handle, call < 2, call % 2 != 0);
        if (Below(3) == 0) ResizeHandle(handle, Size());
        ExpectAsKnown(handle);
        ResizePointer(pointers_[Below(pointers_.size())], Size());
        if (Below(2) == 0) Drop(Below(60));
        if (Below(100) == 0) PoolCompact(pool_);
    }

  private:
    struct Handle {
        HandleSlot* slot;
        std::uint32_t size;
        bool moveable;
        std::uint32_t count;
    };
    struct Pointer {
        char* block;
        std::uint32_t size;
    };

    std::uint32_t Below(std::size_t bound) { return random_.Below(bound); }

    /// Most are small, some stand at the borders between the kinds of blocks.
    std::uint32_t Size() {
        constexpr std::uint32_t kBorders[] = {kGranule, 20, 4096, 65536 - kPageHeader};
        const std::uint32_t choice = Below(20);
        return choice == 0   ? 1 + Below(100000)
               : choice == 1 ? kBorders[Below(std::size(kBorders))] - Below(2 * kGranule) + kGranule
                             : 1 + Below(400);
    }

    /// Gives `look` the block while no other thread can move it.
    template <class Look>
    void WhileItStays(const Handle& handle, const Look& look) {
        if (handle.count == 0) RelocLock(handle.slot);
        look(handle.slot->block);
        if (handle.count == 0) RelocUnlock(handle.slot);
    }

    void Fill(Handle& handle, std::uint32_t size) {
        handle.size = size;
        WhileItStays(handle, [&](char* block) { std::memset(block, byte_, size); });
    }

    void AddHandle(std::uint32_t size) {
        const bool moveable = Below(4) != 0;
        HandleSlot* slot = RelocAlloc(pool_, moveable ? AllocRelocatable : 0U, size);
        handles_.push_back({slot, size, moveable, moveable ? 0U : 1U});
        Fill(handles_.back(), size);
    }

    /// Locks or unlocks, or fixes or unfixes.
    void ChangeCount(Handle& handle, bool more, bool fixed) {
        const bool inPlace = handle.moveable != fixed || (more && fixed && handle.count == 0);
        const bool works = inPlace && (more ? handle.count < kMostLocks : handle.count > 0);
        if (more) {
            char* block = fixed ? RelocFix(handle.slot) : RelocLock(handle.slot);
            EXPECT_EQ(block, works ? handle.slot->block : nullptr);
        } else {
            const std::uint32_t left = fixed ? RelocUnfix(handle.slot) : RelocUnlock(handle.slot);
            EXPECT_EQ(left, works ? handle.count - 1 : kNoCount);
        }
        EXPECT_EQ(RaisedErrors::Take(), works ? Raised{} : Raised{MEM_LOCK_ERROR});
        if (!works) return;
        handle.count += more ? 1 : -1;
        handle.moveable = !fixed || handle.count == 0;
    }

    void ExpectAsKnown(const Handle& handle) {
        EXPECT_EQ(RelocLockCount(handle.slot), handle.count);
        EXPECT_EQ(RelocIsMoveable(handle.slot), handle.moveable);
        EXPECT_GE(RelocSize(handle.slot), handle.size);
        WhileItStays(handle, [&](const char* block) {
            const PageKind kind = KindOf(PageBase(block));
            EXPECT_TRUE(AllAre(block, 0, handle.size, byte_));
            EXPECT_TRUE(kind == kKindLarge ||
                        kind == (handle.moveable ? kKindRelocatable : kKindVariable));
        });
    }

    void ResizeHandle(Handle& handle, std::uint32_t size) {
        const std::uint32_t flags = Below(2) * AllocRelocatable + Below(2) * ResizeNoMove;
        const bool mayMove = flags == AllocRelocatable || (flags == 0 && handle.count == 0);
        const char* before = handle.count != 0 ? handle.slot->block : nullptr;
        const bool done = RelocResize(handle.slot, size, flags) != nullptr;
        EXPECT_TRUE(done || (!mayMove && size > handle.size));
        EXPECT_TRUE(mayMove || handle.count == 0 || handle.slot->block == before);
        EXPECT_EQ(RaisedErrors::Take(), done ? Raised{} : Raised{MEM_RESIZE_FAILED});
        if (!done) return;
        handle.size = std::min(handle.size, size);
        ExpectAsKnown(handle);
        Fill(handle, size);
    }

    void AddPointer(std::uint32_t size) {
        char* block = PoolAlloc(pool_, size, AllocZero);
        EXPECT_TRUE(AllAre(block, 0, PoolBlockSize(block), 0));
        std::memset(block, byte_, PoolBlockSize(block));
        pointers_.push_back({block, size});
    }

    void ResizePointer(Pointer& pointer, std::uint32_t size) {
        const std::uint32_t flags = Below(2) * AllocZero + Below(2) * ResizeNoMove;
        const std::uint32_t kept = std::min(size, PoolBlockSize(pointer.block));
        EXPECT_GE(PoolBlockSize(pointer.block), pointer.size);
        char* resized = PoolResize(pointer.block, size, flags);
        const bool done = resized != nullptr;
        EXPECT_TRUE(done || ((flags & ResizeNoMove) != 0 && size > pointer.size));
        EXPECT_TRUE(!done || (flags & ResizeNoMove) == 0 || resized == pointer.block);
        EXPECT_EQ(RaisedErrors::Take(), done ? Raised{} : Raised{MEM_RESIZE_FAILED});
        if (done) pointer = {resized, size};
        const std::uint32_t usable = PoolBlockSize(pointer.block);
        EXPECT_TRUE(AllAre(pointer.block, 0, done ? kept : usable, byte_));
        const bool zeroed = done && (flags & AllocZero) != 0;
        EXPECT_TRUE(!zeroed || AllAre(resized, kept, size, 0));
        std::memset(pointer.block, byte_, usable);
    }

    void Drop(std::uint32_t number) {
        Handle& handle = handles_[number % handles_.size()];
        EXPECT_EQ(RelocFree(handle.slot), 1) << "locked or not";
        handle = handles_.back();
        handles_.pop_back();
        Pointer& pointer = pointers_[number % pointers_.size()];
        EXPECT_EQ(PoolFree(pointer.block), 1);
        pointer = pointers_.back();
        pointers_.pop_back();
    }

    HeapPool* pool_;
    Random random_;
    char byte_;
    std::vector<Handle> handles_;
    std::vector<Pointer> pointers_;
};

TEST(Workers, OneAlone) {
    for (const std::uint32_t fixedSize : {0U, 20U}) {
        const RaisedErrors errors;
        TestPool pool(fixedSize);
        Worker worker(pool, Random(Seed()), 'x');
        for (int i = 0; i < 3000 && !HasFailure(); ++i) {
            worker.Step();
            EXPECT_TRUE(Intact(pool));
        }
    }
}

TEST(Workers, InOnePoolAndInPoolsOfTheirOwn) {
    const RaisedErrors errors;
    TestPool pool(20, PoolSerialised);
    OnAllThreads([&pool](Random random, char byte) {
        Worker inCommon(pool, random, byte);
        for (int round = 0; round < 20; ++round) {
            TestPool own(round % 2 == 0 ? 20 : 0);
            Worker alone(own, random, byte);
            for (int i = 0; i < 200; ++i) inCommon.Step();
            for (int i = 0; i < 100; ++i) alone.Step();
        }
    });
}

TEST(Workers, OnHandlesInCommon) {
    constexpr char kByte = 0x33;
    const RaisedErrors errors;
    TestPool pool(20, PoolSerialised);
    std::vector<HandleSlot*> shared;
    for (std::uint32_t i = 0; i < 40; ++i) {
        const std::uint32_t size = i % 8 == 0 ? 9000 : 20 + 17 * i;
        shared.push_back(RelocAlloc(pool, AllocRelocatable, size));
        shared.back()->size = size;
        std::memset(shared.back()->block, kByte, size);
    }
    OnAllThreads([&](Random random, char) {
        for (int i = 0; i < 10000; ++i) {
            HandleSlot* slot = shared[random.Below(shared.size())];
            const std::uint32_t size = slot->size;
            EXPECT_GE(RelocSize(slot), size) << "a live handle is never invalid";
            EXPECT_NE(RelocLockCount(slot), kNoCount);
            switch (random.Below(8)) {
                case 0:
                    // Never below `size`, and in place if anybody has the block locked.
                    RelocResize(slot, size + random.Below(70000), 0);
                    break;
                case 1:
                    if (RelocFix(slot) != nullptr) RelocUnfix(slot);
                    break;
                case 2:
                    if (random.Below(10) == 0) PoolCompact(pool);
                    break;
                default:
                    if (const char* block = RelocLock(slot); block != nullptr) {
                        EXPECT_TRUE(AllAre(block, 0, size, kByte));
                        RelocUnlock(slot);
                    }
            }
        }
    });
    for (HandleSlot* slot : shared) {
        EXPECT_EQ(RelocLockCount(slot), 0U);
        EXPECT_TRUE(AllAre(slot->block, 0, slot->size, kByte));
    }
}

}  // namespace
