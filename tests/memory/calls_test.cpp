// Pointer and handle calls: sizes at the limits of each kind of block, and the result register.
#include <cstring>
#include <string>

#include "heap/heap_fixture.h"
#include "memory/handles.h"
#include "memory/memory_calls.h"

namespace veldt::tests {

namespace {

class Calls : public WithInstance {};

TEST_F(Calls, BlocksAreOfTheNextLargerSize) {
    EXPECT_EQ(memory::InstancePool->flags, 0x8000);
    struct Row {
        std::int32_t size;
        std::uint32_t usable;  // with 4-byte pointers
    };
    for (const Row row : {Row{0, 20}, Row{18, 20}, Row{19, 22}, Row{4094, 4098}, Row{4095, 8164}}) {
        char* p = _XNewPtr(row.size);
        EXPECT_EQ(XGetPtrSize(p), row.size);
        EXPECT_EQ(XMemError(), 0);
        const std::uint32_t usable = PoolBlockSize(p);
        ExpectFigure(usable, row.usable);
        EXPECT_EQ(usable - Load<std::uint16_t>(p + usable - 2), row.size);
        XDisposePtr(p);
    }
    for (const Row row : {Row{0, 8}, Row{4088, 4092}, Row{4089, 8164}}) {
        char** h = _XNewHandle(row.size);
        EXPECT_EQ(XGetHandleSize(h), row.size);
        ExpectFigure(RelocSize(reinterpret_cast<HandleSlot*>(h)), row.usable);
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

TEST_F(Calls, PointersAreClearedAndResizedInPlace) {
    char* p = _XNewPtr(100);
    std::memset(p, 'p', 100);
    SpoilMemError();
    XDisposePtr(p);
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(std::string(_XNewPtrClear(100), 100), std::string(100, '\0'));

    char* below = _XNewPtr(5);
    p = _XNewPtr(7);
    const auto most = static_cast<std::int32_t>(PoolBlockSize(p)) - 2;
    EXPECT_EQ(XGetPtrSize(p), 7);
    for (const auto& [asked, got] : {std::pair{most, most}, {4, 4}, {most + 1, 4}}) {
        _XSetPtrSize(p, asked);
        EXPECT_EQ(XMemError(), asked == got ? 0 : kMemFull);
        EXPECT_EQ(XGetPtrSize(p), got);
    }
    EXPECT_EQ(XGetPtrSize(below), 5);
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

}  // namespace

}  // namespace veldt::tests
