#include <gtest/gtest.h>
#include <veldt20/collections.h>
#include <veldt20/memory.h>

#include <cstring>
#include <random>
#include <vector>

#include "support/seed.h"

namespace {

using Values = std::vector<std::uint32_t>;

class HandleArray : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(XMemInitInstance(), 1); }
    void TearDown() override { XMemExitInstance(); }
};

/// Records of 4 bytes, whose room the handle's size tells.
struct Numbers : XHandleArray {
    explicit Numbers(int slack) : XHandleArray(slack, 4) {}

    std::uint32_t* At(std::int32_t index) const {
        return reinterpret_cast<std::uint32_t*>(GetArrayPtr()) + index;
    }
    std::int32_t Capacity() const { return XGetHandleSize(GetArrayHandle()) / 4; }
    Values Contents() const { return Values(At(0), At(GetNumElements())); }
};

TEST_F(HandleArray, RoomFollowsTheNeedWithASlack) {
    Numbers array(10);
    ASSERT_EQ(array.IHandleArray(), 1);
    EXPECT_EQ(array.Capacity(), 0);
    const struct {
        std::int32_t grow, count, capacity;
    } steps[] = {{1, 1, 11},    {10, 11, 11}, {1, 12, 22},  {11, 23, 33},
                 {-13, 10, 20}, {1, 11, 20},  {-1, 10, 20}, {0, 10, 20}};
    for (const auto& step : steps) {
        ASSERT_EQ(array.Grow(step.grow), 1);
        EXPECT_EQ(array.GetNumElements(), step.count);
        EXPECT_EQ(array.Capacity(), step.capacity);
    }
    array.DeleteAll();
    EXPECT_EQ(array.GetNumElements(), 0);
    EXPECT_EQ(array.Capacity(), 10);

    ASSERT_EQ(array.Preflight(100), 1);
    EXPECT_EQ(array.Preflight(-1), 1);
    EXPECT_EQ(array.GetNumElements(), 0);
    const char* const block = array.Lock();
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(array.Grow(1), 1);
    }
    EXPECT_EQ(array.GetArrayPtr(), block);
    EXPECT_EQ(array.Capacity(), 110);
}

TEST_F(HandleArray, OnlyTheOutermostPairOfLocksReachesTheHandle) {
    Numbers array(0);
    array.Grow(5);
    char** const h = array.GetArrayHandle();
    EXPECT_EQ(array.Lock(), array.GetArrayPtr());
    EXPECT_EQ(array.Lock(), array.GetArrayPtr());
    EXPECT_EQ(XHGetState(h), 1);
    array.Unlock();
    EXPECT_EQ(XHGetState(h), 1);
    array.Unlock();
    EXPECT_EQ(XHGetState(h), 0);
    array.Lock();  // and disposed so
}

TEST_F(HandleArray, SizesBeyondAllMemoryChangeNothing) {
    XHandleArray array(1, 1 << 30);
    EXPECT_EQ(array.Grow(3), 0);
    EXPECT_EQ(XMemError(), kMemFull);
    EXPECT_EQ(array.Grow(INT32_MAX), 0);
    EXPECT_EQ(array.Preflight(INT32_MAX), 0);
    EXPECT_EQ(XMemError(), kMemFull);
    EXPECT_EQ(array.GetNumElements(), 0);
    EXPECT_EQ(XGetHandleSize(array.GetArrayHandle()), 0);
}

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
            kind == 2 ? XMemCompactHeap() : kind == 3 ? array_.Unlock() : (void)array_.Lock();
        } else if (kind < 16) {
            const std::int32_t removed = Below(index + 1);
            ASSERT_EQ(array_.Shift(index, -removed), 1);
            Remove(index - removed, removed);
        } else {
            ASSERT_EQ(array_.Shift(index, count), 1);
            Need(std::ssize(model_) + count);
            for (std::int32_t i = index; i < index + count; ++i) {
                *array_.At(i) = static_cast<std::uint32_t>(random_());
                model_.insert(model_.begin() + i, *array_.At(i));
            }
        }
        ASSERT_EQ(array_.Contents(), model_);
        ASSERT_EQ(array_.Capacity(), capacity_);
    }

  private:
    std::int32_t Below(std::ptrdiff_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<std::size_t>(limit));
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
}

}  // namespace
