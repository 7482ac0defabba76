// Length-prefixed strings: limits, overlap, and what the length byte must not be mistaken for.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "support/seed.h"

namespace {

/// A length-prefixed string with its spare bytes set, so that a write too many shows.
struct Pascal {
    explicit Pascal(const std::string& text = "", int spare = 0x77) {
        std::memset(bytes, spare, sizeof(bytes));
        bytes[0] = static_cast<unsigned char>(text.size());
        std::memcpy(bytes + 1, text.data(), text.size());
    }
    std::string Text() const { return {reinterpret_cast<const char*>(bytes) + 1, bytes[0]}; }
    char* Chars() { return reinterpret_cast<char*>(bytes); }
    operator unsigned char*() { return bytes; }

    unsigned char bytes[300];
};

TEST(Pascal, CopiesAndAppendsWhatFits) {
    const std::string holed("a\0b", 3);
    Pascal to;
    XPascalStrInit(to);
    EXPECT_EQ(XPascalStrIsEmpty(to), 1);
    EXPECT_EQ(XPascalStrCpy(to, Pascal(holed)), to.bytes);
    EXPECT_EQ(XPascalStrLen(to) - XPascalStrIsEmpty(to), 3);
    EXPECT_EQ(XPascalStrCat(to, to), to.bytes);
    EXPECT_EQ(to.Text(), holed + holed);
    EXPECT_EQ(XPascalStrCpy(to, "abcdef", 3), to.bytes);
    EXPECT_EQ(to.Text(), "abc");
    XPascalStrCpy(to, std::string(65538, 'x').c_str(), 255);
    EXPECT_EQ(to.Text(), "xx") << "a length counts modulo 65536";

    Pascal nearlyFull(std::string(250, 'x'));
    XPascalStrCat(nearlyFull, Pascal("0123456789"));
    XPascalStrCat(nearlyFull, Pascal("y"));
    EXPECT_EQ(nearlyFull.Text(), std::string(250, 'x') + "01234");
    EXPECT_EQ(nearlyFull.bytes[256], 0x77);
}

TEST(Pascal, SubstringsCountFromTheLengthByte) {
    const std::string whole = "\006abcdef";
    for (const std::size_t first : {0u, 1u, 3u, 6u, 7u, 255u}) {
        for (const std::size_t count : {0u, 1u, 3u, 255u}) {
            Pascal to, same("abcdef");
            const auto from = static_cast<unsigned char>(first);
            const auto most = static_cast<unsigned char>(count);
            XPascalStrCpy(to, same, from, most);
            XPascalStrCpy(same, same, from, most);
            const std::string part = first < whole.size() ? whole.substr(first, count) : "";
            EXPECT_EQ(to.Text(), part) << first << ' ' << count;
            EXPECT_EQ(same.Text(), part) << first << ' ' << count;
        }
    }
}

// Of three byte values, so that much is found; one of them stands behind each text too.
TEST(Pascal, SearchAndOrderAgreeWithPlainOnes) {
    std::mt19937 random(veldt::tests::Seed());
    const auto word = [&](std::size_t length) {
        std::string text(length, 0);
        for (char& c : text) c = "\0\1\xFF"[random() % 3];
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        const std::string text = word(random() % (round % 5 == 0 ? 256 : 25));
        std::string sought = word(random() % (round % 50 == 0 ? 256 : 5));
        Pascal p(text, 0);
        // npos + 1 is 0.
        ASSERT_EQ(XPascalStrPos(Pascal(sought), p), sought.empty() ? 0 : text.find(sought) + 1);
        const std::size_t last = text.rfind('\1');
        ASSERT_EQ(XPascalStrRScan(p, 1), last == std::string::npos ? nullptr : p.bytes + 1 + last);

        if (round % 2 == 0) sought = text.substr(0, random() % 256);
        if (round % 4 == 0 && !sought.empty()) sought[random() % sought.size()] = '\2';
        const auto [x, y] = std::mismatch(text.begin(), text.end(), sought.begin(), sought.end());
        const bool ends = x == text.end() || y == sought.end();
        ASSERT_EQ(XPascalStrCmp(p, Pascal(sought)),
                  ends ? static_cast<int>(text.size()) - static_cast<int>(sought.size())
                       : static_cast<unsigned char>(*x) - static_cast<unsigned char>(*y));
    }
    const std::string full = std::string(254, 'x') + 'y';
    EXPECT_EQ(XPascalStrPos(Pascal(full), Pascal(full)), 1);
    EXPECT_EQ(XPascalStrPos(Pascal("y"), Pascal(full)), 255);
    EXPECT_EQ(XPascalStrCmp(std::string(300, 'x').c_str(), Pascal(std::string(255, 'x'))), 45);
    EXPECT_EQ(XPascalStrCmp(Pascal("abc"), "b"), -1);
    EXPECT_EQ(XCompareBytes(Pascal(), Pascal(), 3, 1), 2);

    Pascal own(std::string('a', 'a'));  // whose length byte is an a as well
    EXPECT_EQ(XPascalStrReplace(own, 'a', 'b'), 'a');
    EXPECT_EQ(own.Text(), std::string('a', 'b'));
    EXPECT_EQ(XPascalStrRScan(own, 'a'), nullptr);
}

TEST(Pascal, ConvertsToAndFromTerminatedText) {
    Pascal ten("0123456789"), to;
    char text[12] = "wwwwwwwwwww";
    EXPECT_EQ(PStr2CStr(ten, text, 4), text);
    EXPECT_EQ(std::string(text, 6), std::string("0123\0w", 6));
    PStr2CStr(ten, text, 40);
    EXPECT_STREQ(text, "0123456789");
    PStr2CStr(ten, text, 0);
    EXPECT_EQ(std::string(text, 2), std::string("\0001", 2));
    EXPECT_EQ(_PtoCstr(ten, text), text);
    EXPECT_STREQ(text, "0123456789");

    std::string longText(300, 'q');
    EXPECT_EQ(CStr2PStr(longText.c_str(), to, 255), to.bytes);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    EXPECT_EQ(_CtoPstr(longText.data(), to), to.Chars());
    EXPECT_EQ(to.Text(), std::string(44, 'q'));
    EXPECT_EQ(to.bytes[256], 0x77);
    XCStringToPStr(XCString(longText.c_str()), to, 256);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    XCStringToPStr(XCString("x"), to, 1);
    EXPECT_EQ(to.Text(), "");

    EXPECT_TRUE(!PStr2CStr(nullptr, text, 4) && !PStr2CStr(ten, nullptr, 4));
    EXPECT_TRUE(!CStr2PStr(nullptr, to, 4) && !CStr2PStr("x", nullptr, 4));
    EXPECT_TRUE(!_PtoCstr(nullptr, text) && !_CtoPstr(nullptr, to));
    for (const std::size_t length : {0u, 1u, 255u}) {
        Pascal inPlace(std::string(length, 'w'));
        EXPECT_EQ(_PtoCstr(inPlace, nullptr), std::string(length, 'w'));
        _CtoPstr(inPlace.Chars(), nullptr);
        EXPECT_EQ(inPlace.Text(), std::string(length, 'w'));
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
    const std::pair<std::string, std::int32_t> cases[] = {
        {"", 0},
        {"12ab", 12},
        {" \t\n\v\f\r+7", 7},
        {"--1", 0},
        {"2147483647", Limits::max()},
        {"99999999999999999999999", Limits::max()},
        {"-2147483648", Limits::min()},
        {"-99999999999999999999999", Limits::min()},
        {std::string(254, '0') + "9", 9}};
    for (const auto& [text, number] : cases) {
        std::int32_t result = 5;
        XStringToNum(text.c_str(), &result);
        EXPECT_EQ(result, number) << text;
        Pascal counted(text, '1');  // ones that are no part of the text
        XStringToNum(counted, &result);
        EXPECT_EQ(result, number) << text;
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
