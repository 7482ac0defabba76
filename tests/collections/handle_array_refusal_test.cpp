#include <gtest/gtest.h>
#include <veldt20/collections.h>
#include <veldt20/memory.h>

#include <algorithm>

#include "platform/posix/faults.h"

namespace {

namespace faults = veldt::platform::faults;

constexpr std::ptrdiff_t kRecord = 500;

/// Whether there are `count` records and all their bytes are `a`.
bool Holds(const XHandleArray& array, std::int32_t count) {
    const char* bytes = array.GetArrayPtr();
    return array.GetNumElements() == count &&
           std::count(bytes, bytes + count * kRecord, 'a') == count * kRecord;
}

/// Lives through memory running out, whenever that is.
void UseArray() {
    XHandleArray array(3, kRecord);
    if (array.IHandleArray() == 0) {
        EXPECT_EQ(XMemError(), kMemFull);
        return;
    }
    std::int32_t count = 0;
    for (int step = 0; step < 200; ++step) {
        const std::int32_t middle = count / 2;
        if (array.Shift(middle, 1) == 1) {
            std::fill_n(array.GetArrayPtr() + middle * kRecord, kRecord, 'a');
            ++count;
        } else {
            EXPECT_EQ(XMemError(), kMemFull);
        }
    }
    array.Preflight(100);
    EXPECT_TRUE(Holds(array, count));
    EXPECT_EQ(array.Grow(count / 4 - count), 1);
    EXPECT_TRUE(Holds(array, count / 4));
    array.DeleteAll();
    EXPECT_TRUE(Holds(array, 0));
}

TEST(HandleArrayRefusals, LeaveTheArrayAsItWas) {
    std::uint64_t n = 0;
    std::uint64_t calls = 0;
    do {
        ASSERT_EQ(XMemInitInstance(), 1);
        const std::uint64_t before = faults::CountAddressSpace().allocCalls;
        faults::FailVirtualAlloc(++n, true);
        UseArray();
        faults::FailVirtualAlloc(faults::kNever);
        calls = faults::CountAddressSpace().allocCalls - before;
        XMemExitInstance();
    } while (calls >= n && !HasFailure());
    EXPECT_GT(n, 10u);
}

}  // namespace
