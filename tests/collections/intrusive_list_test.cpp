#include <gtest/gtest.h>
#include <veldt20/collections_intrusive_list.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

#include "support/seed.h"

namespace {

/// On one single list and two double lists at once.
struct Element {
    char tag;
    void *single, *nextA, *prevA, *prevB, *nextB;
};

__XPOSITION* At(void* element) {
    return static_cast<__XPOSITION*>(element);
}

using Elements = std::vector<void*>;
using Way = std::mt19937::result_type;

TEST(IntrusiveLists, WriteLinksWhereToldAndNowhereElse) {
    constexpr std::size_t kOffset = 3;
    std::array<unsigned char, kOffset + sizeof(void*) + 5> first, second, expected;
    first.fill(0xA5);
    second = expected = first;
    void* link = first.data();
    std::memcpy(expected.data() + kOffset, &link, sizeof link);

    XIntrusiveSingleList list(kOffset);
    list.AddHead(first.data());
    list.AddHead(second.data());
    EXPECT_EQ(second, expected);
    list.RemoveAt(At(first.data()));
    std::memset(expected.data() + kOffset, 0, sizeof link);
    EXPECT_EQ(first, expected);
    EXPECT_EQ(second, expected);
}

TEST(IntrusiveLists, OuterLinksOfADoubleListAreNeitherWrittenNorBelieved) {
    Element a{}, b{}, stale{};
    XIntrusiveDoubleList list(offsetof(Element, nextA), offsetof(Element, prevA));
    a.prevA = b.nextA = &stale;
    list.AddTail(&b);
    list.AddHead(&a);
    EXPECT_EQ(a.prevA, &stale);
    EXPECT_EQ(b.nextA, &stale);
    EXPECT_EQ(list.RemoveHead(), &a);
    EXPECT_EQ(b.prevA, nullptr);
    a.nextA = &stale;
    list.AddTail(&a);
    EXPECT_EQ(a.nextA, &stale);
    EXPECT_EQ(list.RemoveAt(At(&a)), &a);
    EXPECT_EQ(list.GetTail(), &b);
    EXPECT_EQ(stale.prevA, nullptr);
}

TEST(IntrusiveLists, ForgetElementsAsTheyAre) {
    Element a{}, b{};
    XIntrusiveSingleList single(offsetof(Element, single));
    XIntrusiveDoubleList pair(offsetof(Element, nextA), offsetof(Element, prevA));
    single.InsertAfter(single.AddHead(&a), &b);
    pair.InsertAfter(pair.AddHead(&a), &b);
    XIntrusiveDoubleList heir(0, 0);
    heir = pair;
    EXPECT_EQ(heir.GetTail(), &b);
    single.Construct(offsetof(Element, nextB));
    single.AddHead(&b);
    single.AddHead(&a);
    EXPECT_EQ(single.GetCount(), 2);
    single.RemoveAll();
    heir.RemoveAll();
    EXPECT_EQ(heir.GetTail(), single.GetHead());
    EXPECT_EQ(heir.GetHead(), nullptr);
    EXPECT_EQ(single.GetCount() + heir.GetCount(), 0);
    for (void* link : {a.single, a.nextA, a.nextB}) EXPECT_EQ(link, &b);
    EXPECT_EQ(b.prevA, &a);
}

struct OpenSingleList : XIntrusiveSingleList {
    using XIntrusiveSingleList::GetNextPtr;
    using XIntrusiveSingleList::XIntrusiveSingleList;
};

struct OpenDoubleList : XIntrusiveDoubleList {
    using XIntrusiveDoubleList::GetNextPtr;
    using XIntrusiveDoubleList::GetPrevPtr;
    using XIntrusiveDoubleList::XIntrusiveDoubleList;
};

/// One of the lists that the elements are on, and what it must hold.
template <class List>
struct ListRun {
    static constexpr bool kDouble = std::is_same_v<List, OpenDoubleList>;

    List list;
    Elements model = {};

    void Step(Element& element, Way way) {
        const auto place = std::find(model.begin(), model.end(), &element);
        if (place == model.end()) {
            const auto index = static_cast<std::ptrdiff_t>(way / 4 % (model.size() + 1));
            ASSERT_EQ(Insert(&element, index, way), At(&element));
            model.insert(model.begin() + index, &element);
        } else {
            ASSERT_EQ(Remove(&element, way), &element);
            model.erase(place);
            ASSERT_EQ(*list.GetNextPtr(&element), nullptr);
            if constexpr (kDouble) {
                ASSERT_EQ(*list.GetPrevPtr(&element), nullptr);
            }
        }
        Check();
    }

    // By the end that the place is, or next to a neighbour, which is null beyond an end.
    __XPOSITION* Insert(Element* element, std::ptrdiff_t index, Way way) {
        const bool first = index == 0, last = index == std::ssize(model);
        __XPOSITION* const before = first ? nullptr : At(model.begin()[index - 1]);
        __XPOSITION* const behind = last ? nullptr : At(model.begin()[index]);
        if (first && way & 1) return list.AddHead(element);
        if constexpr (kDouble) {
            if (last && way & 1) return list.AddTail(element);
            if (last && way & 2) return list.InsertAfter(nullptr, element);
            if (first) return list.InsertBefore(way & 2 ? nullptr : behind, element);
            if (way & 2) return list.InsertBefore(behind, element);
        }
        return list.InsertAfter(before, element);
    }

    void* Remove(Element* element, Way way) {
        if (way & 1 && element == model.front()) return list.RemoveHead();
        if constexpr (kDouble) {
            if (way & 2 && element == model.back()) return list.RemoveTail();
        }
        return list.RemoveAt(At(element));
    }

    void Check() {
        ASSERT_EQ(list.GetCount(), std::ssize(model));
        ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
        ASSERT_EQ(list.GetHead(), model.empty() ? nullptr : model.front());
        __XPOSITION* p = list.GetHeadPosition();
        for (int index = 0; index < list.GetCount(); ++index) {
            void* element = model[static_cast<std::size_t>(index)];
            ASSERT_EQ(list.FindIndex(index), At(element));
            ASSERT_EQ(list.GetAt(list.Find(element, nullptr)), element);
            ASSERT_EQ(list.GetNext(p), element);
        }
        ASSERT_EQ(p, nullptr);
        ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
        if constexpr (kDouble) {
            p = list.GetTailPosition();
            for (auto element = model.rbegin(); element != model.rend(); ++element) {
                ASSERT_EQ(list.GetPrev(p), *element);
            }
            ASSERT_EQ(p, nullptr);
        }
    }
};

TEST(IntrusiveLists, RandomRunOnSeveralListsAtOnce) {
    std::mt19937 random(veldt::tests::Seed());
    std::vector<Element> elements(8);
    ListRun<OpenSingleList> single{OpenSingleList(offsetof(Element, single))};
    ListRun<OpenDoubleList> a{{offsetof(Element, nextA), offsetof(Element, prevA)}};
    ListRun<OpenDoubleList> b{{offsetof(Element, nextB), offsetof(Element, prevB)}};
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        single.Step(elements[random() % 8], random());
        a.Step(elements[random() % 8], random());
        b.Step(elements[random() % 8], random());
    }
}

}  // namespace
