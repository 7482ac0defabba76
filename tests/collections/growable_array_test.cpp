#include <veldt20/memory.h>

#include <new>

#include "collections/ints.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

TEST(GrowableArray, RandomRunsAgainstAVector) {
    std::mt19937 random(Seed());
    for (const int initialSize : {-1, 0, 3}) {
        ArrayRun run(initialSize, 4);
        ASSERT_EQ(run.array.Initialize(), 1);
        ASSERT_EQ(run.array.Look().capacity, std::max(initialSize, 0));
        for (int step = 0; step < 10000 && !HasFailure(); ++step) {
            run.Step(random);
            const Fields fields = run.array.Look();
            ASSERT_GE(XGlobalSize(fields.block),
                      sizeof(int) * static_cast<unsigned>(fields.capacity));
        }
    }
}

TEST(GrowableArray, RoomBeyondCountingIsRefused) {
    Ints array(0, 1, 0x10000);
    array.Fill(3);
    const Fields before = array.Look();
    EXPECT_EQ(array.SetCapacity(0x8000), 0);
    EXPECT_EQ(array.InsertBlockElements(0, 0x7FFFFFFD), 0);
    EXPECT_EQ(array.Look(), before);
    // The element goes all the same; the room that the policy wants for the rest can't be had.
    array.SetIncrementSize(0x7FFFFFFE);
    EXPECT_EQ(array.InsertBlockElements(0, 0x7FFFFFFC), 0);
    EXPECT_EQ(array.Delete(0), 0);
    EXPECT_EQ(array.Contents(), (Values{1, 2}));
}

TEST(GrowableArray, CopiesShareTheBlockEvenOfElementsWithoutSize) {
    Ints array(0, 2, 0);
    EXPECT_EQ(array.SetCapacity(5), 1);
    // Never destroyed: only one of the two may free the block.
    alignas(Ints) unsigned char memory[sizeof(Ints)];
    const auto* copy = new (memory) Ints(array);
    EXPECT_EQ(copy->Look(), array.Look());
    EXPECT_NE(copy->Lock(), nullptr);
    copy->Unlock();
}

struct Walk {
    int start;
    Values steps;  // where to go after the first, the second, ... visit
    int stopAt, found;
    Values expected, seen = {};
};

int Visit(std::int32_t index, std::int32_t& next, void* data, void*) {
    auto& walk = *static_cast<Walk*>(data);
    EXPECT_EQ(next, index + 1);
    if (walk.seen.size() < walk.steps.size()) next = walk.steps[walk.seen.size()];
    walk.seen.push_back(index);
    return index == walk.stopAt;
}

int VisitOthers(std::int32_t index, std::int32_t& next, void* data, void* array) {
    return !Visit(index, next, data, array);
}

int DeleteEachOther(std::int32_t index, std::int32_t& next, void*, void* array) {
    static_cast<XDynArrayImp*>(array)->Delete(index);
    next = index + 1;
    return 1;
}

TEST(GrowableArray, WalksGoWhereTheyAreSent) {
    Ints array(0, 4);
    array.Fill(5);
    for (const Walk& walk : {Walk{-1, {}, 0, -1, {}},
                             {0, {3, 1, 4}, -1, -1, {0, 3, 1, 4}},
                             {1, {-1}, -1, -1, {1}},
                             {4, {4, 2}, 2, 2, {4, 4, 2}}}) {
        Walk finding = walk, doing = walk;
        EXPECT_EQ(array.Find(Visit, walk.start, &finding), walk.found);
        EXPECT_EQ(finding.seen, walk.expected);
        EXPECT_EQ(array.ForEachDo(VisitOthers, walk.start, &doing), walk.found == -1 ? 1 : 0);
        EXPECT_EQ(doing.seen, walk.expected);
    }
    EXPECT_EQ(array.ForEachDo(DeleteEachOther, 0, nullptr), 1);
    EXPECT_EQ(array.Contents(), (Values{1, 3}));
}

}  // namespace
