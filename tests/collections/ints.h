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

/// Elements begin with an int; the array logs what it did to them.
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

/// One random step of both. An addition that fails, as it may if `mayFail`, changes nothing; what
/// is removed is gone in any case.
inline void TakeStep(Ints& array, Values& model, std::mt19937& random, bool mayFail) {
    const Fields before = array.Look();
    const auto place = model.begin() + random() % (model.size() + 1);
    const auto index = static_cast<std::int32_t>(place - model.begin());
    const auto some = static_cast<std::int32_t>(random() % 6);
    const auto end = place + std::min<std::ptrdiff_t>(some, model.end() - place);
    const int value = static_cast<int>(random() % 1000);
    int result = 1;
    switch (random() % 8) {
        case 0:
        case 1:
            result = index == 0             ? array.Prepend(&value)
                     : place == model.end() ? array.Append(&value)
                                            : array.Insert(&value, index);
            if (result) model.insert(place, value);
            break;
        case 2:
            result = array.InsertBlockElements(index, some);
            if (result) model.insert(place, static_cast<std::size_t>(some), 0);
            break;
        case 3:
            result = array.SetCapacity(some * 4);
            break;
        case 4:
            array.SetIncrementSize(some + 1);
            return;
        case 5:
            if (place == end) return;
            array.Replace(&value, index);
            *place = value;
            break;
        case 6:
            if (place == end) return;
            array.Remove(index);
            model.erase(place);
            break;
        default:
            result = array.Delete(index, index + static_cast<std::int32_t>(end - place) - 1);
            model.erase(place, end);
    }
    ASSERT_EQ(array.Contents(), model);
    if (!result) {
        ASSERT_TRUE(mayFail);
        ASSERT_EQ(array.Look().capacity, before.capacity);
        ASSERT_EQ(array.Look().block, before.block);
    }
}

}  // namespace veldt::tests
