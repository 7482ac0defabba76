// A growable array of int, and a look at the fields that it keeps to itself.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/collections_growable_array.h>

#include <cstdint>
#include <cstring>
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

    Values destroyed, assignedOver;

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
        assignedOver.push_back(*static_cast<int*>(target));
        std::memcpy(target, source, sizeof(int));
    }
};

}  // namespace veldt::tests
