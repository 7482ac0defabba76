// XStr: the capacity holds, length and terminator agree, and each order of comparison.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <concepts>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>

namespace {

static_assert(!std::copy_constructible<XString> && !std::is_default_constructible_v<XString>,
              "a base by itself has no room for a text");
static_assert(sizeof(XStr<7>) == 9 && std::is_standard_layout_v<XStr<7>>);

/// An XStr between two guards, with the workers open.
template <int N>
struct Guarded {
    struct Open : XStr<N> {
        using XStr<N>::XStr;
        using XString::DoCharArrayCopy;
        using XString::DoReplaceAtChar;
        using XString::DoStrAppend;
        using XString::DoStrCopy;
    };
    explicit Guarded(const std::string& text = "") { Set(text); }
    void Set(const std::string& text) { string.Assign(text.data(), static_cast<int>(text.size())); }

    /// The text, once length, terminator and guards have been found in order.
    std::string Text() const {
        EXPECT_EQ(before, 0x77);
        EXPECT_EQ(after, 0x77);
        EXPECT_EQ(string.GetCStr()[string.GetLength()], 0);
        return std::string(std::string_view(string));
    }

    unsigned char before = 0x77;
    Open string;
    unsigned char after = 0x77;
};

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

TEST(XStr, BeginsEmptyWhateverStoodThere) {
    alignas(XStr<255>) unsigned char memory[257];
    std::memset(memory, 0x77, sizeof(memory));
    const auto* s = new (memory) XStr<255>;
    EXPECT_EQ(s->IsEmpty(), 1);
    EXPECT_STREQ(s->GetCStr(), "");
    EXPECT_EQ(memory[1], 0);
    EXPECT_EQ(static_cast<const void*>(s->GetPStr()), memory);
}

TEST(XStr, TakesEveryFormOfTextUpToItsCapacity) {
    const XStr<3> source("xyz");
    XStr<5> s;
    EXPECT_EQ(std::string_view(s = "abcdefg"), "abcde");
    EXPECT_EQ(std::string_view(s = source), "xyz");
    EXPECT_EQ(std::string_view(s = Bytes("\003abcdefg")), "abc");
    EXPECT_EQ(std::string_view(s = std::string(70000, 'q')), "qqqqq");
    EXPECT_EQ(std::string_view(s = static_cast<const char*>(nullptr)), "");
    s = source;
    EXPECT_EQ(std::string_view(s += 'a'), "xyza");
    EXPECT_EQ(std::string_view(s += "bc"), "xyzab");
    EXPECT_EQ(std::string_view(s += 'd'), "xyzab");
    EXPECT_EQ(s.IsFull(), 1);
    EXPECT_EQ(std::string_view(XStr<5>("ab") += source), "abxyz");
    EXPECT_EQ(std::string_view(XStr<5>("ab") += Bytes("\001xyz")), "abx");
    EXPECT_EQ(std::string_view(XStr<5>("a\0b", 3)), std::string_view("a\0b", 3));
    EXPECT_EQ(std::string_view(XStr<2>(source)), "xy");
    EXPECT_EQ(std::string_view(XStr<5>(Bytes("\002abc"))), "ab");
    s = s;
    EXPECT_EQ(std::string(s.begin(), s.end()), "xyzab");
    s += s;
    EXPECT_EQ(std::string_view(s), "xyzab");
    s.Clear();
    EXPECT_EQ(s.IsEmpty(), 1);

    const std::string full(255, 'f');
    Guarded<255> large(full + full.substr(0, 45));
    EXPECT_EQ(large.Text(), full);
    EXPECT_EQ(large.string.GetPStr()[0], 255);
    large.string += "more";
    EXPECT_EQ(large.Text(), full);
}

TEST(XStr, FixesOneHalfByTheOther) {
    XStr<9> s("abcdef");
    std::strcpy(s.GetCStr(), "xyz");
    s.FixCStr();
    EXPECT_EQ(s.GetLength(), 3);
    s.FixCStr(2);
    EXPECT_EQ(s.GetLength(), 2);
    EXPECT_STREQ(s.GetCStr(), "xyz");
    s.FixPStr();
    EXPECT_STREQ(s.GetCStr(), "xy");
    s = "abcdef";
    s.Truncate(2);
    EXPECT_STREQ(s.GetCStr(), "ab");
    s.Truncate(5);
    EXPECT_EQ(std::string_view(s), std::string_view("ab\0de", 5));
}

TEST(XStr, SearchesToTheEndThatEachCallTrusts) {
    const XStr<9> s("abca");
    EXPECT_EQ(s.IndexOfChar('a'), 0);
    EXPECT_EQ(s.RightIndexOfChar('a'), 3);
    EXPECT_EQ(s.IndexOfChar('z'), -1);
    EXPECT_EQ(s.IndexOfChar(0), -1);
    const XStr<9> none;
    EXPECT_EQ(none.IndexOfChar('a'), -1);
    EXPECT_EQ(none.RightIndexOfChar('a'), -1);
    const XStr<9> holed("a\0\xE9", 3);
    EXPECT_EQ(holed.IndexOfChar(0xE9), -1);
    EXPECT_EQ(holed.RightIndexOfChar(0xE9), 2);
    EXPECT_EQ(holed.RightIndexOfChar(0), 1);
}

TEST(XStr, StripsReplacesAndCuts) {
    Guarded<9> s("abca");
    EXPECT_EQ(s.string.StripChar('a'), 1);
    EXPECT_EQ(s.Text(), "bca");
    EXPECT_EQ(s.string.StripChar('z'), 0);
    s.Set("abca");
    EXPECT_EQ(s.string.StripChars(XStr<2>("ac")), 0);
    EXPECT_EQ(s.Text(), "b");
    s.Set(std::string("a\0ba", 4));
    s.string.StripChars(XStr<2>("a"));
    EXPECT_EQ(s.Text(), std::string("\0b", 2));
    s.Set("abca");
    s.string.StripChars(s.string);
    EXPECT_EQ(s.Text(), "");

    const struct {
        char c;
        int found;
        const char* result;
    } cuts[] = {{'c', 1, "ab"}, {'a', 1, ""}, {'z', 0, "abca"}};
    for (const auto& cut : cuts) {
        s.Set("abca");
        EXPECT_EQ(s.string.TruncateAtChar(static_cast<unsigned char>(cut.c)), cut.found);
        EXPECT_EQ(s.Text(), cut.result);
    }
    s.Set(std::string("aba\0a", 5));
    s.string.ReplaceChar('a', 0xE9);
    EXPECT_EQ(s.Text(), std::string("\xE9"
                                    "b\xE9\0a",
                                    5));
}

TEST(XStr, ReplacementsAreCutButNotWhatFollows) {
    const struct {
        char c;
        const char* text;
        int capacity;
        const char* result;
    } cases[] = {{'b', "xyz", 9, "axyzc"}, {'b', "xyz", 4, "axyc"}, {'b', "", 9, "ac"},
                 {'c', "xy", 9, "abxy"},   {'z', "xy", 9, "abc"},   {'b', "xyz", 3, "axc"},
                 {'a', "q", 9, "qbc"}};
    for (const auto& c : cases) {
        Guarded<9> s("abc");
        s.string.DoReplaceAtChar(static_cast<unsigned char>(c.c), Bytes(c.text),
                                 static_cast<int>(std::strlen(c.text)), c.capacity);
        EXPECT_EQ(s.Text(), c.result);
    }
    XStr<9> own("abcd");
    EXPECT_EQ(std::string_view(own.ReplaceAtChar('b', own)), "aabcdcd");
}

TEST(XStr, ArraysEndAtAZeroByteOrWithTheirLength) {
    Guarded<9> s;
    s.string.DoCharArrayCopy(Bytes("abc"), 10, 9);
    EXPECT_EQ(s.Text(), "abc");
    s.string.DoCharArrayCopy(Bytes("0123456789"), 3, 9);
    EXPECT_EQ(s.Text(), "012");
    s.string.DoCharArrayCopy(Bytes("0123456789"), 10, 9);
    EXPECT_EQ(s.Text(), "012345678");
    s.string.DoCharArrayCopy(Bytes("0123456789"), 0, 9);
    EXPECT_EQ(s.Text(), "");
}

// Every worker, with sources inside the string and out of it, against the same done to a copy.
TEST(XStr, WorkersAgreeWithAModelWhereverTheSourceLies) {
    std::mt19937 random(4);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 13, 0);
        for (char& c : text) c = static_cast<char>('a' + random() % 4);
        Guarded<12> s(text);
        const std::string other = "dcbadcbadcbadcba";
        const bool inside = random() % 2 == 0;
        const std::size_t from = random() % ((inside ? text.size() : other.size()) + 1);
        const std::size_t count = random() % ((inside ? text.size() : other.size()) - from + 1);
        const std::string part = (inside ? text : other).substr(from, count);
        const auto* source = inside ? s.string.GetPStr() + 1 + from : Bytes(other.data()) + from;
        const int n = static_cast<int>(count);
        std::string result;
        switch (random() % 3) {
            case 0:
                s.string.DoStrCopy(source, n, 12);
                result = part.substr(0, 12);
                break;
            case 1:
                s.string.DoStrAppend(source, n, 12);
                result = (text + part).substr(0, 12);
                break;
            default: {
                s.string.DoReplaceAtChar('c', source, n, 12);
                const std::size_t at = text.find('c');
                result = at == std::string::npos
                             ? text
                             : text.replace(at, 1, part.substr(0, 12 - text.size() + 1));
            }
        }
        ASSERT_EQ(s.Text(), result);
    }
}

TEST(XStr, OrdersByUnsignedBytes) {
    const struct {
        std::string a, b;
        int exact, folded;
    } cases[] = {{"abc", "abcd", -1, -1}, {"abd", "abcd", 1, 1}, {"ABC", "abc", -1, 0},
                 {"\xE9", "z", 1, 1},     {"", "", 0, 0},        {"", "a", -1, -1},
                 {"[", "a", -1, -1},      {"[", "A", 1, -1},     {"\xC9", "\xE9", -1, -1},
                 {"aZ", "Az", 1, 0},      {"a@", "a`", -1, -1}};
    for (const auto& c : cases) {
        const XStr<9> a(c.a.c_str());
        const XStr<20> b(c.b.c_str());
        EXPECT_EQ(a.Compare(b, 1), c.exact) << c.a << ' ' << c.b;
        EXPECT_EQ(b.Compare(a, 1), -c.exact);
        EXPECT_EQ(a.Compare(b, 0), c.folded) << c.a << ' ' << c.b;
        EXPECT_EQ(b.Compare(a, 0), -c.folded);
        const auto operators = [&](const auto& x, const auto& y) {
            const bool agree = (x == y) == (c.exact == 0) && (x != y) == (c.exact != 0) &&
                               (x < y) == (c.exact < 0) && (x > y) == (c.exact > 0) &&
                               (x <= y) == (c.exact <= 0) && (x >= y) == (c.exact >= 0);
            EXPECT_TRUE(agree) << c.a << ' ' << c.b;
        };
        operators(a, b);
        operators(a, c.b.c_str());
        operators(c.a.c_str(), b);
    }
    EXPECT_EQ(XStr<255>(std::string(255, 'x').c_str()) == std::string(300, 'x').c_str(), 0);
    const XStr<3> holed("a\0b", 3);
    EXPECT_EQ(holed > "a", 1);
    EXPECT_EQ(holed.Compare(XStr<3>("a\0c", 3), 0), -1);
}

}  // namespace
