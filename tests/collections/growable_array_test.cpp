#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <vector>

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
        EXPECT_EQ(full.capacity, c.capacity) << c.initialSize << ' ' << c.count;
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
    array.Fill(10);
    EXPECT_EQ(array.Delete(2, 4), 1);
    EXPECT_EQ(array.Contents(), (Values{0, 1, 5, 6, 7, 8, 9}));
    EXPECT_EQ(array.Look().capacity, 8);
    array.Remove(0);
    array.DeleteAll();
    array.DeleteAll();
    EXPECT_EQ(array.destroyed, (Values{4, 3, 2, 9, 8, 7, 6, 5, 1}));
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
    array.SetIncrementSize(1);
    array.Fill(2);
    array.SetIncrementSize(0x7FFFFFFF);
    int value = 1;
    EXPECT_EQ(array.Append(&value), 0);
    // The element goes all the same; the room that the policy wants can't be had.
    EXPECT_EQ(array.Delete(0), 0);
    EXPECT_EQ(array.Contents(), (Values{0, 1}));
}

TEST(GrowableArray, CopiesShareTheBlock) {
    Ints array(0, 4);
    array.Fill(3);
    // Never destroyed: only one of the two may free the block.
    alignas(Ints) unsigned char memory[sizeof(Ints)];
    EXPECT_EQ((new (memory) Ints(array))->Look(), array.Look());
}

TEST(GrowableArray, ElementsWithoutSizeHaveAnAddress) {
    Ints array(0, 2, 0);
    EXPECT_EQ(array.SetCapacity(5), 1);
    EXPECT_EQ(array.Look().capacity, 5);
    EXPECT_NE(array.Lock(), nullptr);
    array.Unlock();
}

struct Walk {
    Values seen;
    Values steps;  // where to go after the first, the second, ... visit
    int stopAt;
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
        Values steps;
        int stopAt;
        Values seen;
    } const cases[] = {
        {0, {}, -1, {0, 1, 2, 3, 4}},
        {2, {}, 3, {2, 3}},
        {-1, {}, 0, {}},
        {5, {}, 0, {}},
        {0, {3, 1, 4}, -1, {0, 3, 1, 4}},
        {1, {-1}, -1, {1}},
        {1, {0x7FFFFFFF}, -1, {1}},
        {4, {4, 2}, 2, {4, 4, 2}},
    };
    for (const auto& c : cases) {
        const bool stops = !c.seen.empty() && c.seen.back() == c.stopAt;
        Walk walk{{}, c.steps, c.stopAt};
        EXPECT_EQ(array.Find(Visit, c.start, &walk), stops ? c.stopAt : -1);
        EXPECT_EQ(walk.seen, c.seen);
        walk.seen.clear();
        EXPECT_EQ(array.ForEachDo(VisitOthers, c.start, &walk), stops ? 0 : 1);
        EXPECT_EQ(walk.seen, c.seen);
    }
}

int DeleteOdd(std::int32_t index, std::int32_t& next, void*, void* array) {
    auto* ints = static_cast<Ints*>(static_cast<XDynArrayImp*>(array));
    if (ints->Contents()[static_cast<std::size_t>(index)] % 2 != 0) {
        ints->Delete(index);
        next = index;
    }
    return 1;
}

TEST(GrowableArray, AWalkMayDeleteWhereItStands) {
    Ints array(0, 2);
    array.Fill(8);
    EXPECT_EQ(array.ForEachDo(DeleteOdd, 0, nullptr), 1);
    EXPECT_EQ(array.Contents(), (Values{0, 2, 4, 6}));
}

void AddSomewhere(Ints& array, Values& model, std::mt19937& random) {
    const auto place = model.begin() + random() % (model.size() + 1);
    const auto index = static_cast<std::int32_t>(place - model.begin());
    const int value = static_cast<int>(random() % 1000);
    if (value % 4 == 0) {
        const int count = static_cast<int>(random() % 6);
        ASSERT_EQ(array.InsertBlockElements(index, count), 1);
        model.insert(place, static_cast<std::size_t>(count), 0);
        return;
    }
    ASSERT_EQ(index == 0             ? array.Prepend(&value)
              : place == model.end() ? array.Append(&value)
                                     : array.Insert(&value, index),
              1);
    model.insert(place, value);
}

void ChangeSomewhere(Ints& array, Values& model, std::mt19937& random) {
    const auto place = model.begin() + random() % model.size();
    const auto index = static_cast<std::int32_t>(place - model.begin());
    const auto count = std::min<std::ptrdiff_t>(model.end() - place, 1 + random() % 4);
    const int value = static_cast<int>(random() % 1000);
    switch (random() % 4) {
        case 0:
            array.Replace(&value, index);
            ASSERT_EQ(array.assignedOver.back(), *place);
            *place = value;
            break;
        case 1:
            array.Remove(index);
            model.erase(place);
            break;
        case 2:
            ASSERT_EQ(array.Delete(index, index + static_cast<std::int32_t>(count) - 1), 1);
            model.erase(place, place + count);
            break;
        default:
            array.SetIncrementSize(static_cast<std::int32_t>(1 + random() % 9));
    }
}

TEST(GrowableArray, RandomRunAgainstAVector) {
    std::mt19937 random(Seed());
    Ints array(3, 4);
    Values model;
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        if (model.empty() || random() % 2 == 0) {
            AddSomewhere(array, model, random);
        } else {
            ChangeSomewhere(array, model, random);
        }
        const Fields fields = array.Look();
        ASSERT_EQ(array.Contents(), model);
        ASSERT_LE(fields.count, fields.capacity);
        ASSERT_GE(veldt::platform::GlobalSize(fields.block),
                  sizeof(int) * unsigned(fields.capacity));
        if (model.size() > 100) {
            array.RemoveAll();
            model.clear();
        }
    }
}

}  // namespace
