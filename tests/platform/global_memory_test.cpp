#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/platform.h"

namespace {

using namespace veldt::platform;

constexpr UINT kZeroed = GMEM_MOVEABLE | GMEM_ZEROINIT;

bool AllEqual(const void* bytes, SIZE_T from, SIZE_T to, int value) {
    const auto* first = static_cast<const unsigned char*>(bytes);
    return std::all_of(first + from, first + to, [&](unsigned char c) { return c == value; });
}

TEST(GlobalMemory, ResizingKeepsWhatWasThereAndClearsWhatIsNewWhenAsked) {
    const HGLOBAL block = GlobalAlloc(kZeroed, 100);
    ASSERT_NE(block, nullptr);
    auto* data = static_cast<unsigned char*>(GlobalLock(block));
    EXPECT_TRUE(AllEqual(data, 0, 100, 0));
    std::memset(data, 7, 100);
    GlobalUnlock(block);
    // Down and up again: what was cut off must not come back.
    for (const SIZE_T size : {SIZE_T{97}, SIZE_T{100}, SIZE_T{10}, SIZE_T{200000}}) {
        ASSERT_EQ(GlobalReAlloc(block, size, kZeroed), block);
        EXPECT_EQ(GlobalSize(block), size);
    }
    data = static_cast<unsigned char*>(GlobalLock(block));
    EXPECT_TRUE(AllEqual(data, 0, 10, 7));
    EXPECT_TRUE(AllEqual(data, 10, 200000, 0));
    EXPECT_EQ(GlobalFree(block), nullptr);
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
    for (std::uintptr_t bit = 1; bit != 0; bit <<= 1) {
        names.push_back(reinterpret_cast<void*>(bit));
        names.push_back(reinterpret_cast<void*>(~bit));
        names.push_back(reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(live) ^ bit));
        names.push_back(reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(gone) + bit));
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

TEST(GlobalMemory, EmptyBlockHasANameButNoAddress) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 0);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(GlobalSize(block), 0u);
        EXPECT_EQ(GlobalLock(block), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_DISCARDED);
        EXPECT_EQ(GlobalReAlloc(block, 5, kZeroed), block);
        EXPECT_TRUE(AllEqual(GlobalLock(block), 0, 5, 0));
        GlobalUnlock(block);
        EXPECT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), block);
    }
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, ThreadsKeepTheirBlocksApart) {
    std::vector<std::thread> threads;
    for (int number = 1; number <= 4; ++number) {
        threads.emplace_back([number] {
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
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
