// Length-prefixed strings: limits, overlap, and what the length byte must not be mistaken for.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

/// A length-prefixed string with its spare bytes set, so that a write too many shows.
struct Pascal {
    explicit Pascal(const std::string& text = "") {
        std::memset(bytes, 0x77, sizeof(bytes));
        bytes[0] = static_cast<unsigned char>(text.size());
        std::memcpy(bytes + 1, text.data(), text.size());
    }
    std::string Text() const { return {reinterpret_cast<const char*>(bytes) + 1, bytes[0]}; }
    operator unsigned char*() { return bytes; }

    unsigned char bytes[300];
};

TEST(Pascal, CopiesAndAppendsWhatFits) {
    Pascal to;
    EXPECT_EQ(XPascalStrCpy(to, Pascal(std::string("a\0b", 3))), to.bytes);
    EXPECT_EQ(to.Text(), std::string("a\0b", 3));
    for (const auto& [text, limit, result] :
         {std::tuple{"abcdef", 3, "abc"}, {"ab", 10, "ab"}, {"ab", 0, ""}}) {
        EXPECT_EQ(XPascalStrCpy(to, text, limit), to.bytes);
        EXPECT_EQ(to.Text(), result);
    }
    // A length counts modulo 65536.
    XPascalStrCpy(to, std::string(65538, 'x').c_str(), 255);
    EXPECT_EQ(to.Text(), "xx");

    Pascal nearlyFull(std::string(250, 'x'));
    EXPECT_EQ(XPascalStrCat(nearlyFull, Pascal("0123456789")), nearlyFull.bytes);
    EXPECT_EQ(nearlyFull.Text(), std::string(250, 'x') + "01234");
    XPascalStrCat(nearlyFull, Pascal("y"));
    EXPECT_EQ(nearlyFull.Text(), std::string(250, 'x') + "01234");
    EXPECT_EQ(nearlyFull.bytes[256], 0x77);
    Pascal twice("abc");
    XPascalStrCat(twice, twice);
    EXPECT_EQ(twice.Text(), "abcabc");
}

TEST(Pascal, SubstringsCountFromTheLengthByte) {
    const struct {
        int first, count;
        const char* result;
    } cases[] = {{2, 3, "bcd"}, {5, 10, "ef"},    {7, 1, ""},
                 {7, 255, ""},  {255, 255, ""},   {3, 0, ""},
                 {6, 1, "f"},   {0, 3, "\006ab"}, {0, 255, "\006abcdef"}};
    for (const auto& c : cases) {
        const auto first = static_cast<unsigned char>(c.first);
        const auto count = static_cast<unsigned char>(c.count);
        Pascal to;
        XPascalStrCpy(to, Pascal("abcdef"), first, count);
        EXPECT_EQ(to.Text(), c.result) << c.first << ' ' << c.count;
        Pascal same("abcdef");
        XPascalStrCpy(same, same, first, count);
        EXPECT_EQ(same.Text(), c.result) << "in place " << c.first << ' ' << c.count;
    }
}

TEST(Pascal, SearchAgreesWithAPlainSearch) {
    std::mt19937 random(20);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % (round % 20 == 0 ? 256 : 12), 0);
        std::string pattern(random() % (round % 50 == 0 ? 256 : 5), 0);
        for (char& c : text) c = static_cast<char>(random() % 3);
        for (char& c : pattern) c = static_cast<char>(random() % 3);
        const std::size_t found = pattern.empty() ? std::string::npos : text.find(pattern);
        Pascal p(text);
        ASSERT_EQ(XPascalStrPos(Pascal(pattern), p),
                  found == std::string::npos ? 0 : static_cast<int>(found) + 1);
        const std::size_t last = text.rfind('\1');
        ASSERT_EQ(XPascalStrRScan(p, 1), last == std::string::npos ? nullptr : p.bytes + 1 + last);
    }
    EXPECT_EQ(XPascalStrRScan(Pascal(std::string('a', 'x')), 'a'), nullptr);
    const std::string full = std::string(254, 'x') + 'y';
    EXPECT_EQ(XPascalStrPos(Pascal(full), Pascal(full)), 1);
    EXPECT_EQ(XPascalStrPos(Pascal("y"), Pascal(full)), 255);

    Pascal banana("banana");
    EXPECT_EQ(XPascalStrReplace(banana, 'a', 'b'), 3);
    EXPECT_EQ(banana.Text(), "bbnbnb");
    Pascal own(std::string('a', 'a'));
    EXPECT_EQ(XPascalStrReplace(own, 'a', 'b'), 'a');
    EXPECT_EQ(own.Text(), std::string('a', 'b'));
}

TEST(Pascal, ComparisonGivesDifferencesOfUnsignedBytes) {
    const struct {
        std::string a, b;
        int result;
    } cases[] = {{"abc", "abd", -1},
                 {"ab", "abcd", -2},
                 {"\xFF", "\x01", 254},
                 {"", "", 0},
                 {"", "xyz", -3},
                 {"abc", "abc", 0},
                 {"b", "abc", 1},
                 {"\xE9", "z", 0xE9 - 'z'},
                 {std::string(40, 'x') + "a", std::string(40, 'x') + "c", -2}};
    for (const auto& c : cases) {
        EXPECT_EQ(XPascalStrCmp(Pascal(c.a), Pascal(c.b)), c.result);
        EXPECT_EQ(XPascalStrCmp(c.a.c_str(), Pascal(c.b)), c.result);
        EXPECT_EQ(XPascalStrCmp(Pascal(c.a), c.b.c_str()), c.result);
        EXPECT_EQ(XPascalStrCmp(Pascal(c.b), Pascal(c.a)), -c.result);
    }
    const std::string longer(300, 'x');
    EXPECT_EQ(XPascalStrCmp(longer.c_str(), Pascal(std::string(255, 'x'))), 45);
}

TEST(Pascal, ConvertsToAndFromTerminatedText) {
    Pascal ten("0123456789");
    char text[300];
    std::memset(text, 0x77, sizeof(text));
    EXPECT_EQ(PStr2CStr(ten, text, 4), text);
    EXPECT_STREQ(text, "0123");
    EXPECT_EQ(text[5], 0x77);
    PStr2CStr(ten, text, 0);
    EXPECT_EQ(std::string(text, 5), std::string("\000123\0", 5));
    EXPECT_EQ(PStr2CStr(nullptr, text, 4), nullptr);
    EXPECT_EQ(PStr2CStr(ten, nullptr, 4), nullptr);

    const std::string longText(300, 'q');
    Pascal to;
    EXPECT_EQ(CStr2PStr(longText.c_str(), to, 255), to.bytes);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    EXPECT_EQ(to.bytes[256], 0x77);
    EXPECT_EQ(CStr2PStr(nullptr, to, 4), nullptr);
    EXPECT_EQ(CStr2PStr("x", nullptr, 4), nullptr);
    EXPECT_EQ(to.bytes[0], 255);

    EXPECT_EQ(_CtoPstr(const_cast<char*>(longText.c_str()), to), reinterpret_cast<char*>(to.bytes));
    EXPECT_EQ(to.Text(), std::string(44, 'q'));
    EXPECT_EQ(_PtoCstr(ten, text), text);
    EXPECT_STREQ(text, "0123456789");
    EXPECT_EQ(_PtoCstr(nullptr, text), nullptr);
    EXPECT_EQ(_CtoPstr(nullptr, to), nullptr);

    const XCString counted(longText.c_str());
    XCStringToPStr(counted, to, 256);
    EXPECT_EQ(to.Text(), std::string(255, 'q'));
    XCStringToPStr(counted, to, 1);
    EXPECT_EQ(to.Text(), "");
    EXPECT_EQ(to.bytes[1], 'q');
}

TEST(Pascal, ConvertsInPlace) {
    for (std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{3}, std::size_t{255}}) {
        const std::string text(length, 'w');
        Pascal buffer(text);
        EXPECT_EQ(_PtoCstr(buffer, nullptr), reinterpret_cast<char*>(buffer.bytes));
        EXPECT_EQ(reinterpret_cast<char*>(buffer.bytes), text);
        _CtoPstr(reinterpret_cast<char*>(buffer.bytes), nullptr);
        EXPECT_EQ(buffer.Text(), text);
        PStr2CStr(buffer, reinterpret_cast<char*>(buffer.bytes), 255);
        CStr2PStr(reinterpret_cast<char*>(buffer.bytes), buffer, 255);
        EXPECT_EQ(buffer.Text(), text);
    }
}

TEST(Pascal, NumbersSurviveTheWayThroughText) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const std::int32_t bounds[] = {0, -1, Limits::max(), Limits::min(), 1000000000};
        const auto number = round < 5 ? bounds[round] : static_cast<std::int32_t>(random());
        Pascal text;
        XNumToString(number, text);
        ASSERT_EQ(text.Text(), std::to_string(number));
        ASSERT_EQ(text.bytes[text.bytes[0] + 1], 0);
        ASSERT_EQ(text.bytes[13], 0x77);
        std::int32_t back = 5;
        XStringToNum(text, &back);
        ASSERT_EQ(back, number);
    }
    const struct {
        std::string text;
        std::int32_t number;
    } cases[] = {{"", 0},
                 {"12ab", 12},
                 {" \t\n\v\f\r+7", 7},
                 {"-", 0},
                 {"--1", 0},
                 {"- 1", 0},
                 {std::string(255, '0'), 0},
                 {std::string(254, '0') + "9", 9},
                 {"2147483648", Limits::max()},
                 {"-2147483649", Limits::min()},
                 {"99999999999999999999999", Limits::max()}};
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
