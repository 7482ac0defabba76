#include <gtest/gtest.h>
#include <veldt20/object_utilities.h>

#include <cstdint>
#include <limits>

namespace {

struct Shared : XRCObject {
    explicit Shared(int& counter) : endings(counter) {}
    Shared(const Shared&) = default;
    Shared& operator=(const Shared& other) {
        XRCObject::operator=(other);
        return *this;
    }
    ~Shared() override { ++endings; }

    int& endings;
};

TEST(RCObject, TheLastOwnerEndsIt) {
    int endings = 0;
    auto* object = new Shared(endings);
    EXPECT_EQ(object->IsShared(), 0);
    object->AddReference();
    EXPECT_EQ(object->IsShared(), 0);
    object->AddReference();
    EXPECT_EQ(object->IsShared(), 1);
    object->MarkUnshareable();
    object->RemoveReference();
    EXPECT_EQ(object->IsShared(), 0);
    EXPECT_EQ(endings, 0);
    object->RemoveReference();
    EXPECT_EQ(endings, 1);
}

TEST(RCObject, WithoutOwnersItOutlivesARemoval) {
    int endings = 0;
    Shared object(endings);
    object.RemoveReference();
    EXPECT_EQ(endings, 0);
    object.AddReference();
    object.AddReference();
    EXPECT_EQ(object.IsShared(), 0);
    object.AddReference();
    EXPECT_EQ(object.IsShared(), 1);
}

TEST(RCObject, CopiesShareNeitherOwnersNorMark) {
    int endings = 0;
    Shared object(endings);
    object.AddReference();
    object.AddReference();
    object.MarkUnshareable();
    Shared copy(object);
    EXPECT_EQ(copy.IsShared(), 0);
    EXPECT_EQ(copy.IsShareable(), 1);
    copy = object;
    EXPECT_EQ(copy.IsShared(), 0);
    EXPECT_EQ(copy.IsShareable(), 1);
    object = copy;
    EXPECT_EQ(object.IsShared(), 1);
    EXPECT_EQ(object.IsShareable(), 0);
}

TEST(Counter, GivesTheNewValue) {
    XCounter counter;
    EXPECT_EQ(counter.Decrement(), -1);
    EXPECT_EQ(counter.Increment(), 0);
    EXPECT_EQ(counter.Increment(), 1);
    XCounter copy;
    copy = counter;
    EXPECT_EQ(copy.Increment(), 2);
    EXPECT_EQ(counter.Decrement(), 0);
}

int made = 0;
int thing = 0;

void* MakeThing() {
    ++made;
    return &thing;
}

void* MakeNothing() {
    ++made;
    return nullptr;
}

TEST(RTObject, IsFilledOnce) {
    made = 0;
    XRTObject slot;
    EXPECT_EQ(slot.GetDataNA(), nullptr);
    EXPECT_EQ(slot.GetData(MakeNothing), nullptr);
    EXPECT_EQ(slot.GetData(MakeThing), &thing);
    EXPECT_EQ(slot.GetData(MakeNothing), &thing);
    EXPECT_EQ(made, 2);
    EXPECT_EQ(slot.GetDataNA(), &thing);

    int other = 0;
    slot.SetData(&other);
    EXPECT_EQ(slot.GetData(MakeThing), &other);
    slot.SetData(nullptr);
    EXPECT_EQ(slot.GetDataNA(), nullptr);
    EXPECT_EQ(made, 2);
    XRTObject copy;
    slot.SetData(&other);
    copy = slot;
    EXPECT_EQ(copy.GetDataNA(), &other);
}

struct IdSet : XIDSet {
    using XIDSet::ClearIDUsed;
    using XIDSet::IsIDUsed;
    using XIDSet::SetIDUsed;
    using XIDSet::XIDSet;
};

TEST(IDSet, GivesTheLowestFreeOne) {
    for (const std::int32_t base : {100, -5, 0, std::numeric_limits<std::int32_t>::min()}) {
        SCOPED_TRACE(base);
        XIDSet set(base);
        std::int32_t id = 0;
        for (int i = 0; i < 32; ++i) {
            ASSERT_EQ(set.GetNextID(id), 1);
            ASSERT_EQ(id, base + i);
        }
        id = 77;
        EXPECT_EQ(set.GetNextID(id), 0);
        EXPECT_EQ(id, 77);
        set.ReleaseID(base + 31);
        set.ReleaseID(base + 3);
        EXPECT_EQ(set.GetNextID(id), 1);
        EXPECT_EQ(id, base + 3);
        EXPECT_EQ(set.GetNextID(id), 1);
        EXPECT_EQ(id, base + 31);
    }
}

TEST(IDSet, ReleaseTakesTheDistanceModulo32) {
    XIDSet set(100);
    std::int32_t id = 0;
    for (const std::int32_t outside : {100 + 32, 100 - 32, 100 + 256 * 1024}) {
        set.GetNextID(id);
        set.ReleaseID(outside);
        EXPECT_EQ(set.GetNextID(id), 1);
        EXPECT_EQ(id, 100);
        set.ReleaseID(100);
    }
    XIDSet last(std::numeric_limits<std::int32_t>::max());
    last.GetNextID(id);
    EXPECT_EQ(last.GetNextID(id), 1);
    EXPECT_EQ(id, std::numeric_limits<std::int32_t>::min());
    last.ReleaseID(id);
    EXPECT_EQ(last.GetNextID(id), 1);
    EXPECT_EQ(id, std::numeric_limits<std::int32_t>::min());
}

TEST(IDSet, BitsByIndex) {
    IdSet set(100);
    set.SetIDUsed(3);
    set.SetIDUsed(31 + 64);
    EXPECT_EQ(set.IsIDUsed(3), 8);
    EXPECT_EQ(set.IsIDUsed(3 + 32), 8);
    EXPECT_EQ(set.IsIDUsed(31), std::numeric_limits<int>::min());
    EXPECT_EQ(set.IsIDUsed(4), 0);
    IdSet copy(7);
    copy = set;
    set.ClearIDUsed(3 + 128);
    EXPECT_EQ(set.IsIDUsed(3), 0);
    EXPECT_EQ(copy.IsIDUsed(3), 8);
    std::int32_t id = 0;
    copy.GetNextID(id);
    EXPECT_EQ(id, 100);
}

}  // namespace
