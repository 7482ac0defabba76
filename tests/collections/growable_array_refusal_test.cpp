#include <functional>

#include "collections/ints.h"
#include "platform/platform.h"
#include "platform/posix/faults.h"

namespace {

using namespace veldt::tests;
using veldt::platform::GlobalSize;
using veldt::platform::faults::FailGlobalAlloc;
using veldt::platform::faults::kNever;

struct Step {
    std::function<int(Ints&)> take;
    Values expected;
    bool removes = false;
};

const int k7 = 7;

// Every step resizes the block.
const Step kSteps[] = {
    {[](Ints& a) { return a.Append(&k7); }, {7}},
    {[](Ints& a) { return a.InsertBlockElements(0, 2); }, {0, 0, 7}},
    {[](Ints& a) { return a.InsertBlockElements(1, 3); }, {0, 0, 0, 0, 0, 7}},
    {[](Ints& a) { return a.Insert(&k7, 6); }, {0, 0, 0, 0, 0, 7, 7}},
    {[](Ints& a) { return a.Delete(0, 2); }, {0, 0, 7, 7}, true},
    {[](Ints& a) { return a.Remove(3), a.Remove(0), 1; }, {0, 7}, true},
    {[](Ints& a) { return a.SetCapacity(9); }, {0, 7}},
    {[](Ints& a) { return a.DeleteAll(), 1; }, {}, true},
};

// A refused addition changes nothing and works the next time; what goes is gone in any case.
bool TakeStep(Ints& array, const Step& step) {
    const Fields before = array.Look();
    const Values contents = array.Contents();
    if (step.take(array) == 1) {
        EXPECT_EQ(array.Contents(), step.expected);
        return false;
    }
    if (step.removes) {
        EXPECT_EQ(array.Look().capacity, before.capacity);
    } else {
        EXPECT_EQ(array.Look(), before);
        EXPECT_EQ(array.Contents(), contents);
        EXPECT_EQ(step.take(array), 1);
    }
    EXPECT_EQ(array.Contents(), step.expected);
    return true;
}

TEST(GrowableArrayRefusal, AtEveryRequest) {
    int refusals = 0;
    for (int nth = 2; !HasFailure(); ++nth) {
        void* block;
        bool refused;
        {
            FailGlobalAlloc(static_cast<std::uint64_t>(nth));
            Ints array(1, 2);
            ASSERT_EQ(array.Initialize(), 1);
            refused = array.Look().capacity == 0;
            array.SetIncrementSize(1);
            for (const Step& step : kSteps) {
                refused |= TakeStep(array, step);
            }
            block = array.Look().block;
        }
        EXPECT_EQ(GlobalSize(block), 0u);
        if (!refused && nth > 12) {
            break;
        }
        refusals += refused;
    }
    FailGlobalAlloc(kNever);
    EXPECT_GE(refusals, 6);
}

TEST(GrowableArrayRefusal, WithoutABlockNothingGoesInAndNothingBreaks) {
    FailGlobalAlloc(1);
    Ints array(4, 4);
    EXPECT_EQ(array.Initialize(), 0);
    EXPECT_EQ(array.Look().capacity, 0);
    EXPECT_EQ(array.Append(&k7), 0);
    EXPECT_EQ(array.InsertBlockElements(0, 3), 0);
    EXPECT_EQ(array.Lock(), nullptr);
    array.Unlock();
    array.DeleteAll();
    EXPECT_EQ(array.IsEmpty(), 1);
}

TEST(GrowableArrayRefusal, WhatFitsAsksForNothing) {
    Ints array(0, 4);
    array.Fill(4);
    FailGlobalAlloc(1, true);
    EXPECT_EQ(array.Delete(3), 1);
    EXPECT_EQ(array.Append(&k7), 1);
    EXPECT_EQ(array.SetCapacity(4), 1);
    FailGlobalAlloc(kNever);
}

}  // namespace
