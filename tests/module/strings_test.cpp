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

TEST(FixedString, IsEditedWithinItsCapacity) {
    XStr<8> text("abc");
    EXPECT_STREQ(text.GetCStr(), "abc");
    EXPECT_EQ(text.GetPStr()[0], 3);
    const XString& fixed = text;
    EXPECT_STREQ(fixed.GetCStr(), "abc");
    EXPECT_EQ(fixed.GetPStr()[1], 'a');
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text.IsEmpty(), 0);
    text += "defghij";
    EXPECT_STREQ(text.GetCStr(), "abcdefgh");
    EXPECT_EQ(text.Compare(XStr<8>("ABCDEFGH"), 0), 0);
    EXPECT_NE(text.DoCompare(Prefixed("abc"), 3, 1), 0);
    EXPECT_EQ(text.IndexOfChar('b'), 1);
    EXPECT_EQ(text.RightIndexOfChar('h'), 7);
    text.ReplaceChar('a', 'b');
    EXPECT_EQ(text.StripChar('b'), 1);
    EXPECT_EQ(text.StripChars(XStr<8>("bcd")), 0);
    EXPECT_STREQ(text.GetCStr(), "efgh");
    EXPECT_EQ(text.TruncateAtChar('h'), 1);
    text.ReplaceAtChar('f', "12");
    EXPECT_STREQ(text.GetCStr(), "e12g");
    text.AssignArray("array", 5);
    EXPECT_STREQ(text.GetCStr(), "array");
    text.Truncate(2);
    text.GetCStr()[1] = 0;
    text.FixCStr();
    EXPECT_EQ(text.GetLength(), 1);
    std::memcpy(text.GetPStr(), "\2xyz", 4);
    text.FixPStr();
    EXPECT_STREQ(text.GetCStr(), "xy");
    text.FixCStr(1);
    EXPECT_EQ(text.GetLength(), 1);
}

TEST(PascalStrings, AreCopiedSearchedAndConverted) {
    unsigned char text[256];
    unsigned char other[256];
    char plain[256];
    XPascalStrInit(text);
    EXPECT_EQ(XPascalStrIsEmpty(text), 1);
    EXPECT_EQ(XPascalStrCpy(text, Prefixed("\4abcb")), text);
    EXPECT_EQ(XPascalStrLen(text), 4);
    EXPECT_EQ(XPascalStrCat(text, Prefixed("\1e")), text);
    EXPECT_EQ(XPascalStrPos(Prefixed("\2cb"), text), 3);
    EXPECT_EQ(XPascalStrRScan(text, 'b'), text + 4);
    EXPECT_EQ(XPascalStrReplace(text, 'b', 'd'), 2);
    EXPECT_EQ(XPascalStrCmp(text, Prefixed("\5adcde")), 0);
    EXPECT_EQ(XPascalStrCmp("adcde", text), 0);
    EXPECT_EQ(XPascalStrCmp(text, "adcde"), 0);
    EXPECT_EQ(XCompareBytes(text + 1, text + 1, 5, 4), 1);
    EXPECT_EQ(XPascalStrCpy(other, text, 2, 3), other);
    EXPECT_EQ(XPascalStrCmp(other, "dcd"), 0);
    EXPECT_EQ(XPascalStrCpy(other, "from C", 4), other);
    EXPECT_EQ(XPascalStrLen(other), 4);
    EXPECT_EQ(XPascalSetRange(0, 3, 0), 0xFu);

    EXPECT_STREQ(PStr2CStr(Prefixed("\2hi"), plain, 255), "hi");
    EXPECT_EQ(CStr2PStr("hello", text, 255)[0], 5);
    EXPECT_STREQ(_PtoCstr(text, plain), "hello");
    EXPECT_EQ(_CtoPstr(plain, text)[0], 5);
    XCStringToPStr(XCString("four"), text, 255);
    EXPECT_EQ(XPascalStrCmp(text, "four"), 0);

    XNumToString(-42, text);
    EXPECT_EQ(XPascalStrCmp(text, "-42"), 0);
    std::int32_t number = 0;
    XStringToNum(text, &number);
    EXPECT_EQ(number, -42);
    XStringToNum("17", &number);
    EXPECT_EQ(number, 17);
}

}  // namespace
