// The run against a model calls most functions; the rest are called here.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>
#include <random>

#include "strings/orders.h"
#include "strings/xcstring_run.h"
#include "support/seed.h"

namespace {

// Reaches what only derived strings may call.
class OpenString : public XCString {
  public:
    using XCString::XCString;

    void Workers() {
        EXPECT_EQ(GetData()->length, GetLength());
        CopyBeforeWrite();
        AllocBeforeWrite(20);
        AssignCopy(5, "first");
        ConcatInPlace(1, ",");
        XCString copy;
        AllocCopy(copy, 2, 1, 3);
        EXPECT_STREQ(copy.Left(2), "ir");
        XCStringData* const replaced = GetData();
        ConcatCopy(3, "new", 4, " one");
        Release(replaced);
        EXPECT_STREQ(*this, "new one");
        EXPECT_EQ(SafeStrlen(nullptr), 0);
        char buffer[4];
        EXPECT_EQ(XCString::LoadStringA(nullptr, 12345, buffer, sizeof(buffer)), 0);
        Release();
        EXPECT_EQ(IsEmpty(), 1);
        AllocBuffer(3);
        std::memcpy(GetBuffer(0), "abc", 4);
        XCStringData* const data = GetData();
        Init();
        Release(data);
    }
};

TEST(CString, AgreesWithTheModel) {
    std::mt19937 random(veldt::tests::Seed());
    veldt::tests::XCStringRun run(random);
    for (int step = 0; step < 20000; ++step) {
        run.Step();
        run.Check();
        ASSERT_FALSE(HasFailure()) << "at step " << step;
    }
}

TEST(CString, IsMadeSearchedAndCompared) {
    XCString text("  Ab,c  "), none;
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(text.Find(",c"), 2);
    EXPECT_EQ(text[0], text.GetAt(0));
    EXPECT_EQ(text.Compare("Ab,c") + text.CompareNoCase("aB,C"), 0);
    unsigned short* const wide = text.AllocSysString();
    EXPECT_STREQ(XCString(wide), "Ab,c");
    XSysFreeString(wide);
    EXPECT_EQ(none.LoadStringA(nullptr, 12345), 0);
    EXPECT_EQ(none.IsEmpty(), 1);
    EXPECT_EQ(none.LoadStringA(nullptr, 254), 1);
    EXPECT_EQ(none.GetLength(), 254);
    EXPECT_EQ(veldt::strings::DifferenceOf("ab", "ad", 2), 'b' - 'd');
    const XCString b("b");
    for (const char* const other : {"a", "b", "c"}) {
        const int order = *other - 'b';
        EXPECT_TRUE(veldt::tests::OperatorsAgree(XCString(other), b, order));
        EXPECT_TRUE(veldt::tests::OperatorsAgree(XCString(other), "b", order));
        EXPECT_TRUE(veldt::tests::OperatorsAgree(other, b, order));
    }
    OpenString("some").Workers();
}

}  // namespace
