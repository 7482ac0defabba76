#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/platform.h"
#include "support/threads.h"

namespace {

using namespace veldt::platform;

constexpr UINT kZeroed = GMEM_MOVEABLE | GMEM_ZEROINIT;

bool AllEqual(const void* bytes, SIZE_T from, SIZE_T to, int value) {
    const auto* first = static_cast<const unsigned char*>(bytes);
    return std::all_of(first + from, first + to, [&](unsigned char c) { return c == value; });
}

TEST(GlobalMemory, ResizingKeepsWhatWasThereAndClearsWhatIsNewWhenAsked) {
    for (const SIZE_T first : {100, 0}) {
        const HGLOBAL block = GlobalAlloc(kZeroed, first);
        SIZE_T kept = 0;
        // Down and up again: what was cut off must not come back. An empty block has no address.
        for (const SIZE_T size : std::vector<SIZE_T>{first, 97, 100, 10, 200000, 0, 5}) {
            SCOPED_TRACE(size);
            ASSERT_EQ(GlobalReAlloc(block, size, kZeroed), block);
            EXPECT_EQ(GlobalSize(block), size);
            SetLastError(0);
            void* data = GlobalLock(block);
            EXPECT_EQ(GetLastError(), size == 0 ? ERROR_DISCARDED : 0);
            ASSERT_EQ(data == nullptr, size == 0);
            kept = std::min(kept, size);
            EXPECT_TRUE(AllEqual(data, 0, kept, 7));
            EXPECT_TRUE(AllEqual(data, kept, size, 0));
            kept = size;
            if (size == 0) continue;
            std::memset(data, 7, size);
            GlobalUnlock(block);
        }
        EXPECT_EQ(GlobalFree(block), nullptr);
    }
}

TEST(GlobalMemory, LockedBlockStaysWhereItIs) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 1000);
    void* data = GlobalLock(block);
    std::memset(data, 3, 1000);
    EXPECT_EQ(GlobalReAlloc(block, 50, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalReAlloc(block, 1000, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalReAlloc(block, 1 << 24, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(GlobalSize(block), 1000u);
    EXPECT_EQ(GlobalLock(block), data);
    EXPECT_TRUE(AllEqual(data, 0, 50, 3));
    EXPECT_EQ(GlobalUnlock(block), 1);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
    EXPECT_EQ(GlobalReAlloc(block, 1 << 24, GMEM_MOVEABLE), block);
    EXPECT_EQ(GlobalReAlloc(block, ~SIZE_T{0}, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalAlloc(kZeroed, ~SIZE_T{0}), nullptr);
    EXPECT_EQ(GlobalSize(block), SIZE_T{1} << 24);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, RefusesNamesThatNameNothing) {
    const HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 16);
    ASSERT_EQ(GlobalFree(stale), nullptr);
    const HGLOBAL live = GlobalAlloc(GMEM_MOVEABLE, 16);
    ASSERT_NE(live, stale);
    const HGLOBAL gone = GlobalAlloc(GMEM_MOVEABLE, 16);
    ASSERT_EQ(GlobalFree(gone), nullptr);
    std::vector<void*> names = {nullptr, stale, gone, &names, GlobalLock(live)};
    const auto liveBits = reinterpret_cast<std::uintptr_t>(live);
    const auto goneBits = reinterpret_cast<std::uintptr_t>(gone);
    for (std::uintptr_t bit = 1; bit != 0; bit <<= 1) {
        for (const std::uintptr_t name : {bit, ~bit, liveBits ^ bit, goneBits + bit}) {
            names.push_back(reinterpret_cast<void*>(name));
        }
    }
    for (void* name : names) {
        SetLastError(0);
        EXPECT_EQ(GlobalLock(name), nullptr) << name;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE) << name;
        EXPECT_EQ(GlobalReAlloc(name, 8, GMEM_MOVEABLE), nullptr) << name;
        EXPECT_EQ(GlobalUnlock(name), 0) << name;
        EXPECT_EQ(GlobalSize(name), 0u) << name;
        EXPECT_EQ(GlobalFree(name), name) << name;
    }
    EXPECT_EQ(GlobalSize(live), 16u);
    EXPECT_EQ(GlobalFree(live), nullptr);
}

TEST(GlobalMemory, ThreadsKeepTheirBlocksApart) {
    veldt::tests::OnThreads(4, [](int number) {
        std::vector<HGLOBAL> blocks;
        for (SIZE_T round = 0; round < 2000; ++round) {
            blocks.push_back(GlobalAlloc(GMEM_MOVEABLE, 32));
            std::memset(GlobalLock(blocks.back()), number, 32);
            GlobalUnlock(blocks.back());
            const HGLOBAL other = blocks[round * 7919 % blocks.size()];
            ASSERT_EQ(GlobalReAlloc(other, 32 + round % 64, GMEM_MOVEABLE), other);
        }
        for (const HGLOBAL block : blocks) {
            ASSERT_TRUE(AllEqual(GlobalLock(block), 0, 32, number));
            ASSERT_EQ(GlobalFree(block), nullptr);
        }
    });
}

}  // namespace
