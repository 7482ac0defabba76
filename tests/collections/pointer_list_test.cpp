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
        EXPECT_EQ(GetCount(), std::ssize(values));
        EXPECT_EQ(IsEmpty(), values.empty() ? 1 : 0);
        EXPECT_EQ(FindIndex(GetCount()), nullptr);
        return values;
    }
};

TEST(PointerList, ValuesAreWrittenInPlaceAndFoundOnwards) {
    PointerList list({1, 0, 2, 0});
    list.GetHead() = Pointer(10);
    __XPOSITION* p = list.FindIndex(1);
    EXPECT_EQ(list.Find(nullptr, nullptr), p);
    EXPECT_EQ(list.Find(nullptr, p), list.FindIndex(3));
    EXPECT_EQ(list.Find(nullptr, list.FindIndex(3)), nullptr);
    list.GetAt(p) = Pointer(20);
    list.GetNext(p) = Pointer(21);
    list.SetAt(p, Pointer(30));
    EXPECT_EQ(list.Contents(), (Values{10, 21, 30, 0}));
}

TEST(PointerList, NodesAreMovedFromListToList) {
    for (std::size_t keep = 0; keep <= 4; ++keep) {
        const long before = LiveBlocks();
        PointerList list({1, 2, 3, 4}), other({7, 8});
        list.SplitAfter(keep == 0 ? nullptr : list.FindIndex(static_cast<int>(keep) - 1), other);
        EXPECT_EQ(LiveBlocks() - before, 4);
        const Values all{1, 2, 3, 4};
        const auto cut = all.begin() + static_cast<std::ptrdiff_t>(keep);
        EXPECT_EQ(list.Contents(), Values(all.begin(), cut));
        EXPECT_EQ(other.Contents(), Values(cut, all.end()));
        list.RemoveAll();
        list = other;
        EXPECT_EQ(list.GetHeadPosition(), other.GetHeadPosition());
        other = PointerList();
        EXPECT_EQ(other.IsEmpty(), 1);
        EXPECT_EQ(list.Contents(), Values(cut, all.end()));
    }
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
    ASSERT_EQ(added, refuse ? nullptr : list.FindIndex(index));
    if (!refuse) {
        model.insert(model.begin() + index, value);
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
            if (model.empty() || random() % 2 == 0) {
                InsertSomewhere(list, model, random);
            } else {
                RemoveSomewhere(list, model, random);
            }
        }
    }
    EXPECT_EQ(LiveBlocks(), before);
}

}  // namespace
