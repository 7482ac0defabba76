// The run against a model calls most functions; the rest are called here.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>
#include <random>

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

TEST(CString, HasCallsThatTheModelLeavesOut) {
    const XCString text("text");
    EXPECT_EQ(text.IsEmpty(), 0);
    EXPECT_EQ(text[1], 'e');
    EXPECT_EQ(text.GetAt(2), 'x');
    unsigned short* const wide = text.AllocSysString();
    EXPECT_STREQ(XCString(wide), "text");
    XSysFreeString(wide);
    EXPECT_EQ(veldt::strings::DifferenceOf("ab", "ad", 2), 'b' - 'd');
    OpenString("some").Workers();
}

}  // namespace
