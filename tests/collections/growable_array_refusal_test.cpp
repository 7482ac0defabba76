#include "collections/ints.h"
#include "platform/platform.h"
#include "platform/posix/faults.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;
using veldt::platform::GlobalSize;
using veldt::platform::faults::FailGlobalAlloc;
using veldt::platform::faults::kNever;

// No step asks for memory more than once, so this is every n-th request of any run.
TEST(GrowableArrayRefusal, AnyRequestAfterTheFirst) {
    std::mt19937 random(Seed());
    void* block;
    {
        FailGlobalAlloc(2);
        Ints array(4, 4);
        EXPECT_EQ(array.Initialize(), 1);
        EXPECT_EQ(array.Look().capacity, 0);
        block = array.Look().block;
        Values model;
        for (int step = 0; step < 5000 && !HasFailure(); ++step) {
            const bool refuse = random() % 2 == 0;
            FailGlobalAlloc(refuse ? 1 : kNever);
            TakeStep(array, model, random, refuse);
        }
        FailGlobalAlloc(kNever);
    }
    EXPECT_EQ(GlobalSize(block), 0u);
}

TEST(GrowableArrayRefusal, WithoutABlockNothingGoesInAndNothingBreaks) {
    FailGlobalAlloc(1);
    Ints array(4, 4);
    const int value = 7;
    EXPECT_EQ(array.Initialize(), 0);
    EXPECT_EQ(array.Append(&value), 0);
    EXPECT_EQ(array.InsertBlockElements(0, 3), 0);
    EXPECT_EQ(array.Lock(), nullptr);
    array.Unlock();
    array.DeleteAll();
    EXPECT_EQ(array.Look().capacity, 0);
}

TEST(GrowableArrayRefusal, WhatFitsAsksForNothing) {
    Ints array(0, 4);
    array.Fill(4);
    FailGlobalAlloc(1, true);
    const int value = 7;
    EXPECT_EQ(array.Delete(3), 1);
    EXPECT_EQ(array.Append(&value), 1);
    FailGlobalAlloc(kNever);
}

}  // namespace
