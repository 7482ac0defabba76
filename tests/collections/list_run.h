// A randomised run of any of the lists against a vector.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/collections_position.h>

#include <algorithm>
#include <random>
#include <vector>

namespace veldt::tests {

/// A list beside the elements that it must hold, each of them once.
template <class List>
struct ListRun {
    using Way = std::mt19937::result_type;
    static constexpr bool kDouble = requires(List list) { list.RemoveTail(); };

    List list;
    std::vector<void*> model;

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

}  // namespace veldt::tests
