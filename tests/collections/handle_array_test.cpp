#include <veldt20/collections.h>

#include <random>
#include <vector>

#include "memory/handles.h"
#include "support/seed.h"

namespace {

using Values = std::vector<std::uint32_t>;

class HandleArray : public veldt::tests::WithInstance {};

/// Records of 4 bytes, whose room the handle's size tells.
struct Numbers : XHandleArray {
    explicit Numbers(int slack) : XHandleArray(slack, 4) {}

    std::uint32_t* First() const { return reinterpret_cast<std::uint32_t*>(GetArrayPtr()); }
};

TEST_F(HandleArray, SizesBeyondAllMemoryChangeNothing) {
    XHandleArray array(1, 1 << 30);
    ASSERT_EQ(array.IHandleArray(), 1);
    for (const std::int32_t count : {3, INT32_MAX}) {
        char* const block = _XNewPtr(1);  // the register says now that all is well
        EXPECT_EQ(array.Grow(count) + array.Preflight(count), 0);
        EXPECT_EQ(XMemError(), kMemFull);
        XDisposePtr(block);
    }
    EXPECT_EQ(array.Preflight(-1), 1);
    EXPECT_EQ(array.GetNumElements(), 0);
    EXPECT_EQ(XGetHandleSize(array.GetArrayHandle()), 0);
}

/// An array beside what it must hold, and the room that its slack gives it.
class RandomRun {
  public:
    RandomRun(std::mt19937& random, int slack) : random_(random), slack_(slack), array_(slack) {}

    void Step() {
        const std::int32_t kind = Below(40);
        const std::int32_t count = Below(30);
        const std::int32_t index = Below(std::ssize(model_) + 1);
        if (kind == 0) {
            array_.DeleteAll();
            Remove(0, std::ssize(model_));
        } else if (kind == 1) {
            ASSERT_EQ(array_.Preflight(count), 1);
            Need(std::ssize(model_) + count);
        } else if (kind < 6) {
            kind == 2 ? XMemCompactHeap() : ToggleLock(kind % 2 == 0);
        } else if (kind < 16) {
            const std::int32_t removed = Below(index + 1);
            ASSERT_EQ(array_.Shift(index, -removed), 1);
            Remove(index - removed, removed);
        } else {
            ASSERT_EQ(index == std::ssize(model_) ? array_.Grow(count) : array_.Shift(index, count),
                      1);
            Need(std::ssize(model_) + count);
            std::uint32_t* const added = array_.First() + index;
            std::generate_n(added, count, std::ref(random_));
            model_.insert(model_.begin() + index, added, added + count);
        }
        ASSERT_EQ(Values(array_.First(), array_.First() + array_.GetNumElements()), model_);
        ASSERT_EQ(XGetHandleSize(array_.GetArrayHandle()), capacity_ * 4);
        ASSERT_EQ(XHGetState(array_.GetArrayHandle()), locks_ > 0 ? 1 : 0);
    }

  private:
    std::int32_t Below(std::ptrdiff_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<std::size_t>(limit));
    }
    // Only the outermost pair of locks reaches the handle.
    void ToggleLock(bool lock) {
        if (lock) {
            ASSERT_EQ(array_.Lock(), array_.GetArrayPtr());
            ++locks_;
        } else if (locks_ > 0) {
            array_.Unlock();
            --locks_;
        }
    }
    void Need(std::ptrdiff_t records) {
        if (records > capacity_) capacity_ = records + slack_;
    }
    void Remove(std::ptrdiff_t from, std::ptrdiff_t count) {
        if (count == 0) return;
        model_.erase(model_.begin() + from, model_.begin() + from + count);
        if (capacity_ - std::ssize(model_) > slack_) capacity_ = std::ssize(model_) + slack_;
    }

    std::mt19937& random_;
    int slack_;
    Numbers array_;
    Values model_;
    std::ptrdiff_t capacity_ = 0;
    int locks_ = 0;
};

TEST_F(HandleArray, RandomRunsAgainstAVector) {
    std::mt19937 random(veldt::tests::Seed());
    for (const int slack : {0, 1, 10, 200}) {
        RandomRun run(random, slack);
        RandomRun neighbour(random, slack);
        for (int step = 0; step < 3000 && !HasFatalFailure(); ++step) {
            run.Step();
            neighbour.Step();
        }
    }
    EXPECT_EQ(veldt::tests::LiveHandles(), 0u);
}

}  // namespace
