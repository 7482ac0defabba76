// What the random calls of handles_test.cpp leave out: refusals, sizes at the borders of 32 bits,
// and global memory.
#include <climits>

#include "memory/handles.h"

namespace {

using namespace veldt::tests;

class HandleComposition : public WithInstance {
  protected:
    /// A handle that was valid once.
    static char** Disposed() {
        char** h = NewHandle("gone");
        XDisposeHandle(h);
        return h;
    }
};

TEST_F(HandleComposition, NothingIsNoBytes) {
    char** h = NewHandle("hello");
    ASSERT_EQ(_XPtrAndHand(nullptr, h, 0), 1);
    ASSERT_EQ(_XHandAndHand(Disposed(), h), 1);
    EXPECT_EQ(BytesOf(h), "hello");
    ASSERT_EQ(_XPtrToXHand(nullptr, h, 0), 1);
    EXPECT_EQ(BytesOf(h), "");
    char** copy = Disposed();
    EXPECT_EQ(_XHandToHand(&copy), 1);
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(XGetHandleSize(copy), 0);
}

TEST_F(HandleComposition, RefusesWhatCannotBeDone) {
    char** h = NewHandle("hello");
    char* noBlock = nullptr;
    SpoilMemError();
    EXPECT_EQ(_XPtrToXHand("x", nullptr, 1), 0);
    EXPECT_EQ(_XPtrAndHand("x", nullptr, 1), 0);
    EXPECT_EQ(_XHandAndHand(nullptr, h), 0);
    EXPECT_EQ(_XPtrToXHand("x", &noBlock, 1), 0);
    EXPECT_EQ(_XHandAndHand(&noBlock, h), 0);
    EXPECT_EQ(XMemError(), kMemFull);
    // A sum beyond 32 bits is refused, so that no source is read.
    for (const auto& refuse : {+[](char** to) { return _XPtrAndHand("x", to, -3); },
                               +[](char** to) { return _XPtrToXHand("x", to, -1); },
                               +[](char**) { return _XPtrToXHand("x", Disposed(), 1); },
                               +[](char**) { return _XPtrAndHand("x", Disposed(), 1); },
                               +[](char** from) { return _XHandAndHand(from, Disposed()); }}) {
        EXPECT_EQ(XGetHandleSize(h), 5);
        EXPECT_EQ(refuse(h), 0);
        EXPECT_EQ(XMemError(), kMemFull);
    }
    EXPECT_EQ(BytesOf(h), "hello");
    EXPECT_EQ(_XPtrToHand("x", &h, -1), 0);
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(LiveHandles(), 1u);
}

TEST_F(HandleComposition, MungerRefusesSumsBeyond32Bits) {
    char** h = NewHandle("hello");
    EXPECT_EQ(__XMunger(h, INT_MAX, nullptr, INT_MAX, "x", 0), -1);
    EXPECT_EQ(__XMunger(h, 0, nullptr, INT_MAX, "x", 1), -1);
    EXPECT_EQ(__XMunger(h, INT_MIN, "l", 1, nullptr, 0), -1);
    EXPECT_EQ(__XMunger(h, INT_MAX, "l", 1, "x", 1), -1);
    EXPECT_EQ(__XMunger(h, 0, "l", 1, "x", INT_MIN), -1);
    EXPECT_EQ(__XMunger(h, INT_MAX - 1, nullptr, 0, "ab", 2), -1);
    EXPECT_EQ(__XMunger(h, INT_MAX, nullptr, -1, "ab", 2), -1);
    EXPECT_EQ(BytesOf(h), "hello");

    EXPECT_EQ(__XMunger(NewHandle(""), 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(__XMunger(Disposed(), 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(XMemError(), kMemBadBlock);
    EXPECT_EQ(__XMunger(Disposed(), 0, nullptr, 0, "ab", 2), -1);
    EXPECT_EQ(XMemError(), kMemFull);
}

TEST_F(HandleComposition, GoesThroughGlobalMemoryAndBack) {
    char** h = nullptr;
    void* global = nullptr;
    for (const std::int32_t size : {1, 70000}) {
        std::string bytes(static_cast<std::size_t>(size), 'g');
        ASSERT_EQ(XPtrToXGlobal(bytes.data(), &global, size), 1);
        ASSERT_EQ(_XGlobalToHand(global, &h), 1);
        EXPECT_EQ(XHGetState(h), 0);
        EXPECT_EQ(BytesOf(h).substr(0, bytes.size()), bytes);
        EXPECT_EQ(XGlobalSize(global), static_cast<std::uint32_t>(XGetHandleSize(h)));
        XDisposeHandle(h);
        XGlobalFree(global);
        EXPECT_EQ(_XGlobalToHand(global, &h), 0) << "freed";
        EXPECT_EQ(XMemError(), 0);
        EXPECT_EQ(h, nullptr);
    }
    char byte = 'x';
    SpoilMemError();
    EXPECT_EQ(XPtrToXGlobal(nullptr, &global, 1), 0);
    EXPECT_NE(global, nullptr) << "left as it was";
    EXPECT_EQ(XPtrToXGlobal(&byte, nullptr, 1), 0);
    EXPECT_EQ(XPtrToXGlobal(&byte, &global, 0), 0) << "an empty block can't be locked";
    EXPECT_EQ(global, nullptr);
    EXPECT_EQ(_XGlobalToHand(nullptr, &h), 0);
    EXPECT_EQ(_XGlobalToHand(&byte, nullptr), 0);
    EXPECT_EQ(XMemError(), kMemFull);
    EXPECT_EQ(LiveHandles(), 0u);
}

}  // namespace
