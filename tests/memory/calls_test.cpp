// Pointer and handle calls: sizes at the limits of each kind of block, the result register, locks.
#include <algorithm>
#include <cstring>
#include <string>

#include "heap/granule.h"
#include "heap/relocatable_blocks.h"
#include "memory/handles.h"
#include "memory/memory_calls.h"

namespace veldt::tests {

namespace {

using namespace heap;

class Calls : public WithInstance {};

/// A figure that holds with 4-byte pointers.
void ExpectFigure(std::uint32_t value, std::uint32_t with4BytePointers) {
    if (kPointer == 4) {
        EXPECT_EQ(value, with4BytePointers);
    }
}

PageKind KindOfPage(char** h) {
    return KindOf(PageBase(*h));
}

TEST_F(Calls, PointersTakeTheBlockOfTheirSize) {
    EXPECT_EQ(memory::InstancePool->flags, 0x8000);
    const struct {
        std::int32_t size;
        std::uint32_t physical, excess;
    } rows[] = {{0, 20, 20}, {18, 20, 2}, {19, 22, 3}, {4094, 4098, 4}, {4095, 8164, 4069}};
    for (const auto& row : rows) {
        char* p = _XNewPtr(row.size);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(XGetPtrSize(p), row.size);
        EXPECT_EQ(XMemError(), 0);
        const std::uint32_t physical = PoolBlockSize(p);
        ExpectFigure(physical, row.physical);
        ExpectFigure(Load<std::uint16_t>(p + physical - 2), row.excess);
        XDisposePtr(p);
    }
}

TEST_F(Calls, HandlesTakeTheBlockOfTheirSize) {
    const struct {
        std::int32_t size;
        std::uint32_t usable;
        PageKind kind;
    } rows[] = {{0, 8, kKindRelocatable}, {4088, 4092, kKindRelocatable}, {4089, 8164, kKindLarge}};
    for (const auto& row : rows) {
        char** h = _XNewHandle(row.size);
        ASSERT_NE(h, nullptr);
        EXPECT_EQ(XGetHandleSize(h), row.size);
        ExpectFigure(RelocSize(reinterpret_cast<HandleSlot*>(h)), row.usable);
        ExpectFigure(KindOfPage(h), row.kind);
    }
}

TEST_F(Calls, NegativeSizesFindNoMemory) {
    char* p = _XNewPtr(5);
    char** h = _XNewHandle(5);
    for (const std::int32_t size : {-1, -2}) {
        EXPECT_EQ(_XNewPtr(size), nullptr);
        EXPECT_EQ(_XNewPtrClear(size), nullptr);
        EXPECT_EQ(_XNewHandleClear(size), nullptr);
        EXPECT_EQ(XMemError(), kMemFull);
        EXPECT_EQ(XGetPtrSize(p) + XGetHandleSize(h), 10);
        EXPECT_EQ(_XNewHandle(size), nullptr);
        EXPECT_EQ(XMemError(), kMemFull);
        EXPECT_EQ(_XSetHandleSize(h, size), 0);
        _XSetPtrSize(p, size);
        EXPECT_EQ(XMemError(), kMemFull);
    }
}

TEST_F(Calls, ClearedBlocksAreZeroInMemoryThatWasUsed) {
    char* p = _XNewPtr(100);
    char** h = _XNewHandle(100);
    std::memset(p, 7, 100);
    std::memset(*h, 7, 100);
    XDisposePtr(p);
    XDisposeHandle(h);
    const std::string zeroes(100, '\0');
    EXPECT_EQ(std::string(_XNewPtrClear(100), 100), zeroes);
    EXPECT_EQ(BytesOf(_XNewHandleClear(100)), zeroes);
}

TEST_F(Calls, PointersResizeInPlaceOrNotAtAll) {
    char* fixed = _XNewPtr(5);
    const auto most = static_cast<std::int32_t>(PoolBlockSize(fixed)) - 2;
    ExpectFigure(static_cast<std::uint32_t>(most), 18);
    _XSetPtrSize(fixed, most);
    EXPECT_EQ(XMemError(), 0);
    _XSetPtrSize(fixed, 4);
    EXPECT_EQ(XGetPtrSize(fixed), 4);
    _XSetPtrSize(fixed, most + 1);
    EXPECT_EQ(XMemError(), kMemFull);
    EXPECT_EQ(XGetPtrSize(fixed), 4);

    // The second stands below the first, which is in its way.
    _XNewPtr(100);
    char* hemmed = _XNewPtr(100);
    std::memset(hemmed, 'h', 100);
    _XSetPtrSize(hemmed, 1000);
    EXPECT_EQ(XMemError(), kMemFull);
    EXPECT_EQ(XGetPtrSize(hemmed), 100);
    EXPECT_EQ(std::string(hemmed, 100), std::string(100, 'h'));
}

char noPage[200];

TEST_F(Calls, WhatIsNoBlockIsRefused) {
    XDisposePtr(noPage + 100);
    EXPECT_EQ(XMemError(), kMemBadBlock);
    SpoilMemError();
    EXPECT_EQ(XGetPtrSize(noPage + 100), 0);
    EXPECT_EQ(XMemError(), kMemBadBlock);
    _XSetPtrSize(noPage + 100, 1);
    EXPECT_EQ(XMemError(), kMemFull);
    char** h = _XNewHandle(5);
    XDisposeHandle(h);
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(XGetHandleSize(h), 0);
    EXPECT_EQ(XMemError(), kMemBadBlock);
    SpoilMemError();
    XDisposeHandle(h);
    EXPECT_EQ(XMemError(), kMemBadBlock);
}

TEST_F(Calls, SomeLeaveTheRegisterAlone) {
    char** h = _XNewHandle(5);
    SpoilMemError();
    EXPECT_EQ(XStripAddress(noPage), noPage);
    XMemCompactHeap();
    XHPurge(h);
    XHNoPurge(h);
    XHSetState(h, 0);
    EXPECT_EQ(XMemError(), kMemFull);
}

TEST_F(Calls, LocksAreCountedAndTakenOffTogether) {
    char** h = _XNewHandle(5);
    for (const int locks : {2, 300}) {
        for (int i = 0; i < locks; ++i) XHLock(h);
        EXPECT_EQ(XHGetState(h), std::min(locks, 127));
        EXPECT_EQ(XMemError(), 0);
        XHUnlock(h);
        EXPECT_EQ(XHGetState(h), 0);
    }
    for (const char state : {'\1', '\3', '\1', '\0'}) {
        XHSetState(h, state);
        EXPECT_EQ(XHGetState(h), state);
    }
}

TEST_F(Calls, ALockedHandleMovesOnlyToGrow) {
    char** h = _XNewHandle(100);
    _XNewHandle(100);
    std::memset(*h, 'h', 100);
    XHLock(h);
    const char* before = *h;
    XMoveHHi(h);
    XMemCompactHeap();
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(*h, before);
    EXPECT_EQ(KindOfPage(h), kKindRelocatable);
    EXPECT_EQ(_XSetHandleSize(h, 3000), 1);
    EXPECT_NE(*h, before);
    EXPECT_EQ(XHGetState(h), 1);
    EXPECT_EQ(BytesOf(h).substr(0, 100), std::string(100, 'h'));
}

TEST_F(Calls, MovedHighAHandleIsLockedUntilItIsUnlocked) {
    char** h = NewHandle("moved high");
    XMoveHHi(h);
    EXPECT_EQ(KindOfPage(h), kKindVariable);
    XHLock(h);
    EXPECT_EQ(XHGetState(h), 1);
    EXPECT_EQ(_XSetHandleSize(h, 5), 1);
    XHUnlock(h);
    EXPECT_EQ(XHGetState(h), 0);
    EXPECT_EQ(KindOfPage(h), kKindRelocatable);
    EXPECT_EQ(BytesOf(h), "moved");
    XEmptyHandle(h);
    EXPECT_EQ(XGetHandleSize(h), 0);
    EXPECT_NE(*h, nullptr);
}

}  // namespace

}  // namespace veldt::tests
