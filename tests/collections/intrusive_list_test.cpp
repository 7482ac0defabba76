#include <veldt20/collections_intrusive_list.h>

#include <cstddef>
#include <cstring>

#include "collections/list_run.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

/// On one single list and two double lists at once. Its links lie at odd addresses, each between
/// those of another list, which a link written in the wrong place would break.
#pragma pack(push, 1)
struct Element {
    char tag;
    void *nextA, *nextB, *single, *prevA, *prevB;
};
#pragma pack(pop)

struct SingleList : XIntrusiveSingleList {
    SingleList() : XIntrusiveSingleList(offsetof(Element, single)) {}
    bool IsUnlinked(void* element) const { return IsNull(GetNextPtr(element)); }

    static bool IsNull(const void* link) {
        void* const null = nullptr;
        return std::memcmp(link, &null, sizeof null) == 0;
    }
};

template <unsigned int kNext, unsigned int kPrev>
struct DoubleList : XIntrusiveDoubleList {
    DoubleList() : XIntrusiveDoubleList(kNext, kPrev) {}
    bool IsUnlinked(void* element) const {
        return SingleList::IsNull(GetNextPtr(element)) && SingleList::IsNull(GetPrevPtr(element));
    }
};
using ListA = DoubleList<offsetof(Element, nextA), offsetof(Element, prevA)>;
using ListB = DoubleList<offsetof(Element, nextB), offsetof(Element, prevB)>;

TEST(IntrusiveLists, RandomRunOnSeveralListsAtOnce) {
    std::mt19937 random(Seed());
    Element elements[8] = {};
    ListRun<SingleList> single;
    ListRun<ListA> a;
    ListRun<ListB> b;
    const auto step = [&](auto& run) {
        Element& element = elements[random() % 8];
        run.Step(&element, random());
        const bool isOn = std::count(run.model.begin(), run.model.end(), &element) != 0;
        ASSERT_TRUE(isOn || run.list.IsUnlinked(&element));
    };
    for (int i = 0; i < 20000 && !HasFailure(); ++i) step(single), step(a), step(b);
}

TEST(IntrusiveLists, LinksBeyondTheEndsAreNeitherWrittenNorBelieved) {
    Element first{}, middle{}, last{}, stale{};
    ListA list;
    first.prevA = middle.nextA = last.nextA = &stale;
    list.AddTail(&middle);
    EXPECT_TRUE(middle.nextA == &stale);
    list.AddTail(&last);
    list.AddHead(&first);
    EXPECT_TRUE(first.prevA == &stale && last.nextA == &stale);
    list.RemoveAt(list.GetTailPosition());
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_EQ(list.GetHead(), &middle);
    EXPECT_EQ(list.GetTail(), &middle);
    EXPECT_TRUE(stale.nextA == nullptr && stale.prevA == nullptr);
}

TEST(IntrusiveLists, ForgetElementsAsTheyAre) {
    Element a{}, b{};
    SingleList single;
    single.AddHead(&a);
    single.Construct(offsetof(Element, nextB));
    for (Element* element : {&b, &a}) single.AddHead(element);
    EXPECT_EQ(single.GetCount(), 2);
    ListA list;
    list.InsertAfter(list.AddHead(&a), &b);
    XIntrusiveDoubleList heir(0, 0);
    heir = list;
    EXPECT_EQ(heir.GetTail(), &b);
    single.RemoveAll();
    heir.RemoveAll();
    for (void* end : {single.GetHead(), heir.GetHead(), heir.GetTail()}) EXPECT_EQ(end, nullptr);
    EXPECT_EQ(single.GetCount() + heir.GetCount(), 0);
    EXPECT_TRUE(a.nextB == &b && a.nextA == &b && b.prevA == &a);
}

}  // namespace
