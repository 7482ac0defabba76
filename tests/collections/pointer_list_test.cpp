#include <gtest/gtest.h>
#include <veldt20/pointer_list.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "support/refusing_new.h"
#include "support/seed.h"

namespace {

using veldt::tests::LiveBlocks;
using veldt::tests::RefusedNew;
using Values = std::vector<void*>;

class PointerList : public XSinglePtrList {
  public:
    using XSinglePtrList::SplitAfter;
};

void* Value(std::uintptr_t number) {
    return reinterpret_cast<void*>(number);
}

Values Contents(const XSinglePtrList& list) {
    Values values;
    for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) {
        values.push_back(list.GetNext(p));
    }
    return values;
}

void Fill(XSinglePtrList& list, const Values& values) {
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        ASSERT_NE(list.AddHead(*value), nullptr);
    }
}

TEST(PointerList, Empty) {
    const long before = LiveBlocks();
    PointerList list;
    EXPECT_EQ(LiveBlocks(), before);
    EXPECT_EQ(list.IsEmpty(), 1);
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.FindIndex(0), nullptr);
    EXPECT_EQ(list.Find(nullptr, nullptr), nullptr);
}

TEST(PointerList, ValuesAreWrittenInPlace) {
    PointerList list;
    Fill(list, {Value(1), Value(2), Value(3)});
    list.GetHead() = Value(10);
    __XPOSITION* p = list.GetHeadPosition();
    list.GetNext(p);
    list.GetAt(p) = Value(20);
    list.GetNext(p) = Value(21);
    list.SetAt(p, Value(30));
    EXPECT_EQ(Contents(list), (Values{Value(10), Value(21), Value(30)}));
    list.GetNext(p);
    EXPECT_EQ(p, nullptr);
}

TEST(PointerList, FindGoesOnBehindAHitAndFindsNull) {
    PointerList list;
    Fill(list, {Value(1), nullptr, Value(2), nullptr, Value(1)});
    __XPOSITION* first = list.Find(nullptr, nullptr);
    EXPECT_EQ(first, list.FindIndex(1));
    __XPOSITION* second = list.Find(nullptr, first);
    EXPECT_EQ(second, list.FindIndex(3));
    EXPECT_EQ(list.Find(nullptr, second), nullptr);
    EXPECT_EQ(list.Find(Value(1), list.FindIndex(4)), nullptr);
}

TEST(PointerList, AWalkMayRemoveWhatItPassed) {
    PointerList list;
    Fill(list, {Value(1), Value(2), Value(3), Value(4)});
    for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) {
        __XPOSITION* here = p;
        if (reinterpret_cast<std::uintptr_t>(list.GetNext(p)) % 2 == 0) {
            list.RemoveAt(here);
        }
    }
    EXPECT_EQ(Contents(list), (Values{Value(1), Value(3)}));
}

TEST(PointerList, SplitAfterMovesTheNodes) {
    for (int keep = 0; keep <= 4; ++keep) {
        const long before = LiveBlocks();
        PointerList list;
        PointerList other;
        Fill(list, {Value(1), Value(2), Value(3), Value(4)});
        Fill(other, {Value(7), Value(8)});
        list.SplitAfter(keep == 0 ? nullptr : list.FindIndex(keep - 1), other);
        EXPECT_EQ(LiveBlocks() - before, 4);
        EXPECT_EQ(list.GetCount(), keep);
        EXPECT_EQ(other.GetCount(), 4 - keep);
        Values joined = Contents(list);
        const Values moved = Contents(other);
        joined.insert(joined.end(), moved.begin(), moved.end());
        EXPECT_EQ(joined, (Values{Value(1), Value(2), Value(3), Value(4)}));
    }
}

TEST(PointerList, AssignmentSharesAndAnEmptyListForgets) {
    const long before = LiveBlocks();
    {
        PointerList list;
        Fill(list, {Value(1), Value(2)});
        PointerList heir;
        heir = list;
        EXPECT_EQ(heir.GetHeadPosition(), list.GetHeadPosition());
        EXPECT_EQ(heir.GetCount(), 2);
        list = PointerList();
        EXPECT_EQ(list.IsEmpty(), 1);
        EXPECT_EQ(Contents(heir), (Values{Value(1), Value(2)}));
    }
    EXPECT_EQ(LiveBlocks(), before);
}

void InsertSomewhere(PointerList& list, Values& model, std::mt19937& random) {
    const int index = static_cast<int>(random() % (model.size() + 1));
    __XPOSITION* before = index == 0 ? nullptr : list.FindIndex(index - 1);
    void* value = Value(random() % 8);
    const bool atHead = index == 0 && random() % 2 == 0;
    const bool refuse = random() % 8 == 0;
    __XPOSITION* added;
    {
        RefusedNew refusal(refuse ? 1 : 0);
        added = atHead ? list.AddHead(value) : list.InsertAfter(before, value);
    }
    ASSERT_EQ(added == nullptr, refuse);
    if (!refuse) {
        model.insert(model.begin() + index, value);
        ASSERT_EQ(added, list.FindIndex(index));
    }
}

void RemoveSomewhere(PointerList& list, Values& model, std::mt19937& random) {
    if (model.empty()) {
        return;
    }
    const int index = static_cast<int>(random() % model.size());
    void* removed =
        index == 0 && random() % 2 == 0 ? list.RemoveHead() : list.RemoveAt(list.FindIndex(index));
    ASSERT_EQ(removed, model[static_cast<std::size_t>(index)]);
    model.erase(model.begin() + index);
}

TEST(PointerList, RandomRunAgainstAVector) {
    std::mt19937 random(veldt::tests::Seed());
    const long before = LiveBlocks();
    {
        PointerList list;
        Values model;
        for (int step = 0; step < 20000 && !testing::Test::HasFailure(); ++step) {
            random() % 2 == 0 ? InsertSomewhere(list, model, random)
                              : RemoveSomewhere(list, model, random);
            ASSERT_EQ(Contents(list), model);
            ASSERT_EQ(list.GetCount(), static_cast<int>(model.size()));
            ASSERT_EQ(list.IsEmpty(), model.empty() ? 1 : 0);
            ASSERT_EQ(list.FindIndex(list.GetCount()), nullptr);
            void* wanted = Value(random() % 8);
            const auto hit = std::find(model.begin(), model.end(), wanted);
            ASSERT_EQ(list.Find(wanted, nullptr),
                      list.FindIndex(static_cast<int>(hit - model.begin())));
            if (random() % 512 == 0) {
                list.RemoveAll();
                model.clear();
            }
        }
    }
    EXPECT_EQ(LiveBlocks(), before);
}

}  // namespace
