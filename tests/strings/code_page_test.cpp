// The code pages that stand in for the system's, and what the strings make of double-byte text.
#include <gtest/gtest.h>
#include <veldt20/host.h>
#include <veldt20/strings.h>

#include <atomic>
#include <string>
#include <thread>

#include "platform/platform.h"

namespace {

namespace platform = veldt::platform;

class CodePage : public testing::Test {
  protected:
    ~CodePage() override { XHostSetCodePage(1252); }
};

std::u16string ToWide(const std::string& bytes) {
    unsigned short* wide = XCString(bytes.data(), static_cast<int>(bytes.size())).AllocSysString();
    std::uint32_t size;
    std::memcpy(&size, reinterpret_cast<char*>(wide) - 4, 4);
    EXPECT_EQ(wide[size / 2], 0);
    std::u16string text(wide, wide + size / 2);
    XSysFreeString(wide);
    return text;
}

std::string ToBytes(std::u16string wide) {
    auto* units = reinterpret_cast<unsigned short*>(wide.data());
    XCString assigned("what was there before");
    assigned = units;
    const XCString constructed(units);
    EXPECT_EQ(assigned == constructed, 1);
    return {constructed, static_cast<std::size_t>(constructed.GetLength())};
}

TEST_F(CodePage, CharactersOfEachPageGoBothWays) {
    std::string all;
    for (int i = 1; i < 256; ++i) all += static_cast<char>(i);
    const struct {
        unsigned int page;
        const char* bytes;
        const char16_t* wide;
    } cases[] = {{1252, "\x80\xE9\x8D", u"\u20AC\u00E9\u008D"},
                 {1250, "\xB9", u"\u0105"},
                 {1251, "\xCF", u"\u041F"},
                 {1253, "\xE1\xAA", u"\u03B1\uF8F9"},
                 {1254, "\xFD", u"\u0131"},
                 {1255, "\xE0\xCA\xFF", u"\u05D0\u05BA\uF896"},
                 {1256, "\xC7", u"\u0627"},
                 {1257, "\xE0\xA5", u"\u0105\uF8FD"},
                 {1258, "\x61\xEC\xD0", u"a\u0301\u0110"},
                 {874, "\xA1\xFF", u"\u0E01\uF8C8"},
                 {932, "ab\x82\xA0\xB1\x81\x5F\xFC\x4B", u"ab\u3042\uFF71\uFF3C\u9ED1"},
                 {936, "\xD6\xD0\x80", u"\u4E2D\u20AC"},
                 {949, "\xB0\xA1\x81\x41", u"\uAC00\uAC02"},
                 {950, "\xA4\xA4\xA3\xE1", u"\u4E2D\u20AC"},
                 {65001, "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\xEF\xBF\xBF",
                  u"a\u00E9\u4E2D\U0001F600\uFFFF"}};
    const std::u16string atFirst = ToWide(all);
    for (const auto& c : cases) {
        ASSERT_EQ(XHostSetCodePage(c.page), 1) << c.page;
        EXPECT_EQ(ToWide(c.bytes), c.wide) << c.page;
        EXPECT_EQ(ToBytes(c.wide), c.bytes) << c.page;
        if (c.page != 874 && c.page / 10 != 125) continue;
        EXPECT_EQ(ToBytes(ToWide(all)), all) << c.page;
        for (platform::BYTE i = 255; i > 0; --i) EXPECT_EQ(platform::IsDBCSLeadByte(i), 0);
    }
    EXPECT_EQ(XHostSetCodePage(437), 0);
    EXPECT_EQ(ToWide("\xC3\xA9"), u"\u00E9") << "a page that isn't known changes nothing";
    ASSERT_EQ(XHostSetCodePage(1252), 1);
    EXPECT_EQ(ToWide(all), atFirst) << "the table of the page at a program's start";
}

TEST_F(CodePage, WhatAPageLacksBecomesItsDefault) {
    const std::u16string odd = {'a', 0x4E2D, 'b', 0xD83D, 0xDE00, 0xDE00, 'c', 0xD83D};
    EXPECT_EQ(ToBytes(odd), "a?b???c?");
    ASSERT_EQ(XHostSetCodePage(65001), 1);
    EXPECT_EQ(ToBytes(odd),
              "a\xE4\xB8\xAD"
              "b\xF0\x9F\x98\x80\xEF\xBF\xBD"
              "c\xEF\xBF\xBD");
    // Overlong, a surrogate, too large, cut short in the middle and at the end, a stray second
    // byte.
    EXPECT_EQ(ToWide("\xC0\x80|\xE0\x9F\x80|\xED\xA0\x80|\xF4\x90\x80\x80|\xF5\x80|\xE4\xB8|\x80|"
                     "\xF0\x9F\x98"),
              u"\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD\uFFFD|"
              u"\uFFFD\uFFFD|\uFFFD|\uFFFD|\uFFFD");
    ASSERT_EQ(XHostSetCodePage(949), 1);
    // No such pair, a lead byte before a zero byte, and one at the end.
    EXPECT_EQ(ToWide(std::string("\x81\x20z\x81\0\x81", 6)), std::u16string(u"?z?\0?", 5));
}

TEST_F(CodePage, ConversionsTellTheRoomTheyNeed) {
    const platform::WCHAR wide[] = {'a', 0x20AC, 0x4E2D, 0};
    platform::WCHAR back[4] = {7, 7, 7, 7};
    char bytes[4] = {};
    int used = 5;
    const auto toBytes = [&](int length, int room) {
        return platform::WideCharToMultiByte(0, 0, wide, length, bytes, room, "_", &used);
    };
    const auto toWide = [&](int length, int room) {
        return platform::MultiByteToWideChar(0, 0, bytes, length, back, room);
    };
    EXPECT_EQ(toBytes(-1, 0), 4);
    EXPECT_EQ(toBytes(-1, 3), 0);
    EXPECT_EQ(toBytes(3, 3), 3);
    EXPECT_STREQ(bytes, "a\x80_");
    EXPECT_EQ(used, 1);
    EXPECT_EQ(toWide(-1, 0), 4);
    EXPECT_EQ(toWide(2, 1), 0);
    EXPECT_EQ(toWide(2, 4), 2);
    EXPECT_EQ(std::u16string(back, back + 4), u"a\u20AC\7\7");
    EXPECT_EQ(toWide(0, 4), 0);
    EXPECT_EQ(XCString(static_cast<unsigned short*>(nullptr)).IsEmpty(), 1);
}

TEST_F(CodePage, ReplaceCharLeavesSecondBytesAlone) {
    ASSERT_EQ(XHostSetCodePage(932), 1);
    XCString s("\\\x83\\\\x\x83");  // the second backslash belongs to the lead byte before it
    s.ReplaceChar('\\', '/');
    EXPECT_STREQ(s, "/\x83\\/x\x83");
    XCString ends("\x83\0\\", 3);  // a lead byte takes the zero byte for its second one, and ends
    ends.ReplaceChar('\\', '/');
    EXPECT_EQ(ends.GetAt(2), '\\');
    s.ReplaceChar('\x83', 'q');  // no lead byte is a character by itself
    EXPECT_STREQ(s, "/\x83\\/x\x83");
    ASSERT_EQ(XHostSetCodePage(1252), 1);
    s.ReplaceChar('\\', '-');
    EXPECT_STREQ(s, "/\x83-/x\x83");
}

TEST_F(CodePage, OneThreadMayConvertWhileAnotherChangesThePage) {
    std::atomic<bool> done = false;
    std::thread host([&] {
        for (int i = 0; i < 50; ++i) XHostSetCodePage(i % 2 == 0 ? 1251 : 1250);
        done = true;
    });
    while (!done) {
        const std::u16string wide = ToWide("\xC0");
        EXPECT_TRUE(wide == u"\u00C0" || wide == u"\u0410" || wide == u"\u0154");
    }
    host.join();
}

TEST(StringResources, BelongToAModuleAndAreCut) {
    auto* module = reinterpret_cast<HINSTANCE__*>(8);
    char text[4] = {7, 7, 7, 7};
    EXPECT_EQ(XHostSetString(module, 1, "first"), 1);
    EXPECT_EQ(XHostSetString(module, 1, "other"), 1);
    EXPECT_EQ(platform::LoadStringA(nullptr, 1, text, 4), 0);
    EXPECT_EQ(platform::LoadStringA(module, 1, text, 0), 0);
    EXPECT_EQ(platform::LoadStringA(module, 1, text, 4), 3);
    EXPECT_STREQ(text, "oth");
}

TEST(SystemStrings, AStringBeyond32BitsIsRefused) {
    EXPECT_EQ(platform::SysAllocStringLen(nullptr, 0x7FFFFFFF), nullptr);
    EXPECT_EQ(platform::SysAllocStringLen(nullptr, 0xFFFFFFFF), nullptr);
    const platform::WCHAR source[] = {1, 2, 3};
    platform::BSTR string = platform::SysAllocStringLen(source, 2);
    EXPECT_EQ(std::u16string(string, string + 3), std::u16string(u"\1\2\0", 3));
    platform::SysFreeString(string);
    platform::SysFreeString(nullptr);
}

}  // namespace
