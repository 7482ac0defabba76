#include <gtest/gtest.h>
#include <veldt20/collections_intrusive_list.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/seed.h"

namespace {

/// On one single list and two double lists at once.
struct Element {
    char tag;
    void *single, *nextA, *prevA, *prevB, *nextB;
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

Elements Walked(__XPOSITION* from, const std::function<void*(__XPOSITION*&)>& step) {
    Elements elements;
    while (from != nullptr) {
        elements.push_back(step(from));
    }
    return elements;
}

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
    XIntrusiveDoubleList list(kNextA, kPrevA);
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
    EXPECT_EQ(list.RemoveTail(), &a);
    EXPECT_EQ(b.nextA, nullptr);
}

TEST(IntrusiveLists, LetElementsGoAsTheyAre) {
    Element a{}, b{};
    {
        XIntrusiveDoubleList list(kNextA, kPrevA);
        list.AddHead(&a);
        XIntrusiveDoubleList heir(kNextB, kPrevB);
        heir = list;
        heir.AddTail(&b);
        heir.RemoveAll();
        EXPECT_EQ(heir.GetCount(), 0);
        EXPECT_EQ(heir.GetHead(), nullptr);
        EXPECT_EQ(heir.GetTail(), nullptr);
    }
    EXPECT_EQ(a.nextA, &b);
    EXPECT_EQ(b.prevA, &a);
}

TEST(IntrusiveLists, ConstructServesRawMemoryAndForgetsAChain) {
    alignas(XIntrusiveSingleList) unsigned char memory[sizeof(XIntrusiveSingleList)];
    std::memset(memory, 0xA5, sizeof memory);
    auto* list = reinterpret_cast<XIntrusiveSingleList*>(memory);
    Element a{}, b{};
    for (const auto& [offset, field] : {std::pair{kSingle, &b.single}, {kNextA, &b.nextA}}) {
        list->Construct(offset);
        EXPECT_EQ(list->IsEmpty(), 1);
        list->AddHead(&a);
        list->AddHead(&b);
        EXPECT_EQ(*field, &a);
        EXPECT_EQ(list->GetCount(), 2);
    }
    list->RemoveAll();
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_EQ(list->GetHead(), nullptr);
    EXPECT_EQ(b.nextA, &a);
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
            Insert(&element, random() % (model.size() + 1), random);
        } else {
            Remove(place, random);
            for (void* Element::*link : links) {
                ASSERT_EQ(element.*link, nullptr);
            }
        }
        Check();
    }

    // There are up to four ways to the same place; any one will do.
    void Insert(Element* element, std::size_t index, std::mt19937& random) {
        std::vector<std::function<__XPOSITION*()>> ways;
        if (index == 0) {
            ways.push_back([&] { return list.AddHead(element); });
        } else {
            ways.push_back([&] { return list.InsertAfter(At(model[index - 1]), element); });
        }
        if constexpr (kDouble) {
            if (index == 0) {
                ways.push_back([&] { return list.InsertBefore(nullptr, element); });
            }
            if (index == model.size()) {
                ways.push_back([&] { return list.AddTail(element); });
                ways.push_back([&] { return list.InsertAfter(nullptr, element); });
            } else {
                ways.push_back([&] { return list.InsertBefore(At(model[index]), element); });
            }
        } else if (index == 0) {
            ways.push_back([&] { return list.InsertAfter(nullptr, element); });
        }
        ASSERT_EQ(ways[random() % ways.size()](), At(element));
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), element);
    }

    void Remove(Elements::iterator place, std::mt19937& random) {
        std::vector<std::function<void*()>> ways{[&] { return list.RemoveAt(At(*place)); }};
        if (place == model.begin()) {
            ways.push_back([&] { return list.RemoveHead(); });
        }
        if constexpr (kDouble) {
            if (place == model.end() - 1) {
                ways.push_back([&] { return list.RemoveTail(); });
            }
        }
        ASSERT_EQ(ways[random() % ways.size()](), *place);
        model.erase(place);
    }

    void Check() {
        ASSERT_EQ(Walked(list.GetHeadPosition(), [&](auto& p) { return list.GetNext(p); }), model);
        ASSERT_EQ(list.GetCount(), std::ssize(model));
        ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
        ASSERT_EQ(list.GetHead(), model.empty() ? nullptr : model.front());
        for (int index = 0; index < list.GetCount(); ++index) {
            void* element = model[static_cast<std::size_t>(index)];
            ASSERT_EQ(list.FindIndex(index), At(element));
            ASSERT_EQ(list.GetAt(list.Find(element, nullptr)), element);
        }
        ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
        if constexpr (kDouble) {
            ASSERT_EQ(Walked(list.GetTailPosition(), [&](auto& p) { return list.GetPrev(p); }),
                      Elements(model.rbegin(), model.rend()));
        }
    }
};

TEST(IntrusiveLists, RandomRunOnSeveralListsAtOnce) {
    std::mt19937 random(veldt::tests::Seed());
    std::vector<Element> elements(8);
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
        }
    }
}

}  // namespace
