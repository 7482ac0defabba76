#include <gtest/gtest.h>
#include <veldt20/collections_pointer_list.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "support/seed.h"

namespace {

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
            EXPECT_EQ(GetAt(p), p == GetHeadPosition() ? GetHead() : GetAt(p));
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
    const Values all{1, 2, 3, 4};
    for (int keep = 0; keep <= 4; ++keep) {
        PointerList list(all), other({7, 8});
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

TEST(PointerList, RandomRunAgainstAVector) {
    std::mt19937 random(veldt::tests::Seed());
    PointerList list;
    Values model;
    for (int step = 0; step < 20000 && !HasFailure(); ++step) {
        const int index = static_cast<int>(random() % (model.size() + 1));
        const auto place = model.begin() + index;
        const bool atHead = index == 0 && random() % 2 == 0;
        if (place == model.end() || random() % 24 > model.size()) {
            __XPOSITION* const before = index == 0 ? nullptr : list.FindIndex(index - 1);
            void* const value = Pointer(random() % 8);
            __XPOSITION* const added =
                atHead ? list.AddHead(value) : list.InsertAfter(before, value);
            ASSERT_EQ(added, list.FindIndex(index));
            model.insert(place, reinterpret_cast<std::uintptr_t>(value));
        } else {
            __XPOSITION* const at = list.FindIndex(index);
            ASSERT_EQ(atHead ? list.RemoveHead() : list.RemoveAt(at), Pointer(*place));
            model.erase(place);
        }
        ASSERT_EQ(list.Contents(), model);
    }
}

}  // namespace
