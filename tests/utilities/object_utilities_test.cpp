#include <gtest/gtest.h>
#include <veldt20/utilities_objects.h>

#include <bit>
#include <cstdint>
#include <random>

#include "support/seed.h"

namespace {

int endings = 0;

struct Shared : XRCObject {
    ~Shared() override { ++endings; }
};

TEST(RCObject, EndsWithItsLastOwnerAndSharesNothingWithCopies) {
    auto* object = new Shared;
    object->RemoveReference();
    for (const int shared : {0, 0, 1}) {
        object->AddReference();
        EXPECT_EQ(object->IsShared(), shared);
    }
    object->MarkUnshareable();
    {
        Shared copy(*object), assigned;
        assigned = *object;
        *object = Shared();
        for (const Shared* other : {&copy, &assigned, object}) {
            EXPECT_EQ(other->IsShared(), other == object ? 1 : 0);
            EXPECT_EQ(other->IsShareable(), other == object ? 0 : 1);
        }
    }
    endings = 0;
    object->RemoveReference();
    EXPECT_EQ(object->IsShared(), 0);
    EXPECT_EQ(endings, 0);
    object->RemoveReference();
    EXPECT_EQ(endings, 1);
}

TEST(Counter, GivesTheNewValue) {
    XCounter counter;
    EXPECT_EQ(counter.Decrement(), -1);
    EXPECT_EQ(counter.Increment(), 0);
    EXPECT_EQ(counter.Increment(), 1);
}

int made = 0;

void* MakeThing() {
    return ++made == 1 ? nullptr : &made;
}

TEST(RTObject, IsFilledOnce) {
    XRTObject slot;
    EXPECT_EQ(slot.GetDataNA(), nullptr);
    EXPECT_EQ(slot.GetData(MakeThing), nullptr);
    EXPECT_EQ(slot.GetData(MakeThing), &made);
    EXPECT_EQ(slot.GetData(MakeThing), &made);
    slot.SetData(&slot);
    EXPECT_EQ(slot.GetData(MakeThing), &slot);
    EXPECT_EQ(made, 2);
    slot.SetData(nullptr);
    EXPECT_EQ(slot.GetDataNA(), nullptr);
}

struct IdSet : XIDSet {
    using XIDSet::ClearIDUsed;
    using XIDSet::IsIDUsed;
    using XIDSet::SetIDUsed;
    using XIDSet::XIDSet;
};

// Ids wrap at the ends of the range; an index, or an id's distance from the base, at 32.
TEST(IDSet, RandomAgainstAWordOfBits) {
    std::mt19937 random(veldt::tests::Seed());
    for (const std::uint32_t base : {0u, 100u, 0x7FFFFFEBu, 0xFFFFFFFBu}) {
        IdSet set(static_cast<std::int32_t>(base));
        std::uint32_t used = 0;
        for (int step = 0; step < 5000 && !HasFailure(); ++step) {
            const auto index = static_cast<unsigned char>(random());
            const std::uint32_t bit = std::uint32_t{1} << index % 32;
            const std::uint32_t action = random() % 8;
            if (action == 0) {
                set.ReleaseID(static_cast<std::int32_t>(base + random() % 1000 * 32 + index));
                used &= ~bit;
            } else if (action == 1) {
                set.ClearIDUsed(index);
                used &= ~bit;
            } else if (action == 2) {
                set.SetIDUsed(index);
                used |= bit;
            } else {
                std::int32_t id = 77;
                const bool full = used == UINT32_MAX;
                const std::uint32_t lowest = base + static_cast<unsigned>(std::countr_one(used));
                EXPECT_EQ(set.GetNextID(id), full ? 0 : 1);
                EXPECT_EQ(static_cast<std::uint32_t>(id), full ? 77 : lowest);
                used |= used + 1;
            }
            EXPECT_EQ(set.IsIDUsed(index), static_cast<std::int32_t>(used & bit));
        }
    }
}

}  // namespace
