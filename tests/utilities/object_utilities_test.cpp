#include <gtest/gtest.h>
#include <veldt20/utilities_objects.h>

#include <cstdint>
#include <limits>
#include <utility>

namespace {

int endings = 0;

struct Shared : XRCObject {
    ~Shared() override { ++endings; }
};

TEST(RCObject, TheLastOwnerEndsIt) {
    endings = 0;
    auto* object = new Shared;
    object->RemoveReference();
    EXPECT_EQ(endings, 0);
    for (const int shared : {0, 0, 1}) {
        object->AddReference();
        EXPECT_EQ(object->IsShared(), shared);
    }
    object->MarkUnshareable();
    object->RemoveReference();
    EXPECT_EQ(object->IsShared(), 0);
    EXPECT_EQ(endings, 0);
    object->RemoveReference();
    EXPECT_EQ(endings, 1);
}

TEST(RCObject, CopiesShareNeitherOwnersNorMark) {
    Shared object;
    object.AddReference();
    object.AddReference();
    object.MarkUnshareable();
    Shared copy(object), assigned;
    assigned = object;
    object = Shared();
    for (const Shared* other : {&copy, &assigned}) {
        EXPECT_EQ(other->IsShared(), 0);
        EXPECT_EQ(other->IsShareable(), 1);
    }
    EXPECT_EQ(object.IsShared(), 1);
    EXPECT_EQ(object.IsShareable(), 0);
}

TEST(Counter, GivesTheNewValue) {
    XCounter counter;
    EXPECT_EQ(counter.Decrement(), -1);
    EXPECT_EQ(counter.Increment(), 0);
    EXPECT_EQ(counter.Increment(), 1);
}

int made = 0;
int thing = 0;

void* MakeThing() {
    return ++made, &thing;
}

void* MakeNothing() {
    return ++made, nullptr;
}

TEST(RTObject, IsFilledOnce) {
    made = 0;
    XRTObject slot;
    EXPECT_EQ(slot.GetDataNA(), nullptr);
    EXPECT_EQ(slot.GetData(MakeNothing), nullptr);
    EXPECT_EQ(slot.GetData(MakeThing), &thing);
    EXPECT_EQ(slot.GetData(MakeNothing), &thing);
    EXPECT_EQ(slot.GetDataNA(), &thing);
    int other = 0;
    slot.SetData(&other);
    EXPECT_EQ(slot.GetData(MakeThing), &other);
    EXPECT_EQ(made, 2);
    slot.SetData(nullptr);
    EXPECT_EQ(slot.GetDataNA(), nullptr);
}

TEST(IDSet, GivesTheLowestFreeOne) {
    constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();
    for (const std::int32_t base : {100, -5, 0, kLeast}) {
        XIDSet set(base);
        std::int32_t id = 0;
        for (int i = 0; i < 32; ++i) {
            ASSERT_EQ(set.GetNextID(id), 1);
            ASSERT_EQ(id, base + i);
        }
        EXPECT_EQ(set.GetNextID(id), 0);
        EXPECT_EQ(id, base + 31);
        // A distance of 32 times anything names the same one.
        for (const auto& [released, next] : {std::pair{31, 31}, {3 + 32, 3}, {7 + 32768, 7}}) {
            set.ReleaseID(base + released);
            EXPECT_EQ(set.GetNextID(id), 1);
            EXPECT_EQ(id, base + next);
        }
        set.ReleaseID(base + 9);
        set.ReleaseID(base + 5);
        EXPECT_EQ(set.GetNextID(id), 1);
        EXPECT_EQ(id, base + 5);
    }
    XIDSet last(std::numeric_limits<std::int32_t>::max());
    std::int32_t id = 0;
    last.GetNextID(id);
    EXPECT_EQ(last.GetNextID(id), 1);
    EXPECT_EQ(id, kLeast);
}

struct IdSet : XIDSet {
    using XIDSet::ClearIDUsed;
    using XIDSet::IsIDUsed;
    using XIDSet::SetIDUsed;
    using XIDSet::XIDSet;
};

TEST(IDSet, BitsByIndex) {
    IdSet set(100);
    set.SetIDUsed(3);
    set.SetIDUsed(31 + 64);
    EXPECT_EQ(set.IsIDUsed(3 + 32), 8);
    EXPECT_EQ(set.IsIDUsed(31), std::numeric_limits<int>::min());
    EXPECT_EQ(set.IsIDUsed(4), 0);
    set.ClearIDUsed(3 + 128);
    EXPECT_EQ(set.IsIDUsed(3), 0);
}

}  // namespace
