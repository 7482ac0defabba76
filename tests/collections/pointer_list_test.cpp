#include <gtest/gtest.h>
#include <veldt20/collections_pointer_list.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "support/refusing_new.h"
#include "support/seed.h"

namespace {

using veldt::tests::LiveBlocks;
using veldt::tests::RefusedNew;
using Values = std::vector<std::uintptr_t>;

void* Pointer(std::uintptr_t value) {
    return reinterpret_cast<void*>(value);
}

struct PointerList : XSinglePtrList {
    using XSinglePtrList::SplitAfter;

    explicit PointerList(const Values& values = {}) {
        std::for_each(values.rbegin(), values.rend(), [&](auto value) { AddHead(Pointer(value)); });
    }

    Values Contents() const {
        Values values;
        for (__XPOSITION* p = GetHeadPosition(); p != nullptr;) {
            values.push_back(reinterpret_cast<std::uintptr_t>(GetNext(p)));
        }
        return values;
    }
};

TEST(PointerList, ValuesAreWrittenInPlace) {
    PointerList list({1, 2, 3});
    list.GetHead() = Pointer(10);
    __XPOSITION* p = list.FindIndex(1);
    list.GetAt(p) = Pointer(20);
    list.GetNext(p) = Pointer(21);
    list.SetAt(p, Pointer(30));
    EXPECT_EQ(list.Contents(), (Values{10, 21, 30}));
}

TEST(PointerList, FindGoesOnBehindAHitAndFindsNull) {
    PointerList list({1, 0, 2, 0, 1});
    __XPOSITION* first = list.Find(nullptr, nullptr);
    EXPECT_EQ(first, list.FindIndex(1));
    __XPOSITION* second = list.Find(nullptr, first);
    EXPECT_EQ(second, list.FindIndex(3));
    EXPECT_EQ(list.Find(nullptr, second), nullptr);
    EXPECT_EQ(list.Find(Pointer(1), list.FindIndex(4)), nullptr);
}

TEST(PointerList, SplitAfterMovesTheNodes) {
    for (int keep = 0; keep <= 4; ++keep) {
        const long before = LiveBlocks();
        PointerList list({1, 2, 3, 4});
        PointerList other({7, 8});
        list.SplitAfter(keep == 0 ? nullptr : list.FindIndex(keep - 1), other);
        EXPECT_EQ(LiveBlocks() - before, 4);
        EXPECT_EQ(list.GetCount(), keep);
        EXPECT_EQ(other.GetCount(), 4 - keep);
        Values joined = list.Contents();
        for (const auto value : other.Contents()) {
            joined.push_back(value);
        }
        EXPECT_EQ(joined, (Values{1, 2, 3, 4}));
    }
}

TEST(PointerList, AnHeirTakesTheNodesOver) {
    const long before = LiveBlocks();
    {
        PointerList list({1, 2});
        XSinglePtrList heir;
        heir = list;
        EXPECT_EQ(heir.GetHeadPosition(), list.GetHeadPosition());
        EXPECT_EQ(heir.GetCount(), 2);
        static_cast<XSinglePtrList&>(list) = XSinglePtrList();
        EXPECT_EQ(list.IsEmpty(), 1);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

void InsertSomewhere(PointerList& list, Values& model, std::mt19937& random) {
    const int index = static_cast<int>(random() % (model.size() + 1));
    __XPOSITION* before = index == 0 ? nullptr : list.FindIndex(index - 1);
    const std::uintptr_t value = random() % 8;
    const bool atHead = index == 0 && random() % 2 == 0;
    const bool refuse = random() % 8 == 0;
    __XPOSITION* added;
    {
        RefusedNew refusal(refuse ? 1 : 0);
        added = atHead ? list.AddHead(Pointer(value)) : list.InsertAfter(before, Pointer(value));
    }
    ASSERT_EQ(added == nullptr, refuse);
    if (!refuse) {
        model.insert(model.begin() + index, value);
        ASSERT_EQ(added, list.FindIndex(index));
    }
}

void RemoveSomewhere(PointerList& list, Values& model, std::mt19937& random) {
    const int index = static_cast<int>(random() % model.size());
    void* removed =
        index == 0 && random() % 2 == 0 ? list.RemoveHead() : list.RemoveAt(list.FindIndex(index));
    ASSERT_EQ(removed, Pointer(model[static_cast<std::size_t>(index)]));
    model.erase(model.begin() + index);
}

TEST(PointerList, RandomRunAgainstAVector) {
    std::mt19937 random(veldt::tests::Seed());
    const long before = LiveBlocks();
    {
        PointerList list;
        Values model;
        for (int step = 0; step < 20000 && !HasFailure(); ++step) {
            ASSERT_EQ(list.Contents(), model);
            ASSERT_EQ(list.GetCount(), std::ssize(model));
            ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
            ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
            const auto hit = std::find(model.begin(), model.end(), 3u);
            ASSERT_EQ(list.Find(Pointer(3), nullptr),
                      list.FindIndex(static_cast<int>(hit - model.begin())));
            if (model.empty() || random() % 2 == 0) {
                InsertSomewhere(list, model, random);
            } else {
                RemoveSomewhere(list, model, random);
            }
        }
        EXPECT_GT(LiveBlocks(), before);
        list.RemoveAll();
        EXPECT_EQ(list.GetHeadPosition(), nullptr);
    }
    EXPECT_EQ(LiveBlocks(), before);
}

}  // namespace
