// XStr: the capacity holds, and length and terminator agree.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <concepts>
#include <cstring>
#include <functional>
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

TEST(XStr, IsMadeOfEveryFormAndCutToItsCapacity) {
    const XStr<3> source("xyz");
    EXPECT_EQ(View(XStr<2>(source)), "xy");
    EXPECT_EQ(View(XStr<5>(reinterpret_cast<const unsigned char*>("\002abc"))), "ab");
    EXPECT_EQ(View(XStr<5>(std::string(70000, 'q'))), "qqqqq");
    EXPECT_EQ(View(XStr<5>(static_cast<const char*>(nullptr))), "");
    XStr<5> own("a");
    EXPECT_EQ(View(own += own += "bc"), "abcab");
    own.StripChars(own);
    EXPECT_EQ(View(own), "");

    unsigned char memory[258] = {7, 7};
    memory[257] = 7;
    auto& large = *new (memory) XStr<255>;
    EXPECT_EQ(large.IsEmpty(), 1);
    EXPECT_EQ(memory[1], 0);
    large = std::string(255, 'f') + "more";
    large += "more";
    EXPECT_EQ(View(large), std::string(255, 'f'));
    EXPECT_TRUE(memory[0] == 255 && memory[256] == 0 && memory[257] == 7);
}

TEST(XStr, FixesOneHalfByTheOther) {
    XStr<9> s("abcdef");
    std::strcpy(s.GetCStr(), "xyz");
    s.FixCStr();
    EXPECT_EQ(s.GetLength(), 3);
    s.FixCStr(2);
    EXPECT_EQ(View(s), "xy");
    EXPECT_STREQ(s.GetCStr(), "xyz");
    std::memcpy(s.GetPStr(), "\003abcdef", 7);
    s.FixPStr();
    EXPECT_STREQ(s.GetCStr(), "abc");
    s.Truncate(2);
    s.Truncate(5);
    EXPECT_EQ(View(s), View("ab\0\0e", 5));
}

// Every change and search, with sources inside the string and out of it, against the same done to a
// copy.
TEST(XStr, ChangesAgreeWithAModelWhereverTheSourceLies) {
    constexpr int kRoom = 12;
    constexpr std::size_t kNowhere = std::string::npos;
    std::mt19937 random(veldt::tests::Seed());
    const std::string other("dcb\0adc\xE9zcbadcba", 16);
    struct {
        unsigned char before = 0x77;
        XStr<kRoom> string;
        unsigned char after = 0x77;
    } guarded;
    XStr<kRoom>& s = guarded.string;
    std::string text;
    for (int round = 0; round < 100000; ++round) {
        const bool inside = random() % 2 == 0;
        const std::string& whole = inside ? text : other;
        const std::size_t from = random() % (whole.size() + 1);
        const std::string part = whole.substr(from, random() % (whole.size() - from + 1));
        const std::string tail = whole.c_str() + from;
        const char* source = (inside ? s.GetCStr() : other.data()) + from;
        const View view(source, part.size());
        const int n = static_cast<int>(part.size());
        const std::string counted = static_cast<char>(n) + part;
        const auto* prefixed = reinterpret_cast<const unsigned char*>(counted.data());

        // One of them can be taken for the length, and one is the terminator.
        const char c = "abcd\xE9\x05"[random() % 7];
        const auto byte = static_cast<unsigned char>(c);
        // What calls see that stop at the first zero byte.
        std::string head = veldt::tests::Terminated(text);
        const std::size_t last = text.rfind(c), at = c == 0 ? kNowhere : head.find(c);
        const bool found = at != kNowhere;
        std::string replaced = text, without = text, stripped = text;
        // What follows the character stays: the replacement is cut.
        if (found) replaced.replace(at, 1, part.substr(0, kRoom + 1 - text.size()));
        if (found) without.erase(at, 1);
        // A set ends at its first zero byte.
        std::erase_if(stripped, [&](char x) { return x != 0 && c != 0 && (x == c || x == 'b'); });
        const std::string rest = text.substr(head.size());
        const std::string before = found ? text.substr(0, at) : text;
        std::replace(head.begin(), head.end(), c, 'd');
        const struct {
            std::function<void()> change;
            std::string result;
        } changes[] = {
            {[&] { s = source; }, tail},
            {[&] { s = view; }, part},
            {[&] { s = prefixed; }, part},
            {[&] { s = XStr<255>(source, n); }, part},
            {[&] { s.AssignArray(source, n); }, veldt::tests::Terminated(part)},
            {[&] { s += c; }, text + c},
            {[&] { s += source; }, text + tail},
            {[&] { s += view; }, text + part},
            {[&] { s += prefixed; }, text + part},
            {[&] { s += XStr<255>(source, n); }, text + part},
            {[&] { s.ReplaceAtChar(c, view); }, replaced},
            {[&] { s.ReplaceChar(byte, 'd'); }, head + rest},
            {[&] { EXPECT_EQ(s.StripChar(byte), found); }, without},
            {[&] { EXPECT_EQ(s.StripChars(XStr<2>(&c, 1) += 'b'), 0); }, stripped},
            {[&] { EXPECT_EQ(s.TruncateAtChar(byte), found); }, before},
        };
        // The cast makes -1 of npos.
        ASSERT_EQ(s.IndexOfChar(byte), static_cast<int>(at));
        ASSERT_EQ(s.RightIndexOfChar(byte), static_cast<int>(last));
        const std::size_t chosen = random() % std::size(changes);
        changes[chosen].change();
        text = changes[chosen].result.substr(0, kRoom);
        ASSERT_EQ(View(s), text) << "change " << chosen;
        ASSERT_EQ(s.GetCStr()[text.size()], 0) << "change " << chosen;
        ASSERT_EQ(s.IsFull(), text.size() == kRoom);
        ASSERT_TRUE(guarded.before == 0x77 && guarded.after == 0x77) << "change " << chosen;
    }
}

}  // namespace
