#include <gtest/gtest.h>
#include <veldt20/intrusive_list.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <random>
#include <type_traits>
#include <vector>

#include "support/seed.h"

namespace {

/// On one single list and two double lists at once.
struct Element {
    char tag;
    void* single = nullptr;
    void* nextA = nullptr;
    void* prevA = nullptr;
    void* prevB = nullptr;
    void* nextB = nullptr;
};

constexpr unsigned int kSingle = offsetof(Element, single);
constexpr unsigned int kNextA = offsetof(Element, nextA);
constexpr unsigned int kPrevA = offsetof(Element, prevA);
constexpr unsigned int kNextB = offsetof(Element, nextB);
constexpr unsigned int kPrevB = offsetof(Element, prevB);

__XPOSITION* At(void* element) {
    return static_cast<__XPOSITION*>(element);
}

using Elements = std::vector<void*>;

Elements Forwards(const auto& list) {
    Elements elements;
    for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) {
        elements.push_back(list.GetNext(p));
    }
    return elements;
}

Elements Backwards(const XIntrusiveDoubleList& list) {
    Elements elements;
    for (__XPOSITION* p = list.GetTailPosition(); p != nullptr;) {
        elements.push_back(list.GetPrev(p));
    }
    return elements;
}

TEST(IntrusiveLists, WriteLinksWhereToldAndNowhereElse) {
    constexpr std::size_t kOffset = 3;
    std::array<unsigned char, kOffset + sizeof(void*) + 5> first;
    std::array<unsigned char, kOffset + sizeof(void*) + 5> second;
    first.fill(0xA5);
    second.fill(0xA5);
    auto expected = second;
    void* link = first.data();
    std::memcpy(expected.data() + kOffset, &link, sizeof link);

    XIntrusiveSingleList list(kOffset);
    list.AddHead(first.data());
    list.AddHead(second.data());
    EXPECT_EQ(second, expected);
    EXPECT_EQ(Forwards(list), (Elements{second.data(), first.data()}));
    list.RemoveAt(At(first.data()));
    std::memset(expected.data() + kOffset, 0, sizeof link);
    EXPECT_EQ(first, expected);
}

TEST(IntrusiveLists, AnEmptyDoubleListWritesNoLink) {
    Element element{};
    element.nextA = element.prevA = &element;
    XIntrusiveDoubleList list(kNextA, kPrevA);
    for (const bool atHead : {true, false}) {
        EXPECT_EQ(atHead ? list.AddHead(&element) : list.AddTail(&element), At(&element));
        EXPECT_EQ(element.nextA, &element);
        EXPECT_EQ(element.prevA, &element);
        list.RemoveAll();
    }
}

TEST(IntrusiveLists, AStaleOuterLinkEndsWithTheElementThatHasIt) {
    Element a{};
    Element b{};
    Element stale{};
    a.prevA = &stale;
    b.nextA = &stale;
    XIntrusiveDoubleList list(kNextA, kPrevA);
    list.AddHead(&b);
    list.AddHead(&a);
    EXPECT_EQ(list.RemoveHead(), &a);
    EXPECT_EQ(b.prevA, nullptr);
    b.nextA = nullptr;
    list.AddTail(&a);
    a.nextA = &stale;
    EXPECT_EQ(list.RemoveTail(), &a);
    EXPECT_EQ(b.nextA, nullptr);
    EXPECT_EQ(Backwards(list), Elements{&b});
}

TEST(IntrusiveLists, RemoveAllLeavesTheLinks) {
    Element a{};
    Element b{};
    {
        XIntrusiveSingleList single(kSingle);
        XIntrusiveDoubleList both(kNextA, kPrevA);
        single.InsertAfter(single.AddHead(&a), &b);
        both.AddHead(&a);
        both.AddTail(&b);
        single.RemoveAll();
        both.RemoveAll();
        EXPECT_EQ(single.GetCount() + both.GetCount(), 0);
        EXPECT_EQ(both.GetTail(), nullptr);
    }
    EXPECT_EQ(a.single, &b);
    EXPECT_EQ(a.nextA, &b);
    EXPECT_EQ(b.prevA, &a);
}

TEST(IntrusiveLists, FindGivesItsArgument) {
    Element on{};
    Element off{};
    XIntrusiveSingleList single(kSingle);
    XIntrusiveDoubleList both(kNextA, kPrevA);
    single.AddHead(&on);
    both.AddHead(&on);
    EXPECT_EQ(single.Find(&off, At(&on)), At(&off));
    EXPECT_EQ(both.Find(&off, At(&on)), At(&off));
    EXPECT_EQ(single.GetAt(At(&off)), &off);
    EXPECT_EQ(both.GetAt(At(&off)), &off);
}

TEST(IntrusiveLists, ConstructServesRawMemoryAndForgetsAChain) {
    alignas(XIntrusiveSingleList) unsigned char memory[sizeof(XIntrusiveSingleList)];
    std::memset(memory, 0xA5, sizeof memory);
    auto* list = reinterpret_cast<XIntrusiveSingleList*>(memory);
    Element a{};
    Element b{};
    list->Construct(kSingle);
    list->AddHead(&a);
    list->AddHead(&b);
    EXPECT_EQ(b.single, &a);
    list->Construct(kNextA);
    EXPECT_EQ(list->IsEmpty(), 1);
    list->AddHead(&a);
    list->AddHead(&b);
    EXPECT_EQ(b.nextA, &a);
}

TEST(IntrusiveLists, AssignmentTakesTheOffsetsToo) {
    Element a{};
    Element b{};
    XIntrusiveDoubleList list(kNextA, kPrevA);
    list.AddTail(&a);
    XIntrusiveDoubleList heir(kNextB, kPrevB);
    heir = list;
    heir.AddTail(&b);
    EXPECT_EQ(a.nextA, &b);
    EXPECT_EQ(Forwards(heir), (Elements{&a, &b}));
}

/// One of the lists that the elements are on, and what it must hold.
template <class List>
struct ListRun {
    static constexpr bool kDouble = std::is_same_v<List, XIntrusiveDoubleList>;

    List list;
    std::vector<void * Element::*> links;
    Elements model = {};

    void Step(Element& element, std::mt19937& random) {
        const auto place = std::find(model.begin(), model.end(), &element);
        if (place == model.end()) {
            Insert(&element, random);
        } else {
            Remove(place - model.begin(), random);
            for (void* Element::*link : links) {
                ASSERT_EQ(element.*link, nullptr);
            }
        }
        Check();
    }

    void Insert(Element* element, std::mt19937& random) {
        const std::size_t index = random() % (model.size() + 1);
        __XPOSITION* before = index == 0 ? nullptr : At(model[index - 1]);
        __XPOSITION* behind = index == model.size() ? nullptr : At(model[index]);
        const bool byEnd = random() % 2 == 0;
        __XPOSITION* added;
        if (byEnd && before == nullptr) {
            added = list.AddHead(element);
        } else if constexpr (!kDouble) {
            added = list.InsertAfter(before, element);
        } else if (byEnd && behind == nullptr) {
            added = list.AddTail(element);
        } else if (before == nullptr || (behind != nullptr && random() % 2 == 0)) {
            // Before nothing is at the head, whatever stands there.
            added = list.InsertBefore(before == nullptr && byEnd ? nullptr : behind, element);
        } else {
            added = list.InsertAfter(before, element);
        }
        ASSERT_EQ(added, At(element));
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), element);
    }

    void Remove(std::ptrdiff_t index, std::mt19937& random) {
        void* element = model[static_cast<std::size_t>(index)];
        model.erase(model.begin() + index);
        void* removed = nullptr;
        const bool byEnd = random() % 2 == 0;
        if (byEnd && index == 0) {
            removed = list.RemoveHead();
        }
        if constexpr (kDouble) {
            if (byEnd && index > 0 && index == std::ssize(model)) {
                removed = list.RemoveTail();
            }
        }
        ASSERT_EQ(removed == nullptr ? list.RemoveAt(At(element)) : removed, element);
    }

    void Check() {
        ASSERT_EQ(Forwards(list), model);
        ASSERT_EQ(list.GetCount(), std::ssize(model));
        ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
        ASSERT_EQ(list.GetHead(), model.empty() ? nullptr : model.front());
        for (int index = 0; index < list.GetCount(); ++index) {
            ASSERT_EQ(list.FindIndex(index), At(model[static_cast<std::size_t>(index)]));
        }
        ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
        if constexpr (kDouble) {
            ASSERT_EQ(Backwards(list), Elements(model.rbegin(), model.rend()));
            ASSERT_EQ(list.GetTail(), model.empty() ? nullptr : model.back());
        }
    }
};

TEST(IntrusiveLists, RandomRunOnSeveralListsAtOnce) {
    std::mt19937 random(veldt::tests::Seed());
    std::vector<Element> elements(12);
    ListRun<XIntrusiveSingleList> single{XIntrusiveSingleList(kSingle), {&Element::single}};
    ListRun<XIntrusiveDoubleList> a{{kNextA, kPrevA}, {&Element::nextA, &Element::prevA}};
    ListRun<XIntrusiveDoubleList> b{{kNextB, kPrevB}, {&Element::nextB, &Element::prevB}};
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        Element& element = elements[random() % elements.size()];
        switch (random() % 3) {
            case 0:
                single.Step(element, random);
                break;
            case 1:
                a.Step(element, random);
                break;
            default:
                b.Step(element, random);
                break;
        }
    }
}

TEST(IntrusiveLists, NullPlacesAreOppositeEnds) {
    Element a{};
    Element b{};
    XIntrusiveSingleList single(kSingle);
    XIntrusiveDoubleList both(kNextA, kPrevA);
    single.InsertAfter(nullptr, &a);
    single.InsertAfter(nullptr, &b);
    both.InsertAfter(nullptr, &a);
    both.InsertAfter(nullptr, &b);
    EXPECT_EQ(Forwards(single), (Elements{&b, &a}));
    EXPECT_EQ(Forwards(both), (Elements{&a, &b}));
}

TEST(IntrusiveLists, AWalkMayRemoveWhatItPassed) {
    std::array<Element, 5> elements{};
    XIntrusiveDoubleList list(kNextA, kPrevA);
    for (Element& element : elements) {
        list.AddTail(&element);
    }
    for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) {
        list.RemoveAt(At(list.GetNext(p)));
    }
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetTail(), nullptr);
}

}  // namespace
