// A growable array of int, a look at the fields that it keeps to itself, and a randomised run.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/collections_growable_array.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

namespace veldt::tests {

using Values = std::vector<int>;

/// The object as it lies in memory, behind the pointer to its operations.
struct Fields {
    void* operations;
    std::int32_t initialSize, increment, elementSize, count, capacity;
    void* block;

    bool operator==(const Fields&) const = default;
};
static_assert(sizeof(XDynArrayImp) == sizeof(Fields));

/// Elements begin with an int; the array logs those that it destroyed.
class Ints : public XDynArrayImp {
  public:
    Ints(std::int32_t initialSize, std::int32_t increment, std::int32_t elementSize = sizeof(int))
        : XDynArrayImp(initialSize, elementSize, increment) {}

    Fields Look() const {
        Fields fields;
        std::memcpy(&fields, static_cast<const void*>(this), sizeof fields);
        return fields;
    }

    Values Contents() const {
        Values values;
        unsigned char* base = Lock();
        for (int index = 0; index < GetNumElements(); ++index) {
            values.push_back(*reinterpret_cast<int*>(GetAt(base, index)));
        }
        Unlock();
        return values;
    }

    void Fill(int count) {
        for (int value = 0; value < count; ++value) {
            ASSERT_EQ(Append(&value), 1);
        }
    }

    Values destroyed;
    int assignments = 0;

  protected:
    void CopyConstructElement(const void* source, void* target) override {
        std::memcpy(target, source, sizeof(int));
    }
    void ConstructElements(std::int32_t count, void* target) override {
        std::memset(target, 0, static_cast<std::size_t>(count) * sizeof(int));
    }
    void DestructElement(void* element) override {
        destroyed.push_back(*static_cast<int*>(element));
    }
    void AssignElement(void* target, const void* source) override {
        CopyConstructElement(source, target);
        ++assignments;
    }
};

/// An array beside what it must hold, and the room that it must have for that.
class ArrayRun {
  public:
    ArrayRun(int initialSize, int increment)
        : array(initialSize, increment), initialSize_(initialSize), increment_(increment) {}

    /// A random operation, which finds no memory if `refuse`. Then what can't be added changes
    /// nothing, and what is removed is gone all the same.
    void Step(std::mt19937& random, bool refuse = false) {
        const int index = static_cast<int>(random() % (values_.size() + 1));
        const int some = static_cast<int>(random() % 6), value = static_cast<int>(random());
        const auto kind = random() % 12;
        refuse_ = refuse;
        if (kind < 4) {
            Insert(index, value);
        } else if (kind < 6) {
            const Values zeros(static_cast<unsigned>(some));
            Added(index, zeros, array.InsertBlockElements(index, some));
        } else if (kind == 6) {
            ASSERT_EQ(array.SetCapacity(some * 4), Fit(std::max(some * 4, capacity_)));
        } else if (kind == 7) {
            array.SetIncrementSize(increment_ = some);
            array.Compact();
        } else if (kind == 8 && value % 8 == 0) {
            array.RemoveAll();
            values_.clear();
            array.DeleteAll();
        } else if (kind == 9 && index < Count()) {
            array.Replace(&value, index);
            ASSERT_EQ(std::exchange(array.assignments, 0), 1);
            values_[static_cast<unsigned>(index)] = value;
        } else if (kind > 9) {
            Take(index, std::min(some, Count() - index));
        }
        ASSERT_TRUE(array.destroyed.empty());
        ASSERT_EQ(array.IsEmpty(), values_.empty() ? 1 : 0);
        ASSERT_EQ(array.Contents(), values_);
        ASSERT_EQ(array.Look().capacity, capacity_);
    }

    Ints array;

  private:
    int Count() const { return static_cast<int>(values_.size()); }

    int Fit(int room) {
        if (!refuse_) capacity_ = room;
        return room == capacity_ ? 1 : 0;
    }
    int RoomFor(int count) const {
        if (count == 0) return std::max(initialSize_, 0);
        return increment_ == 0 ? count : (count + increment_ - 1) / increment_ * increment_;
    }

    void Insert(int index, int value) {
        const int done = index == 0         ? array.Prepend(&value)
                         : index == Count() ? array.Append(&value)
                                            : array.Insert(&value, index);
        Added(index, {value}, done);
    }
    void Added(int index, const Values& values, int done) {
        const int count = Count() + static_cast<int>(values.size());
        ASSERT_EQ(done, count <= capacity_ ? 1 : Fit(RoomFor(count)));
        if (done) values_.insert(values_.begin() + index, values.begin(), values.end());
    }
    // One element without its end, where its value says so; else as Delete does it, or DeleteAll.
    void Take(int index, int count) {
        const auto first = values_.begin() + index, end = first + count;
        Values gone(first, end);
        std::reverse(gone.begin(), gone.end());
        values_.erase(first, end);
        const int fits = Fit(RoomFor(Count()));
        if (count == 1 && gone[0] % 2 == 0) {
            array.Remove(index);
            gone.clear();
        } else if (values_.empty() && count > 0) {
            array.DeleteAll();
        } else {
            ASSERT_EQ(array.Delete(index, index + count - 1), fits);
        }
        ASSERT_EQ(std::exchange(array.destroyed, {}), gone);
    }

    int initialSize_, increment_;
    std::int32_t capacity_ = array.Look().capacity;
    bool refuse_ = false;
    Values values_;
};

}  // namespace veldt::tests
