#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>
#include <string>

namespace {

const unsigned char* Prefixed(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

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

TEST(CString, IsMadeFromEveryForm) {
    unsigned short wide[] = {'w', 'i', 0};
    const XCString text("text");
    XCString made[] = {XCString(), XCString(text), XCString(wide), XCString("texts", 4)};
    EXPECT_EQ(made[0].IsEmpty(), 1);
    EXPECT_STREQ(made[1], "text");
    EXPECT_STREQ(made[2], "wi");
    EXPECT_EQ(made[3].GetLength(), 4);
    EXPECT_GE(made[3].GetAllocLength(), 4);
    EXPECT_EQ(&XGetEmptyString(), &XGetEmptyString());
    EXPECT_EQ(XGetEmptyString().GetLength(), 0);

    made[0] = text;
    made[0] += text;
    made[0] += '!';
    made[0] += "?";
    made[0] += Prefixed("\2ab");
    EXPECT_STREQ(made[0], "texttext!?ab");
    made[0] = 'c';
    EXPECT_STREQ(made[0], "c");
    made[0] = "d";
    EXPECT_STREQ(made[0], "d");
    made[0] = wide;
    EXPECT_STREQ(made[0], "wi");
    made[0] = Prefixed("\3pas");
    EXPECT_STREQ(made[0], "pas");
    EXPECT_EQ(made[0].LoadStringA(nullptr, 12345), 0);
    OpenString("some").Workers();
}

TEST(CString, IsSearchedAndEdited) {
    XCString text("  Ab,c  ");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_STREQ(text, "Ab,c");
    EXPECT_EQ(text.Find('b'), 1);
    EXPECT_EQ(text.Find(",c"), 2);
    EXPECT_STREQ(text.Left(1), "A");
    EXPECT_STREQ(text.Right(1), "c");
    EXPECT_STREQ(text.SpanExcluding(","), "Ab");
    EXPECT_EQ(text[0], 'A');
    EXPECT_EQ(text.GetAt(3), 'c');
    text.SetAt(3, 'd');
    text.ReplaceChar(',', ';');
    text.MakeLower();
    EXPECT_STREQ(text, "ab;d");
    EXPECT_EQ(text.Compare("ab;d"), 0);
    EXPECT_EQ(text.CompareNoCase("AB;D"), 0);
    unsigned short* const wide = text.AllocSysString();
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide[3], 'd');
    XSysFreeString(wide);
    text.Empty();
    EXPECT_EQ(text.IsEmpty(), 1);
}

TEST(CString, LendsItsBuffer) {
    XCString text("abc");
    std::strcpy(text.GetBuffer(40), "longer");
    text.ReleaseBuffer();
    EXPECT_STREQ(text, "longer");
    text.GetBufferSetLength(2);
    text.FreeExtra();
    EXPECT_EQ(text.GetAllocLength(), 2);
    EXPECT_STREQ(text.LockBuffer(), "lo");
    text.UnlockBuffer();
}

// Every operator with a text before, equal to and behind it.
template <class A, class B>
void ExpectOrder(const A& a, const B& b, int order) {
    EXPECT_EQ(a == b, order == 0 ? 1 : 0);
    EXPECT_EQ(a != b, order != 0 ? 1 : 0);
    EXPECT_EQ(a < b, order < 0 ? 1 : 0);
    EXPECT_EQ(a > b, order > 0 ? 1 : 0);
    EXPECT_EQ(a <= b, order <= 0 ? 1 : 0);
    EXPECT_EQ(a >= b, order >= 0 ? 1 : 0);
}

TEST(Strings, AreOrdered) {
    EXPECT_EQ(veldt::strings::DifferenceOf("ab", "ad", 2), 'b' - 'd');
    const char* const texts[] = {"a", "b", "c"};
    for (int i = 0; i < 3; ++i) {
        const int order = i - 1;
        ExpectOrder(XCString(texts[i]), XCString("b"), order);
        ExpectOrder(XCString(texts[i]), "b", order);
        ExpectOrder(texts[i], XCString("b"), order);
        const XStr<8> fixed(texts[i]);
        const XStr<8> middle("b");
        ExpectOrder<XString, XString>(fixed, middle, order);
        ExpectOrder<XString>(fixed, "b", order);
        ExpectOrder<const char*, XString>(texts[i], middle, order);
    }
}

}  // namespace
