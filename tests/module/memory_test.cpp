// One call of each memory function that no other test on the module makes.
#include "memory/handles.h"

namespace {

using Memory = veldt::tests::WithInstance;

TEST_F(Memory, PointersStayWhereTheyAre) {
    char* const p = _XNewPtr(100);
    p[49] = 'p';
    EXPECT_EQ(XStripAddress(p), p);
    _XSetPtrSize(p, 50);
    EXPECT_EQ(XGetPtrSize(p), 50);
    EXPECT_EQ(p[49], 'p');
    char* const clear = _XNewPtrClear(3);
    EXPECT_EQ(clear[0] | clear[1] | clear[2], 0);
    char** const h = _XNewHandle(3);
    XHPurge(h);
    XHNoPurge(h);
    EXPECT_EQ(XGetHandleSize(h), 3);
}

TEST(Bytes, AreMovedFilledComparedAndMasked) {
    char a[] = "abcdef";
    XBlockMove(a, a + 2, 4);
    EXPECT_STREQ(a, "ababcd");
    XMemSet(a, 'x', 2);
    XBlockClear(a + 4, 2);
    EXPECT_EQ(XBlockEqual(a, "xxab\0\0", 6), 1);
    XMemSetOr(a, "\x06", 1);
    XMemSetAnd(a + 1, "\x18", 1);
    XMemSetXor(a + 2, "a", 1);
    EXPECT_EQ(XBlockEqual(a, "~\x18\0b", 4), 1);
}

class OpenAllocator : public XAllocator {
  public:
    using XAllocator::Empty;
};

TEST(Blocks, HaveAnOwnerOrAName) {
    OpenAllocator a;
    XAllocator b;
    EXPECT_EQ(a.Allocate(4) + b.AllocateClear(4), 2);
    EXPECT_EQ(a.Reallocate(8) + b.ReallocateClear(8), 2);
    void* const block = *b;
    a.Attach(b);
    EXPECT_EQ(*a, block);
    a.Detach(b);
    EXPECT_EQ(a.Allocated(), 0);
    static_cast<XAllocator&>(a) = b;
    a.Empty();
    EXPECT_EQ(a.GetSize(), 0u);
    const XAllocatorLocker locker(b);
    b.Lock();
    b.Unlock();
    b.Free();

    void* global = XGlobalReAlloc(XGlobalAlloc(10), 20);
    EXPECT_GE(XGlobalSize(global), 20u);
    EXPECT_NE(XGlobalLock(global), nullptr);
    XGlobalUnlock(global);
    XGlobalFree(global);
}

}  // namespace
