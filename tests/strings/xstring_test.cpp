// XStr: the capacity holds, length and terminator agree, and each order of comparison.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <concepts>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>

#include "strings/orders.h"
#include "support/seed.h"

namespace {

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
    unsigned char memory[257] = {7, 7};
    EXPECT_EQ((new (memory) XStr<255>)->IsEmpty(), 1);
    EXPECT_EQ(memory[1], 0);
    const XStr<3> source("xyz");
    XStr<5> s;
    EXPECT_EQ(View(s = "abcdefg"), "abcde");
    EXPECT_EQ(View(s = Bytes("\003abcdefg")), "abc");
    EXPECT_EQ(View(s = std::string(70000, 'q')), "qqqqq");
    EXPECT_EQ(View(s = static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(View(s = source), "xyz");
    EXPECT_EQ(View(s += 'a'), "xyza");
    EXPECT_EQ(View(s += s += "bc"), "xyzab");
    EXPECT_EQ(s.IsFull(), 1);
    EXPECT_EQ(View(XStr<5>("ab") += source), "abxyz");
    EXPECT_EQ(View(XStr<5>("ab") += Bytes("\001xyz")), "abx");
    EXPECT_EQ(View(XStr<5>("a\0b", 3)), View("a\0b", 3));
    EXPECT_EQ(View(XStr<2>(source)), "xy");
    EXPECT_EQ(View(XStr<5>(Bytes("\002abc"))), "ab");
    EXPECT_EQ(View(XStr<4>("abc").ReplaceAtChar('b', "xyz")), "axyc");
    s = "abca";
    s.StripChars(s);
    EXPECT_EQ(View(s), "");

    Guarded<255> large;
    large.string = std::string(255, 'f') + "more";
    large.string += "more";
    EXPECT_EQ(large.Text(), std::string(255, 'f'));
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

// Every change and search, with sources inside the string and out of it, against the same done to a
// copy. `head` is what calls see that stop at the first zero byte.
TEST(XStr, ChangesAgreeWithAModelWhereverTheSourceLies) {
    constexpr int kRoom = 12;
    std::mt19937 random(veldt::tests::Seed());
    const std::string other("dcb\0adc\xE9zcbadcba", 16);
    // One of them can be taken for the length.
    const auto letter = [&] { return "abcd\xE9\x05"[random() % 7]; };
    std::string text;
    Guarded<kRoom> s;
    for (int round = 0; round < 50000; ++round) {
        const bool inside = random() % 2 == 0;
        const std::string& whole = inside ? text : other;
        const std::size_t from = random() % (whole.size() + 1);
        const std::string part = whole.substr(from, random() % (whole.size() - from + 1));
        const auto* source = (inside ? s.string.GetPStr() + 1 : Bytes(other.data())) + from;
        const int n = static_cast<int>(part.size());
        const std::string head = text.c_str();
        const char c = letter();
        const auto byte = static_cast<unsigned char>(c);
        const std::size_t at = c == 0 ? std::string::npos : head.find(c);
        const std::size_t last = text.rfind(c);
        const bool found = at != std::string::npos;
        ASSERT_EQ(s.string.IndexOfChar(byte), found ? static_cast<int>(at) : -1);
        ASSERT_EQ(s.string.RightIndexOfChar(byte),
                  last != std::string::npos ? static_cast<int>(last) : -1);
        switch (random() % 8) {
            case 0:
                s.string.DoStrCopy(source, n, kRoom);
                text = part;
                break;
            case 1:
                s.string.DoStrAppend(source, n, kRoom);
                text += part;
                break;
            case 2:
                s.string.DoCharArrayCopy(source, n, kRoom);
                text = part.c_str();
                break;
            case 3:
                s.string.DoReplaceAtChar(byte, source, n, kRoom);
                // What follows the character stays: the replacement is cut.
                if (found) text.replace(at, 1, part.substr(0, kRoom + 1 - text.size()));
                break;
            case 4:
                ASSERT_EQ(s.string.StripChar(byte), found);
                if (found) text.erase(at, 1);
                break;
            case 5:
                // A set ends at its first zero byte.
                ASSERT_EQ(s.string.StripChars(XStr<2>(&c, 1) += 'b'), 0);
                std::erase_if(text,
                              [&](char x) { return x != 0 && c != 0 && (x == c || x == 'b'); });
                break;
            case 6:
                ASSERT_EQ(s.string.TruncateAtChar(byte), found);
                if (found) text.resize(at);
                break;
            default:
                s.string.ReplaceChar(byte, 'd');
                std::replace(text.begin(), text.begin() + static_cast<int>(head.size()), c, 'd');
        }
        text.resize(std::min<std::size_t>(text.size(), kRoom));
        ASSERT_EQ(s.Text(), text);
    }
}

TEST(XStr, OrdersByUnsignedBytes) {
    std::mt19937 random(veldt::tests::Seed());
    const auto word = [&] {
        std::string text(random() % 4, 0);
        for (char& c : text) c = "aAzZ@[`{\xC9\xE9"[random() % 10];
        return text;
    };
    const auto order = [](const std::string& x, const std::string& y) { return (x > y) - (x < y); };
    const auto lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), veldt::tests::Lower);
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        const std::string x = word(), y = word();
        const XStr<9> a(x.c_str());
        const XStr<20> b(y.c_str());
        const int exact = order(x, y);
        ASSERT_EQ(a.Compare(b, 1), exact) << x << ' ' << y;
        ASSERT_EQ(a.DoCompare(Bytes(y.data()), b.GetLength(), 0), order(lower(x), lower(y)));
        ASSERT_TRUE(veldt::tests::OperatorsAgree(a, b, exact)) << x << ' ' << y;
        ASSERT_TRUE(veldt::tests::OperatorsAgree(a, y.c_str(), exact)) << x << ' ' << y;
        ASSERT_TRUE(veldt::tests::OperatorsAgree(x.c_str(), b, exact)) << x << ' ' << y;
    }
    EXPECT_EQ(XStr<255>(std::string(255, 'x')) == std::string(300, 'x').c_str(), 0);
    EXPECT_EQ(XStr<3>("a\0b", 3).Compare(XStr<3>("a\0c", 3), 0), -1);
}

}  // namespace
