#include <gtest/gtest.h>
#include <veldt20/allocator.h>

#include <algorithm>
#include <cstring>

namespace {

bool refusing = false;
long live = 0;  // blocks obtained from malloc and realloc and not given back

}  // namespace

// The names that the linker gives to a function that it is told to wrap, and to what wraps it.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) {
    void* block = refusing ? nullptr : __real_malloc(size);
    if (block != nullptr) {
        std::memset(block, '?', size);  // so that no new byte is zero by chance
        ++live;
    }
    return block;
}

void* __wrap_realloc(void* block, std::size_t size) {
    return block == nullptr ? __wrap_malloc(size)
           : refusing       ? nullptr
                            : __real_realloc(block, size);
}

void __wrap_free(void* block) {
    live -= block != nullptr;
    __real_free(block);
}
}

namespace {

char* Bytes(const XAllocator& allocator) {
    return static_cast<char*>(*allocator);
}

bool AllAre(const char* bytes, std::size_t from, std::size_t to, char value) {
    return std::all_of(bytes + from, bytes + to, [=](char c) { return c == value; });
}

TEST(Allocator, ClearsJustTheNewBytes) {
    XAllocator allocator;
    for (int round = 0; round < 2; ++round) {  // in the second, GetSize tells 300 of no block
        ASSERT_EQ(allocator.ReallocateClear(100), 1);
        EXPECT_TRUE(AllAre(Bytes(allocator), 0, 100, 0));
        std::memset(*allocator, 'x', 100);
        ASSERT_EQ(allocator.ReallocateClear(40), 1);
        ASSERT_EQ(allocator.ReallocateClear(300), 1);
        EXPECT_TRUE(AllAre(Bytes(allocator), 0, 40, 'x'));
        EXPECT_TRUE(AllAre(Bytes(allocator), 40, 300, 0));
        allocator.Free();
        allocator.Free();
        EXPECT_EQ(allocator.GetSize(), 300u);
        EXPECT_EQ(*allocator, nullptr);
    }
    ASSERT_EQ(allocator.AllocateClear(6), 1);
    EXPECT_TRUE(AllAre(Bytes(allocator), 0, 6, 0));
    allocator.Free();
    ASSERT_EQ(allocator.Allocate(0), 1);
    EXPECT_EQ(allocator.Allocated(), 1);
    EXPECT_EQ(allocator.GetSize(), 0u);
}

TEST(Allocator, HandsItsBlockOver) {
    const long before = live;
    {
        XAllocator a;
        XAllocator b;
        a.Allocate(10);
        b.Allocate(20);
        void* block = *b;
        a.Attach(b);
        EXPECT_EQ(live - before, 1);
        EXPECT_EQ(*b, nullptr);
        EXPECT_EQ(b.GetSize(), 0u);
        a.Attach(a);
        EXPECT_EQ(*a, block);
        a.Detach(b);
        EXPECT_EQ(*a, nullptr);
        a = b;
        a.Attach(b);  // of two names for the block, one is left
        EXPECT_EQ(*a, block);
        EXPECT_EQ(a.GetSize(), 20u);
        EXPECT_EQ(*b, nullptr);
    }
    EXPECT_EQ(live, before);
}

TEST(Allocator, KeepsItsBlockWhenThereIsNoMemory) {
    XAllocator allocator;
    ASSERT_EQ(allocator.Allocate(30), 1);
    void* block = *allocator;
    refusing = true;  // assertions allocate too
    int done = allocator.Reallocate(5000) + allocator.ReallocateClear(5000);
    refusing = false;
    EXPECT_EQ(done, 0);
    EXPECT_EQ(*allocator, block);
    EXPECT_EQ(allocator.GetSize(), 30u);
    allocator.Free();
    refusing = true;
    done = allocator.Allocate(40) + allocator.AllocateClear(40);
    refusing = false;
    EXPECT_EQ(done, 0);
    EXPECT_EQ(allocator.Allocated(), 0);
    EXPECT_EQ(allocator.GetSize(), 30u);
}

TEST(GlobalBlocks, AreNamedLockedAndResized) {
    void* block = XGlobalAlloc(3000);
    EXPECT_TRUE(AllAre(static_cast<char*>(XGlobalLock(block)), 0, 3000, 0));
    XGlobalUnlock(block);
    for (const std::uint32_t size : {5000u, 100000u, 3000u, 0u}) {
        *static_cast<char*>(XGlobalLock(block)) = 'x';
        XGlobalUnlock(block);
        block = XGlobalReAlloc(block, size);
        EXPECT_EQ(*static_cast<char*>(XGlobalLock(block)), 'x');
        XGlobalUnlock(block);
        EXPECT_GE(XGlobalSize(block), std::max(size, 2u));
    }
    XGlobalFree(block);
    XGlobalFree(nullptr);
}

}  // namespace
