#include <gtest/gtest.h>
#include <veldt20/collections.h>
#include <veldt20/memory.h>

#include <cstddef>
#include <cstring>
#include <new>

namespace {

class Numbers : public XDynArrayImp {
  public:
    Numbers() : XDynArrayImp(2, sizeof(int), 4) {}
    ~Numbers() override { DeleteAll(); }

    int destroyed = 0;

  protected:
    void CopyConstructElement(const void* source, void* target) override {
        std::memcpy(target, source, sizeof(int));
    }
    void ConstructElements(std::int32_t count, void* target) override {
        std::memset(target, 0, static_cast<std::size_t>(count) * sizeof(int));
    }
    void DestructElement(void*) override { ++destroyed; }
    void AssignElement(void* target, const void* source) override {
        CopyConstructElement(source, target);
    }
};

// Gives 1 at the element whose index is in `data`.
int IsWanted(std::int32_t index, std::int32_t&, void* data, void*) {
    return index == *static_cast<int*>(data);
}

class OpenPointerList : public XSinglePtrList {
  public:
    using XSinglePtrList::SplitAfter;
};

TEST(GrowableArray, HoldsElementsThatADerivedClassKnows) {
    Numbers numbers;
    ASSERT_EQ(numbers.Initialize(), 1);
    EXPECT_EQ(numbers.IsEmpty(), 1);
    numbers.SetIncrementSize(8);
    ASSERT_EQ(numbers.SetCapacity(3), 1);
    int value = 2;
    EXPECT_EQ(numbers.Append(&value), 1);
    value = 0;
    EXPECT_EQ(numbers.Prepend(&value), 1);
    value = 1;
    EXPECT_EQ(numbers.Insert(&value, 1), 1);
    EXPECT_EQ(numbers.InsertBlockElements(3, 2), 1);
    value = 3;
    numbers.Replace(&value, 3);
    EXPECT_EQ(numbers.GetNumElements(), 5);
    unsigned char* const base = numbers.Lock();
    ASSERT_NE(base, nullptr);
    for (int i = 0; i < 4; ++i) {
        std::memcpy(&value, numbers.GetAt(base, i), sizeof(value));
        EXPECT_EQ(value, i);
    }
    numbers.Unlock();

    int wanted = 2;
    EXPECT_EQ(numbers.Find(IsWanted, 0, &wanted), 2);
    EXPECT_EQ(numbers.ForEachDo(IsWanted, 0, &wanted), 0);
    EXPECT_EQ(numbers.Delete(0), 1);
    EXPECT_EQ(numbers.Delete(2, 3), 1);
    EXPECT_EQ(numbers.destroyed, 3);
    numbers.Remove(0);
    EXPECT_EQ(numbers.destroyed, 3);
    numbers.Compact();
    EXPECT_EQ(numbers.GetNumElements(), 1);
    numbers.RemoveAll();
    EXPECT_EQ(numbers.IsEmpty(), 1);
    numbers.DeleteAll();
    EXPECT_EQ(numbers.destroyed, 3);
}

TEST(PointerList, KeepsTheOrder) {
    int values[4];
    OpenPointerList list;
    EXPECT_EQ(list.IsEmpty(), 1);
    __XPOSITION* const first = list.AddHead(&values[0]);
    __XPOSITION* const second = list.InsertAfter(first, &values[1]);
    list.InsertAfter(second, &values[2]);
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(list.GetHeadPosition(), first);
    EXPECT_EQ(list.GetHead(), &values[0]);
    EXPECT_EQ(list.GetAt(second), &values[1]);
    EXPECT_EQ(list.Find(&values[1], nullptr), second);
    EXPECT_EQ(list.FindIndex(1), second);

    const XSinglePtrList& fixed = list;
    EXPECT_EQ(fixed.GetHead(), &values[0]);
    EXPECT_EQ(fixed.GetAt(second), &values[1]);
    __XPOSITION* place = first;
    EXPECT_EQ(fixed.GetNext(place), &values[0]);
    EXPECT_EQ(list.GetNext(place), &values[1]);
    EXPECT_EQ(fixed.GetNext(place), &values[2]);
    EXPECT_EQ(place, nullptr);

    OpenPointerList rest;
    list.SplitAfter(first, rest);
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(rest.GetCount(), 2);
    rest.SetAt(second, &values[3]);
    EXPECT_EQ(rest.RemoveHead(), &values[3]);
    EXPECT_EQ(rest.RemoveAt(rest.GetHeadPosition()), &values[2]);
    list.RemoveAll();
    EXPECT_EQ(list.IsEmpty(), 1);
}

// An assigned list names the nodes of the other one, so only one of the two may come to its end.
TEST(PointerList, AssignmentShares) {
    int value;
    XSinglePtrList list;
    list.AddHead(&value);
    alignas(XSinglePtrList) std::byte storage[sizeof(XSinglePtrList)];
    auto* const shared = new (storage) XSinglePtrList;
    *shared = list;
    EXPECT_EQ(shared->GetHeadPosition(), list.GetHeadPosition());
}

// The links inside the elements, for derived lists.
template <class List>
struct OpenList : List {
    using List::GetNextPtr;
    using List::List;
};

struct OpenDoubleList : OpenList<XIntrusiveDoubleList> {
    using OpenList::GetPrevPtr;
    using OpenList::OpenList;
};

TEST(IntrusiveLists, ShowDerivedListsTheLinks) {
    struct {
        void* next;
        void* previous;
    } elements[2];
    OpenList<XIntrusiveSingleList> chain(0);
    chain.InsertAfter(chain.AddHead(&elements[0]), &elements[1]);
    EXPECT_EQ(*chain.GetNextPtr(&elements[0]), &elements[1]);
    chain.RemoveAll();
    OpenDoubleList list(0, sizeof(void*));
    list.AddHead(&elements[0]);
    list.AddTail(&elements[1]);
    EXPECT_EQ(*list.GetNextPtr(&elements[0]), &elements[1]);
    EXPECT_EQ(*list.GetPrevPtr(&elements[1]), &elements[0]);
    list.RemoveAll();
}

}  // namespace
