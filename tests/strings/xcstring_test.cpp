// XCString: what the model leaves out. The orders, the limits of length, texts from resources.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <climits>
#include <cstring>
#include <new>
#include <string>

#include "strings/open_string.h"
#include "strings/orders.h"
#include "support/refusing_new.h"

namespace {

using veldt::tests::OpenString;
using veldt::tests::OperatorsAgree;
using veldt::tests::RefusedNew;

TEST(XCString, EmptyOnesShareOneBufferAndTakeNoMemory) {
    const long before = veldt::tests::LiveBlocks();
    OpenString a;
    const XCString b(a);
    const XCString null(nullptr, -1);
    const XCString zero("abc", 0);
    EXPECT_EQ(a.LockBuffer(), static_cast<const char*>(a));
    a.UnlockBuffer();
    a = "";
    a += "";
    EXPECT_EQ(a.GetData()->refCount, -1);
    for (const XCString* s : {static_cast<const XCString*>(&a), &b, &null, &zero}) {
        EXPECT_EQ(static_cast<const char*>(*s), static_cast<const char*>(XGetEmptyString()));
        EXPECT_EQ(s->GetAllocLength(), 0);
        EXPECT_EQ(s->IsEmpty(), 1);
    }
    EXPECT_EQ(veldt::tests::LiveBlocks(), before);
}

TEST(XCString, OrdersBySignedBytes) {
    const struct {
        std::string a, b;
        int exact, folded;
    } cases[] = {{"\xE9", "a", -1, 0xE9 - 256 - 'a'},
                 {"abc", "abc", 0, 0},
                 {"abc", "abcd", -1, -'d'},
                 {"ABC", "abd", -1, -1},
                 {"ABD", "abb", -1, 2},
                 {"abc", "ABC", 1, 0},
                 {"[", "{", -1, '[' - '{'},
                 {"\xC9", "\xE9", -1, -32},
                 {std::string(37, 'x') + "\x80", std::string(37, 'x') + "\x7F", -1, -255}};
    for (const auto& c : cases) {
        const XCString a(c.a.c_str()), b(c.b.c_str());
        EXPECT_EQ(a.Compare(b), c.exact);
        EXPECT_EQ(b.Compare(a), -c.exact);
        EXPECT_EQ(a.CompareNoCase(b), c.folded);
        EXPECT_EQ(b.CompareNoCase(a), -c.folded);
        EXPECT_TRUE(OperatorsAgree(a, b, c.exact));
        EXPECT_TRUE(OperatorsAgree(a, c.b.c_str(), c.exact));
        EXPECT_TRUE(OperatorsAgree(c.a.c_str(), b, c.exact));
    }
    EXPECT_EQ(XCString("a\0b", 3) == XCString("a\0c", 3), 1);
}

// The length is set when the writing ends; the copy goes by the terminator.
TEST(XCString, ACopyOfALockedOneHasWhatWasWrittenSoFar) {
    XCString s;
    s.GetBuffer(8);
    std::strcpy(s.LockBuffer(), "abc");
    EXPECT_STREQ(XCString(s), "abc");
}

TEST(XCString, NoLengthIsBeyond31Bits) {
    OpenString s("abc");
    EXPECT_THROW(s.ConcatCopy(INT_MAX, "", INT_MAX, ""), std::bad_alloc);
    EXPECT_THROW(s.AllocCopy(s, INT_MAX, 0, 1), std::bad_alloc);
    EXPECT_THROW(s.GetBuffer(INT_MAX), std::bad_alloc);
    EXPECT_STREQ(s, "abc");
    OpenString longest("abc");
    try {
        longest.GetBufferSetLength(INT_MAX - 1);
    } catch (const std::bad_alloc&) {
        EXPECT_STREQ(longest, "abc");
        return;
    }
    EXPECT_EQ(longest.GetLength(), INT_MAX - 1);
    EXPECT_THROW(longest += 'x', std::bad_alloc);
    EXPECT_THROW(longest += longest, std::bad_alloc);
    EXPECT_EQ(longest.GetAt(2), 'c');
    EXPECT_EQ(longest.GetAt(INT_MAX - 1), 0);
}

// The resources, under ids that say their lengths, are in resources.rc and resources_posix.cpp.
TEST(XCString, LoadsTextsOfAnyLength) {
    const struct {
        unsigned int length;
        int capacity;
    } cases[] = {{0, 0}, {254, 254}, {255, 511}, {510, 511}, {511, 767}, {512, 767}, {1200, 1279}};
    for (const auto& c : cases) {
        const std::string text = c.length == 0 ? "" : std::string(c.length - 1, 'x') + 'y';
        XCString s;
        EXPECT_EQ(s.LoadStringA(nullptr, c.length), c.length != 0);
        EXPECT_EQ(std::string(s), text);
        EXPECT_EQ(s.GetAllocLength(), c.capacity);

        XCString locked("abc");
        locked.GetBuffer(1300);
        const char* buffer = locked.LockBuffer();
        locked.LoadStringA(nullptr, c.length);
        EXPECT_EQ(static_cast<const char*>(locked), buffer);
        EXPECT_EQ(std::string(locked), text);
    }
    XCString old("abc");
    EXPECT_EQ(old.LoadStringA(nullptr, 9999), 0);
    EXPECT_STREQ(old, "");
}

TEST(XCString, ARefusedLoadLeavesTheTextAsItWas) {
    for (const unsigned int id : {254u, 511u, 1200u}) {
        for (long nth = 1;; ++nth) {
            XCString s("abc");
            const XCString sharer(s);
            bool refused;
            {
                const RefusedNew refusal(nth);
                try {
                    s.LoadStringA(nullptr, id);
                } catch (const std::bad_alloc&) {
                }
                refused = refusal.Happened();
            }
            if (!refused) break;
            EXPECT_STREQ(s, "abc");
            EXPECT_EQ(static_cast<const char*>(s), static_cast<const char*>(sharer));
        }
    }
}

}  // namespace
