#include <new>

#include "collections/ints.h"
#include "platform/platform.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

TEST(GrowableArray, CapacityGoesInStepsOfTheIncrement) {
    struct {
        int initialSize, increment, count, capacity;
    } const cases[] = {{4, 8, 0, 4},    {4, 8, 4, 4},    {4, 8, 5, 8},    {4, 8, 9, 16},
                       {0, 10, 1, 10},  {0, 10, 10, 10}, {0, 10, 11, 20}, {20, 8, 20, 20},
                       {20, 8, 21, 24}, {0, 0, 3, 3},    {-1, 5, 0, 0}};
    for (const auto& c : cases) {
        Ints array(c.initialSize, c.increment);
        EXPECT_EQ(array.Initialize(), 1);
        array.Fill(c.count);
        const Fields full = array.Look();
        EXPECT_EQ(full, (Fields{full.operations, c.initialSize, c.increment, 4, c.count, c.capacity,
                                full.block}));
        array.Compact();
        EXPECT_EQ(array.Look(), full);
        array.RemoveAll();
        EXPECT_EQ(array.Look().capacity, c.capacity);
        EXPECT_EQ(array.IsEmpty(), 1);
        EXPECT_TRUE(array.destroyed.empty());
        array.Fill(1);
        EXPECT_EQ(array.Delete(0), 1);
        EXPECT_EQ(array.Look().capacity, std::max(c.initialSize, 0));
    }
}

TEST(GrowableArray, DeletesFromTheLastDownAndRefits) {
    Ints array(2, 4);
    array.Fill(11);
    EXPECT_EQ(array.Delete(2, 4), 1);
    EXPECT_EQ(array.Contents(), (Values{0, 1, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(array.Look().capacity, 8);
    array.Remove(0);
    array.DeleteAll();
    array.DeleteAll();
    EXPECT_EQ(array.destroyed, (Values{4, 3, 2, 10, 9, 8, 7, 6, 5, 1}));
    EXPECT_EQ(array.Look().capacity, 2);
}

TEST(GrowableArray, RoomBeyondCountingIsRefused) {
    Ints array(0, 1, 0x10000);
    array.Fill(1);
    const Fields before = array.Look();
    EXPECT_EQ(array.SetCapacity(0x8000), 0);
    EXPECT_EQ(array.InsertBlockElements(0, 0x7FFFFFFF), 0);
    EXPECT_EQ(array.InsertBlockElements(0, 0x8000), 0);
    EXPECT_EQ(array.Look(), before);
    array.SetIncrementSize(0x7FFFFFFE);
    EXPECT_EQ(array.InsertBlockElements(0, 0x7FFFFFFE), 0);
    // The element goes all the same; the room that the policy wants for the rest can't be had.
    array.SetIncrementSize(1);
    array.Fill(2);
    array.SetIncrementSize(0x7FFFFFFF);
    EXPECT_EQ(array.Delete(0), 0);
    EXPECT_EQ(array.Contents(), (Values{0, 1}));
}

TEST(GrowableArray, CopiesShareTheBlockEvenOfElementsWithoutSize) {
    Ints array(0, 2, 0);
    EXPECT_EQ(array.SetCapacity(5), 1);
    EXPECT_EQ(array.Look().capacity, 5);
    // Never destroyed: only one of the two may free the block.
    alignas(Ints) unsigned char memory[sizeof(Ints)];
    const auto* copy = new (memory) Ints(array);
    EXPECT_EQ(copy->Look(), array.Look());
    EXPECT_NE(copy->Lock(), nullptr);
    copy->Unlock();
}

struct Walk {
    Values steps;  // where to go after the first, the second, ... visit
    int stopAt;
    Values seen = {};
};

int Visit(std::int32_t index, std::int32_t& next, void* data, void*) {
    auto& walk = *static_cast<Walk*>(data);
    EXPECT_EQ(next, index + 1);
    if (walk.seen.size() < walk.steps.size()) {
        next = walk.steps[walk.seen.size()];
    }
    walk.seen.push_back(index);
    return index == walk.stopAt;
}

int VisitOthers(std::int32_t index, std::int32_t& next, void* data, void* array) {
    return !Visit(index, next, data, array);
}

TEST(GrowableArray, WalksGoWhereTheyAreSent) {
    Ints array(0, 4);
    array.Fill(5);
    struct {
        int start;
        Walk walk;
        int found;
        Values seen;
    } const cases[] = {{0, {{}, -1}, -1, {0, 1, 2, 3, 4}},
                       {2, {{}, 3}, 3, {2, 3}},
                       {-1, {{}, 0}, -1, {}},
                       {5, {{}, 0}, -1, {}},
                       {0, {{3, 1, 4}, -1}, -1, {0, 3, 1, 4}},
                       {1, {{-1}, -1}, -1, {1}},
                       {1, {{0x7FFFFFFF}, -1}, -1, {1}},
                       {4, {{4, 2}, 2}, 2, {4, 4, 2}}};
    for (const auto& c : cases) {
        Walk walk = c.walk;
        EXPECT_EQ(array.Find(Visit, c.start, &walk), c.found);
        EXPECT_EQ(walk.seen, c.seen);
        walk = c.walk;
        EXPECT_EQ(array.ForEachDo(VisitOthers, c.start, &walk), c.found == -1 ? 1 : 0);
        EXPECT_EQ(walk.seen, c.seen);
    }
}

int DeleteEachOther(std::int32_t index, std::int32_t& next, void*, void* array) {
    static_cast<XDynArrayImp*>(array)->Delete(index);
    next = index + 1;
    return 1;
}

TEST(GrowableArray, AWalkMayDeleteWhereItStands) {
    Ints array(0, 2);
    array.Fill(7);
    EXPECT_EQ(array.ForEachDo(DeleteEachOther, 0, nullptr), 1);
    EXPECT_EQ(array.Contents(), (Values{1, 3, 5}));
}

TEST(GrowableArray, RandomRunAgainstAVector) {
    std::mt19937 random(Seed());
    Ints array(3, 4);
    Values model;
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        TakeStep(array, model, random, false);
        const Fields fields = array.Look();
        ASSERT_LE(fields.count, fields.capacity);
        ASSERT_GE(veldt::platform::GlobalSize(fields.block),
                  sizeof(int) * static_cast<std::size_t>(fields.capacity));
    }
}

}  // namespace
