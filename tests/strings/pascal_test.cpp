// Length-prefixed strings: limits, overlap, and what the length byte must not be mistaken for.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "support/seed.h"

namespace {

/// A length-prefixed string with its spare bytes set, so that a write too many shows.
struct Pascal {
    explicit Pascal(const std::string& text = "") {
        std::memset(bytes, 0x77, sizeof(bytes));
        bytes[0] = static_cast<unsigned char>(text.size());
        std::memcpy(bytes + 1, text.data(), text.size());
    }
    std::string Text() const { return {reinterpret_cast<const char*>(bytes) + 1, bytes[0]}; }
    char* Chars() { return reinterpret_cast<char*>(bytes); }
    operator unsigned char*() { return bytes; }

    unsigned char bytes[300];
};

TEST(Pascal, CopiesAndAppendsWhatFits) {
    Pascal to;
    XPascalStrInit(to);
    EXPECT_EQ(XPascalStrIsEmpty(to), 1);
    EXPECT_EQ(XPascalStrCpy(to, Pascal(std::string("a\0b", 3))), to.bytes);
    EXPECT_EQ(XPascalStrLen(to), 3);
    EXPECT_EQ(XPascalStrIsEmpty(to), 0);
    EXPECT_EQ(to.Text(), std::string("a\0b", 3));
    EXPECT_EQ(XPascalStrCpy(to, "abcdef", 3), to.bytes);
    EXPECT_EQ(to.Text(), "abc");
    XPascalStrCpy(to, "ab", 10);
    EXPECT_EQ(to.Text(), "ab");
    XPascalStrCpy(to, std::string(65538, 'x').c_str(), 255);
    EXPECT_EQ(to.Text(), "xx") << "a length counts modulo 65536";

    Pascal nearlyFull(std::string(250, 'x'));
    EXPECT_EQ(XPascalStrCat(nearlyFull, Pascal("0123456789")), nearlyFull.bytes);
    XPascalStrCat(nearlyFull, Pascal("y"));
    EXPECT_EQ(nearlyFull.Text(), std::string(250, 'x') + "01234");
    EXPECT_EQ(nearlyFull.bytes[256], 0x77);
    Pascal twice("abc");
    XPascalStrCat(twice, twice);
    EXPECT_EQ(twice.Text(), "abcabc");
}

TEST(Pascal, SubstringsCountFromTheLengthByte) {
    const struct {
        unsigned char first, count;
        const char* result;
    } cases[] = {{2, 3, "bcd"},  {5, 10, "ef"}, {7, 1, ""},       {7, 255, ""},
                 {255, 255, ""}, {3, 0, ""},    {0, 3, "\006ab"}, {6, 1, "f"}};
    for (const auto& c : cases) {
        Pascal to, same("abcdef");
        XPascalStrCpy(to, same, c.first, c.count);
        XPascalStrCpy(same, same, c.first, c.count);
        EXPECT_EQ(to.Text(), c.result) << int{c.first} << ' ' << int{c.count};
        EXPECT_EQ(same.Text(), c.result) << int{c.first} << ' ' << int{c.count};
    }
}

TEST(Pascal, SearchAgreesWithAPlainSearch) {
    std::mt19937 random(veldt::tests::Seed());
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % (round % 5 == 0 ? 256 : 12), 0);
        std::string pattern(random() % (round % 50 == 0 ? 256 : 5), 0);
        for (char& c : text) c = static_cast<char>(random() % 3);
        for (char& c : pattern) c = static_cast<char>(random() % 3);
        Pascal p(text);
        // npos + 1 is 0.
        ASSERT_EQ(XPascalStrPos(Pascal(pattern), p), pattern.empty() ? 0 : text.find(pattern) + 1);
        const std::size_t last = text.rfind('\1');
        ASSERT_EQ(XPascalStrRScan(p, 1), last == std::string::npos ? nullptr : p.bytes + 1 + last);
    }
    const std::string full = std::string(254, 'x') + 'y';
    EXPECT_EQ(XPascalStrPos(Pascal(full), Pascal(full)), 1);
    EXPECT_EQ(XPascalStrPos(Pascal("y"), Pascal(full)), 255);

    Pascal own(std::string('a', 'a'));  // whose length byte is an a as well
    EXPECT_EQ(XPascalStrReplace(own, 'a', 'b'), 'a');
    EXPECT_EQ(own.Text(), std::string('a', 'b'));
    EXPECT_EQ(XPascalStrRScan(own, 'a'), nullptr);
}

TEST(Pascal, ComparisonGivesDifferencesOfUnsignedBytes) {
    const std::string alike(40, 'x');
    const struct {
        std::string a, b;
        int result;
    } cases[] = {{"abc", "abd", -1},    {"ab", "abcd", -2},
                 {"\xFF", "\x01", 254}, {"", "", 0},
                 {"", "xyz", -3},       {alike + "a", alike + "c", -2},
                 {"b", "abc", 1},       {std::string(300, 'x'), std::string(255, 'x'), 45}};
    for (const auto& c : cases) {
        EXPECT_EQ(XPascalStrCmp(c.a.c_str(), Pascal(c.b)), c.result);
        EXPECT_EQ(XPascalStrCmp(Pascal(c.b), c.a.c_str()), -c.result);
        if (c.a.size() < 256) {
            EXPECT_EQ(XPascalStrCmp(Pascal(c.a), Pascal(c.b)), c.result);
        }
    }
    Pascal text("abc");
    EXPECT_EQ(XCompareBytes(text + 1, text + 1, 3, 1), 2);
}

TEST(Pascal, ConvertsToAndFromTerminatedText) {
    Pascal ten("0123456789"), to;
    char text[12];
    std::memset(text, 0x77, sizeof(text));
    EXPECT_EQ(PStr2CStr(ten, text, 4), text);
    EXPECT_EQ(std::string(text, 6), std::string("0123\0\x77", 6));
    PStr2CStr(ten, text, 0);
    EXPECT_EQ(std::string(text, 3), std::string("\0"
                                                "12",
                                                3));
    EXPECT_EQ(_PtoCstr(ten, text), text);
    EXPECT_STREQ(text, "0123456789");

    std::string longText(300, 'q');
    EXPECT_EQ(CStr2PStr(longText.c_str(), to, 255), to.bytes);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    EXPECT_EQ(to.bytes[256], 0x77);
    EXPECT_EQ(_CtoPstr(longText.data(), to), to.Chars());
    EXPECT_EQ(to.Text(), std::string(44, 'q'));
    XCStringToPStr(XCString(longText.c_str()), to, 256);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    XCStringToPStr(XCString("x"), to, 1);
    EXPECT_EQ(to.Text(), "");
    EXPECT_EQ(to.bytes[1], 'q');

    EXPECT_EQ(PStr2CStr(nullptr, text, 4), nullptr);
    EXPECT_EQ(PStr2CStr(ten, nullptr, 4), nullptr);
    EXPECT_EQ(CStr2PStr(nullptr, to, 4), nullptr);
    EXPECT_EQ(CStr2PStr("x", nullptr, 4), nullptr);
    EXPECT_EQ(_PtoCstr(nullptr, text), nullptr);
    EXPECT_EQ(_CtoPstr(nullptr, to), nullptr);
}

TEST(Pascal, ConvertsInPlace) {
    for (const std::size_t length : {0u, 1u, 3u, 255u}) {
        const std::string text(length, 'w');
        Pascal buffer(text);
        EXPECT_EQ(_PtoCstr(buffer, nullptr), buffer.Chars());
        EXPECT_EQ(buffer.Chars(), text);
        _CtoPstr(buffer.Chars(), nullptr);
        EXPECT_EQ(buffer.Text(), text);
        PStr2CStr(buffer, buffer.Chars(), 255);
        CStr2PStr(buffer.Chars(), buffer, 255);
        EXPECT_EQ(buffer.Text(), text);
    }
}

TEST(Pascal, NumbersGoThroughText) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t number : {0, -1, 1000000000, 907, Limits::max(), Limits::min()}) {
        Pascal text;
        XNumToString(number, text);
        EXPECT_EQ(text.Text(), std::to_string(number));
        EXPECT_EQ(text.bytes[text.bytes[0] + 1], 0);
        EXPECT_EQ(text.bytes[13], 0x77);
    }
    const struct {
        std::string text;
        std::int32_t number;
    } cases[] = {{"", 0},
                 {"12ab", 12},
                 {" \t\n\v\f\r+7", 7},
                 {"--1", 0},
                 {std::string(254, '0') + "9", 9},
                 {"2147483647", Limits::max()},
                 {"-2147483648", Limits::min()},
                 {"99999999999999999999999", Limits::max()},
                 {"-99999999999999999999999", Limits::min()}};
    for (const auto& c : cases) {
        std::int32_t number = 5;
        XStringToNum(c.text.c_str(), &number);
        EXPECT_EQ(number, c.number) << c.text;
        Pascal counted(c.text);
        counted.bytes[counted.bytes[0] + 1] = '1';  // no part of the text
        XStringToNum(counted, &number);
        EXPECT_EQ(number, c.number) << c.text;
    }
}

TEST(Pascal, SetRangesShiftModulo32) {
    EXPECT_EQ(XPascalSetRange(3, 5, 0), 0x38u);
    EXPECT_EQ(XPascalSetRange(10, 12, 8), 0x1Cu);
    EXPECT_EQ(XPascalSetRange(0, 31, 0), 0u);
    EXPECT_EQ(XPascalSetRange(34, 34, 0), 4u);
    EXPECT_EQ(XPascalSetRange(0, 0, 1), 0x80000000u);
}

}  // namespace
