// The three kinds of lists: a randomised run of all against vectors, and what it leaves out.
#include <gtest/gtest.h>
#include <veldt20/collections_intrusive_list.h>
#include <veldt20/collections_pointer_list.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

#include "support/seed.h"

namespace {

using Values = std::vector<void*>;

/// A list beside the elements that it must hold, each of them once.
template <class List>
struct ListRun {
    using Way = std::mt19937::result_type;
    static constexpr bool kDouble = requires(List list) { list.RemoveTail(); };

    List list;
    Values model;

    /// Puts `element` on the list, or takes it off if it is there.
    void Step(void* element, Way way) {
        const auto place = std::find(model.begin(), model.end(), element);
        if (place == model.end()) {
            const int index = static_cast<int>(way / 4 % (model.size() + 1));
            const auto* const added = Insert(element, index, way);
            ASSERT_EQ(added, list.FindIndex(index));
            model.insert(model.begin() + index, element);
        } else {
            ASSERT_EQ(Remove(static_cast<int>(place - model.begin()), way), element);
            model.erase(place);
        }
        Check();
    }

  private:
    // By the end that the place is, or next to a neighbour, which is null beyond an end.
    __XPOSITION* Insert(void* element, int index, Way way) {
        const bool first = index == 0;
        __XPOSITION* const before = first ? nullptr : list.FindIndex(index - 1);
        if (first && way & 1) return list.AddHead(element);
        if constexpr (kDouble) {
            const bool last = index == list.GetCount();
            if (last && way & 1) return list.AddTail(element);
            if (last && way & 2) return list.InsertAfter(nullptr, element);
            if (first && way & 2) return list.InsertBefore(nullptr, element);
            if (first || way & 2) return list.InsertBefore(list.FindIndex(index), element);
        }
        return list.InsertAfter(before, element);
    }

    void* Remove(int index, Way way) {
        if (way & 1 && index == 0) return list.RemoveHead();
        if constexpr (kDouble) {
            if (way & 2 && index == list.GetCount() - 1) return list.RemoveTail();
        }
        return list.RemoveAt(list.FindIndex(index));
    }

    void Check() {
        ASSERT_EQ(list.GetCount(), std::ssize(model));
        ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
        const List& constant = list;
        __XPOSITION* p = list.GetHeadPosition();
        for (int index = 0; index < list.GetCount(); ++index) {
            void* const element = model[static_cast<std::size_t>(index)];
            ASSERT_EQ(list.FindIndex(index), p);
            ASSERT_EQ(list.Find(element, nullptr), p);
            ASSERT_EQ(constant.GetAt(p), element);
            ASSERT_EQ(constant.GetNext(p), element);
        }
        ASSERT_EQ(p, nullptr);
        ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
        ASSERT_TRUE(model.empty() || constant.GetHead() == model.front());
        if constexpr (kDouble) {
            ASSERT_EQ(list.GetTail(), model.empty() ? nullptr : model.back());
            p = list.GetTailPosition();
            for (auto element = model.rbegin(); element != model.rend(); ++element) {
                ASSERT_EQ(list.GetPrev(p), *element);
            }
            ASSERT_EQ(p, nullptr);
        }
    }
};

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

struct PointerList : XSinglePtrList {
    using XSinglePtrList::SplitAfter;

    explicit PointerList(const Values& values = {}) {
        std::for_each(values.rbegin(), values.rend(), [&](void* value) { AddHead(value); });
    }

    Values Contents() const {
        Values values;
        for (__XPOSITION* p = GetHeadPosition(); p != nullptr;) values.push_back(GetNext(p));
        EXPECT_EQ(GetCount(), std::ssize(values));
        return values;
    }
};

TEST(Lists, RandomRunOfAllAtOnce) {
    std::mt19937 random(veldt::tests::Seed());
    Element elements[8] = {};
    ListRun<SingleList> single;
    ListRun<ListA> a;
    ListRun<ListB> b;
    ListRun<PointerList> pointers;
    const auto step = [&](auto& run) {
        Element& element = elements[random() % 8];
        run.Step(&element, random());
        if constexpr (requires { run.list.IsUnlinked(&element); }) {
            const bool isOn = std::count(run.model.begin(), run.model.end(), &element) != 0;
            ASSERT_TRUE(isOn || run.list.IsUnlinked(&element));
        }
    };
    for (int i = 0; i < 20000 && !HasFailure(); ++i) step(single), step(a), step(b), step(pointers);
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

int numbers[8];

TEST(PointerList, ValuesAreWrittenInPlaceAndFoundOnwards) {
    PointerList list({&numbers[1], nullptr, &numbers[2], nullptr});
    list.GetHead() = &numbers[3];
    __XPOSITION* p = list.FindIndex(1);
    EXPECT_EQ(list.Find(nullptr, nullptr), p);
    EXPECT_EQ(list.Find(nullptr, p), list.FindIndex(3));
    EXPECT_EQ(list.Find(nullptr, list.FindIndex(3)), nullptr);
    list.GetAt(p) = &numbers[4];
    list.GetNext(p) = &numbers[5];
    list.SetAt(p, &numbers[6]);
    EXPECT_EQ(list.Contents(), (Values{&numbers[3], &numbers[5], &numbers[6], nullptr}));
}

TEST(PointerList, NodesAreMovedFromListToList) {
    const Values all{&numbers[1], &numbers[2], &numbers[3]};
    for (int keep = 0; keep <= 3; ++keep) {
        PointerList list(all), other({&numbers[7], &numbers[0]});
        list.SplitAfter(keep == 0 ? nullptr : list.FindIndex(keep - 1), other);
        const Values rest(all.begin() + keep, all.end());
        EXPECT_EQ(list.Contents(), Values(all.begin(), all.begin() + keep));
        EXPECT_EQ(other.Contents(), rest);
        list.RemoveAll();
        list = other;
        EXPECT_EQ(list.GetHeadPosition(), other.GetHeadPosition());
        other = PointerList();
        EXPECT_EQ(list.Contents(), rest);
    }
}

}  // namespace
