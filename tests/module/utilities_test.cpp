#include <gtest/gtest.h>
#include <veldt20/utilities.h>

#include <cstring>
#include <new>

namespace {

class Shared : public XRCObject {
  public:
    explicit Shared(int* ends) : ends_(ends) {}
    Shared(const Shared&) = default;
    Shared& operator=(const Shared&) = default;

  protected:
    ~Shared() override { ++*ends_; }

  private:
    int* ends_;
};

class OpenIDSet : public XIDSet {
  public:
    using XIDSet::ClearIDUsed;
    using XIDSet::IsIDUsed;
    using XIDSet::SetIDUsed;
    using XIDSet::XIDSet;
};

void* Create() {
    static int made;
    return &made;
}

TEST(Utilities, TheLastReferenceEndsAnObject) {
    int ends = 0;
    auto* const object = new Shared(&ends);
    object->AddReference();
    EXPECT_EQ(object->IsShared(), 0);
    object->AddReference();
    EXPECT_EQ(object->IsShared(), 1);
    EXPECT_EQ(object->IsShareable(), 1);
    object->MarkUnshareable();
    EXPECT_EQ(object->IsShareable(), 0);
    auto* const copy = new Shared(*object);
    *copy = *object;
    copy->AddReference();
    copy->RemoveReference();
    EXPECT_EQ(ends, 1);
    object->RemoveReference();
    object->RemoveReference();
    EXPECT_EQ(ends, 2);
}

TEST(Utilities, CountersSlotsAndIdentifiers) {
    XCounter counter;
    const std::int32_t start = counter.Increment();
    EXPECT_EQ(counter.Decrement(), start - 1);

    XRTObject slot;
    EXPECT_EQ(slot.GetDataNA(), nullptr);
    EXPECT_EQ(slot.GetData(Create), Create());
    int other;
    slot.SetData(&other);
    EXPECT_EQ(slot.GetDataNA(), &other);

    OpenIDSet set(100);
    std::int32_t id = 0;
    EXPECT_EQ(set.GetNextID(id), 1);
    EXPECT_NE(set.IsIDUsed(static_cast<unsigned char>(id - 100)), 0);
    set.ReleaseID(id);
    EXPECT_EQ(set.IsIDUsed(static_cast<unsigned char>(id - 100)), 0);
    set.SetIDUsed(3);
    EXPECT_NE(set.IsIDUsed(3), 0);
    set.ClearIDUsed(3);
    EXPECT_EQ(set.IsIDUsed(3), 0);
}

TEST(Utilities, ByteOrderTurns) {
    EXPECT_EQ(XSwapBytes(0x1234), 0x3412);
    EXPECT_EQ(XSwapLong(0x12345678), 0x78563412);
    double number = 1.5;
    XSwapDouble(&number);
    EXPECT_NE(number, 1.5);
    XSwapDouble(&number);
    EXPECT_EQ(number, 1.5);
    XNPoint point{0x0102, 0x0304};
    XSwapPoint(point);
    EXPECT_EQ(point.y, 0x0201);
    XNRect rect{0x0102, 0, 0, 0x0304};
    XSwapRect(rect);
    EXPECT_EQ(rect.right, 0x0403);
    char text[5] = {};
    XResTypeToNResType(text, 0x54455854);
    EXPECT_EQ(std::strlen(text), 4u);
}

}  // namespace
