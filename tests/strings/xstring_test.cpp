// XStr: the capacity holds, length and terminator agree, and each order of comparison.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <concepts>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>

#include "strings/orders.h"
#include "support/seed.h"

namespace {

using veldt::tests::OperatorsAgree;
using View = std::string_view;

static_assert(!std::copy_constructible<XString> && !std::is_default_constructible_v<XString>,
              "a base by itself has no room for a text");

/// An XStr between two guards, with the workers open.
template <int N>
struct Guarded {
    struct Open : XStr<N> {
        using XStr<N>::operator=;
        using XString::DoCharArrayCopy;
        using XString::DoReplaceAtChar;
        using XString::DoStrAppend;
        using XString::DoStrCopy;
    };
    explicit Guarded(const std::string& text = "") {
        string.Assign(text.data(), static_cast<int>(text.size()));
    }
    /// The text, once length, terminator and guards have been found in order.
    std::string Text() const {
        EXPECT_EQ(before, 0x77);
        EXPECT_EQ(after, 0x77);
        EXPECT_EQ(string.GetCStr()[string.GetLength()], 0);
        return std::string(View(string));
    }

    unsigned char before = 0x77;
    Open string;
    unsigned char after = 0x77;
};

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

TEST(XStr, TakesEveryFormOfTextUpToItsCapacity) {
    unsigned char memory[257];
    std::memset(memory, 0x77, sizeof(memory));
    const auto* empty = new (memory) XStr<255>;
    EXPECT_EQ(empty->IsEmpty(), 1);
    EXPECT_EQ(memory[1], 0);

    const XStr<3> source("xyz");
    XStr<5> s;
    EXPECT_EQ(View(s = "abcdefg"), "abcde");
    EXPECT_EQ(View(s = Bytes("\003abcdefg")), "abc");
    EXPECT_EQ(View(s = std::string(70000, 'q')), "qqqqq");
    EXPECT_EQ(View(s = static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(View(s = source), "xyz");
    EXPECT_EQ(View(s += 'a'), "xyza");
    EXPECT_EQ(View(s += "bc"), "xyzab");
    EXPECT_EQ(View(s += s += 'd'), "xyzab");
    EXPECT_EQ(s.IsFull(), 1);
    EXPECT_EQ(View(XStr<5>("ab") += source), "abxyz");
    EXPECT_EQ(View(XStr<5>("ab") += Bytes("\001xyz")), "abx");
    EXPECT_EQ(View(XStr<5>("a\0b", 3)), View("a\0b", 3));
    EXPECT_EQ(View(XStr<2>(source)), "xy");
    EXPECT_EQ(View(XStr<5>(Bytes("\002abc"))), "ab");
    EXPECT_EQ(std::string(s.begin(), s.end()), "xyzab");

    const std::string full(255, 'f');
    Guarded<255> large(full + "more");
    large.string += "more";
    EXPECT_EQ(large.Text(), full);
    EXPECT_EQ(large.string.GetPStr()[0], 255);
}

TEST(XStr, FixesOneHalfByTheOther) {
    XStr<9> s("abcdef");
    std::strcpy(s.GetCStr(), "xyz");
    s.FixCStr();
    EXPECT_EQ(s.GetLength(), 3);
    s.FixCStr(2);
    EXPECT_STREQ(s.GetCStr(), "xyz");
    s.FixPStr();
    EXPECT_STREQ(s.GetCStr(), "xy");
    s = "abcdef";
    s.Truncate(2);
    s.Truncate(5);
    EXPECT_EQ(View(s), View("ab\0de", 5));
}

TEST(XStr, SearchesToTheEndThatEachCallTrusts) {
    const XStr<9> s("abca\0\xE9", 6), none;
    const struct {
        unsigned char c;
        int first, last;
    } cases[] = {{'a', 0, 3}, {'z', -1, -1}, {0, -1, 4}, {0xE9, -1, 5}};
    for (const auto& c : cases) {
        EXPECT_EQ(s.IndexOfChar(c.c), c.first);
        EXPECT_EQ(s.RightIndexOfChar(c.c), c.last);
        EXPECT_EQ(none.IndexOfChar(c.c), -1);
        EXPECT_EQ(none.RightIndexOfChar(c.c), -1);
    }
}

TEST(XStr, StripsReplacesAndCuts) {
    Guarded<9> s("abca");
    EXPECT_EQ(s.string.StripChar('z'), 0);
    EXPECT_EQ(s.string.StripChar('a'), 1);
    EXPECT_EQ(s.Text(), "bca");
    s.string = "abca";
    EXPECT_EQ(s.string.StripChars(XStr<2>("ac")), 0);
    EXPECT_EQ(s.Text(), "b");
    s.string.Assign("a\0ba", 4).StripChars(XStr<2>("a"));
    EXPECT_EQ(s.Text(), std::string("\0b", 2));
    s.string = "abca";
    s.string.StripChars(s.string);
    EXPECT_EQ(s.Text(), "");
    s.string = "abca";
    EXPECT_EQ(s.string.TruncateAtChar('z'), 0);
    EXPECT_EQ(s.string.TruncateAtChar('c'), 1);
    EXPECT_EQ(s.Text(), "ab");
    s.string.Assign("aba\0a", 5).ReplaceChar('a', 0xE9);
    EXPECT_EQ(s.Text(), std::string("\xE9"
                                    "b\xE9\0a",
                                    5));

    s.string.DoCharArrayCopy(Bytes("abc"), 10, 9);
    EXPECT_EQ(s.Text(), "abc");
    s.string.DoCharArrayCopy(Bytes("0123456789"), 3, 9);
    EXPECT_EQ(s.Text(), "012");
}

// Every worker, with sources inside the string and out of it, against the same done to a copy.
TEST(XStr, WorkersAgreeWithAModelWhereverTheSourceLies) {
    std::mt19937 random(veldt::tests::Seed());
    const std::string other = "dcbadcbadcbadcba";
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 13, 0);
        for (char& c : text) c = static_cast<char>('a' + random() % 4);
        Guarded<12> s(text);
        const bool inside = random() % 2 == 0;
        const std::string& whole = inside ? text : other;
        const std::size_t from = random() % (whole.size() + 1);
        const std::string part = whole.substr(from, random() % (whole.size() - from + 1));
        const auto* source = (inside ? s.string.GetPStr() + 1 : Bytes(other.data())) + from;
        const int n = static_cast<int>(part.size());
        std::string result = part;
        switch (random() % 3) {
            case 0:
                s.string.DoStrCopy(source, n, 12);
                break;
            case 1:
                s.string.DoStrAppend(source, n, 12);
                result = text + part;
                break;
            default:
                s.string.DoReplaceAtChar('c', source, n, 12);
                result = text;
                // What follows the character stays: the replacement is cut.
                if (const auto at = text.find('c'); at != std::string::npos) {
                    result.replace(at, 1, part.substr(0, 13 - text.size()));
                }
        }
        ASSERT_EQ(s.Text(), result.substr(0, 12));
    }
    EXPECT_EQ(View(XStr<4>("abc").ReplaceAtChar('b', "xyz")), "axyc");
}

TEST(XStr, OrdersByUnsignedBytes) {
    const struct {
        std::string a, b;
        int exact, folded;
    } cases[] = {{"abc", "abcd", -1, -1}, {"abd", "abcd", 1, 1},    {"ABC", "abc", -1, 0},
                 {"\xE9", "z", 1, 1},     {"", "", 0, 0},           {"", "a", -1, -1},
                 {"[", "A", 1, -1},       {"\xC9", "\xE9", -1, -1}, {"aZ", "Az", 1, 0},
                 {"a@", "a`", -1, -1}};
    for (const auto& c : cases) {
        const XStr<9> a(c.a.c_str());
        const XStr<20> b(c.b.c_str());
        EXPECT_EQ(a.Compare(b, 1), c.exact) << c.a << ' ' << c.b;
        EXPECT_EQ(a.DoCompare(Bytes(c.b.data()), b.GetLength(), 0), c.folded) << c.a << ' ' << c.b;
        EXPECT_EQ(b.Compare(a, 0), -c.folded) << c.a << ' ' << c.b;
        EXPECT_TRUE(OperatorsAgree(a, b, c.exact));
        EXPECT_TRUE(OperatorsAgree(a, c.b.c_str(), c.exact));
        EXPECT_TRUE(OperatorsAgree(c.a.c_str(), b, c.exact));
    }
    EXPECT_EQ(XStr<255>(std::string(255, 'x')) == std::string(300, 'x').c_str(), 0);
    EXPECT_EQ(XStr<3>("a\0b", 3).Compare(XStr<3>("a\0c", 3), 0), -1);
}

}  // namespace
