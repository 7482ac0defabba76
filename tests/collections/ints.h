// A growable array of int, a look at the fields that it keeps to itself, and a randomised run.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/collections_growable_array.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
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
        std::memcpy(target, source, sizeof(int));
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
        const int count = static_cast<int>(std::ssize(values_));
        const int index = static_cast<int>(random() % (values_.size() + 1));
        const int some = static_cast<int>(random() % 6);
        const int value = static_cast<int>(random());
        const auto place = values_.begin() + index;
        const auto end = place + std::min(some, count - index);
        const auto fit = [&](int room) {
            if (!refuse) capacity_ = room;
            return room == capacity_;
        };
        const auto grow = [&](int needed) { return needed <= capacity_ || fit(RoomFor(needed)); };
        bool fits = true;
        int result = 1;
        Values destroyed;
        array.destroyed.clear();
        switch (random() % 8) {
            case 0:
            case 1:
                result = index == 0       ? array.Prepend(&value)
                         : index == count ? array.Append(&value)
                                          : array.Insert(&value, index);
                fits = grow(count + 1);
                if (fits) values_.insert(place, value);
                break;
            case 2:
                result = array.InsertBlockElements(index, some);
                fits = grow(count + some);
                if (fits) values_.insert(place, static_cast<std::size_t>(some), 0);
                break;
            case 3:
                result = array.SetCapacity(some * 4);
                fits = fit(std::max(some * 4, capacity_));
                break;
            case 4:
                increment_ = some;
                array.SetIncrementSize(some);
                array.Compact();
                break;
            case 5:
                if (place == end) return;
                array.Replace(&value, index);
                *place = value;
                break;
            case 6:
                if (index == count) return;
                array.Remove(index);
                values_.erase(place);
                fit(RoomFor(count - 1));
                break;
            default:
                result = array.Delete(index, index + static_cast<int>(end - place) - 1);
                destroyed.assign(std::reverse_iterator(end), std::reverse_iterator(place));
                values_.erase(place, end);
                fits = fit(RoomFor(static_cast<int>(std::ssize(values_))));
        }
        ASSERT_EQ(result, fits ? 1 : 0);
        ASSERT_EQ(array.destroyed, destroyed);
        ASSERT_EQ(array.Contents(), values_);
        ASSERT_EQ(array.Look().capacity, capacity_);
    }

    Ints array;

  private:
    int RoomFor(int count) const {
        if (count == 0) return std::max(initialSize_, 0);
        return increment_ == 0 ? count : (count + increment_ - 1) / increment_ * increment_;
    }

    int initialSize_, increment_;
    std::int32_t capacity_ = array.Look().capacity;
    Values values_;
};

}  // namespace veldt::tests
