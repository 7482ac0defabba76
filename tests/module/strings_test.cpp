#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>

#include "strings/orders.h"

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
        EXPECT_STREQ(*this, "first");
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

TEST(CString, IsMadeOfEveryForm) {
    unsigned short wide[] = {'w', 'i', 0};
    const auto* const prefixed = reinterpret_cast<const unsigned char*>("\3pas");
    const XCString text("text");
    XCString made;
    EXPECT_STREQ(XCString(text), "text");
    EXPECT_STREQ(XCString(wide), "wi");
    EXPECT_EQ(XCString("texts", 4).GetLength(), 4);
    EXPECT_EQ(XGetEmptyString().GetLength(), made.GetLength());
    made = text;
    made += text;
    made += '!';
    made += "?";
    made += prefixed;
    EXPECT_STREQ(made, "texttext!?pas");
    EXPECT_STREQ(made = 'c', "c");
    EXPECT_STREQ(made = "d", "d");
    EXPECT_STREQ(made = wide, "wi");
    EXPECT_STREQ(made = prefixed, "pas");
    EXPECT_EQ(made.LoadStringA(nullptr, 12345), 0);
    OpenString("some").Workers();
}

TEST(CString, IsSearchedAndEdited) {
    XCString text("  Ab,c  ");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(text.Find('b') + text.Find(",c"), 3);
    EXPECT_STREQ(text.Left(1), "A");
    EXPECT_STREQ(text.Right(1), "c");
    EXPECT_STREQ(text.SpanExcluding(","), "Ab");
    EXPECT_EQ(text[0], 'A');
    text.SetAt(3, 'd');
    EXPECT_EQ(text.GetAt(3), 'd');
    text.ReplaceChar(',', ';');
    text.MakeLower();
    EXPECT_EQ(text.Compare("ab;d"), 0);
    EXPECT_EQ(text.CompareNoCase("AB;D"), 0);
    unsigned short* const wide = text.AllocSysString();
    EXPECT_EQ(wide[3], 'd');
    XSysFreeString(wide);
    text.Empty();
    EXPECT_EQ(text.IsEmpty(), 1);

    std::strcpy(text.GetBuffer(40), "longer");
    text.ReleaseBuffer();
    EXPECT_STREQ(text, "longer");
    text.GetBufferSetLength(2);
    text.FreeExtra();
    EXPECT_EQ(text.GetAllocLength(), 2);
    EXPECT_STREQ(text.LockBuffer(), "lo");
    text.UnlockBuffer();
}

TEST(CString, IsOrdered) {
    EXPECT_EQ(veldt::strings::DifferenceOf("ab", "ad", 2), 'b' - 'd');
    const XCString b("b");
    for (const char* const text : {"a", "b", "c"}) {
        const int order = *text - 'b';
        EXPECT_TRUE(veldt::tests::OperatorsAgree(XCString(text), b, order));
        EXPECT_TRUE(veldt::tests::OperatorsAgree(XCString(text), "b", order));
        EXPECT_TRUE(veldt::tests::OperatorsAgree(text, b, order));
    }
}

}  // namespace
