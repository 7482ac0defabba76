// Arrays and lists while memory runs out.
#include <gtest/gtest.h>
#include <veldt20/collections.h>
#include <veldt20/memory.h>

#include <algorithm>

#include "collections/ints.h"
#include "platform/posix/faults.h"
#include "support/refusing_new.h"
#include "support/seed.h"

namespace veldt::tests {

namespace {

using namespace platform::faults;

struct PointerList : XSinglePtrList {
    using XSinglePtrList::SplitAfter;
};

constexpr std::ptrdiff_t kRecord = 500;

/// Lives through memory running out, whenever that is.
void UseHandleArray() {
    XHandleArray array(3, kRecord);
    if (array.IHandleArray() == 0) {
        EXPECT_EQ(XMemError(), kMemFull);
        return;
    }
    std::int32_t count = 0;
    for (int step = 0; step < 200; ++step) {
        if (array.Shift(count / 2, 1) == 1) {
            std::fill_n(array.GetArrayPtr() + count++ / 2 * kRecord, kRecord, 'a');
        } else {
            EXPECT_EQ(XMemError(), kMemFull);
        }
    }
    for (const std::int32_t rest : {count, count / 4, 0}) {
        EXPECT_EQ(array.Grow(rest - array.GetNumElements()), 1);
        const char* bytes = array.GetArrayPtr();
        EXPECT_EQ(std::count(bytes, bytes + rest * kRecord, 'a'), rest * kRecord);
    }
}

}  // namespace

// No step asks for memory more than once, so this is every n-th request of any run.
TEST(Refusals, OfAnyRequestAfterTheFirstLeaveAGrowableArrayAsItWas) {
    std::mt19937 random(Seed());
    void* block;
    {
        FailGlobalAlloc(2);
        ArrayRun run(4, 4);
        EXPECT_EQ(run.array.Initialize(), 1);
        EXPECT_EQ(run.array.Look().capacity, 0);
        block = run.array.Look().block;
        for (int step = 0; step < 5000 && !testing::Test::HasFailure(); ++step) {
            const bool refuse = random() % 2 == 0;
            FailGlobalAlloc(refuse ? 1 : kNever);
            run.Step(random, refuse);
        }
        FailGlobalAlloc(kNever);
    }
    EXPECT_EQ(XGlobalSize(block), 0u);
}

TEST(Refusals, OfTheFirstRequestLeaveAGrowableArrayWithoutABlock) {
    FailGlobalAlloc(1);
    Ints array(4, 4);
    const int value = 7;
    EXPECT_EQ(array.Initialize(), 0);
    EXPECT_EQ(array.Append(&value), 0);
    EXPECT_EQ(array.Lock(), nullptr);
    array.Unlock();
    array.DeleteAll();
    EXPECT_EQ(array.Look().capacity, 0);
}

TEST(Refusals, LeaveAHandleArrayAsItWas) {
    std::uint64_t n = 0, calls = 0;
    do {
        ASSERT_EQ(XMemInitInstance(), 1);
        const std::uint64_t before = CountAddressSpace().allocCalls;
        FailVirtualAlloc(++n, true);
        UseHandleArray();
        FailVirtualAlloc(kNever);
        calls = CountAddressSpace().allocCalls - before;
        XMemExitInstance();
    } while (calls >= n && !testing::Test::HasFailure());
    EXPECT_GT(n, 10u);
}

TEST(Refusals, AddNothingToAPointerListWhichLosesNoNode) {
    int value = 0;
    const long before = LiveBlocks();
    {
        PointerList list, rest;
        __XPOSITION* const head = list.AddHead(&value);
        for (int i = 0; i < 4; ++i) list.InsertAfter(head, &value);
        for (__XPOSITION* const position : {head, static_cast<__XPOSITION*>(nullptr)}) {
            const RefusedNew refusal(1);
            value += list.InsertAfter(position, &value) != nullptr;
        }
        EXPECT_EQ(value, 0);
        rest.AddHead(&value);
        list.SplitAfter(head, rest);
        rest.RemoveHead();
        EXPECT_EQ(list.GetCount() + rest.GetCount(), 4);
        EXPECT_EQ(LiveBlocks() - before, 4);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

}  // namespace veldt::tests
