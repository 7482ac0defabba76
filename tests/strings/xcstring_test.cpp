// XCString: the random run, and what it leaves out. The orders, the limits of length, texts from
// resources.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <string>

#include "strings/mismatch.h"
#include "strings/open_string.h"
#include "strings/orders.h"
#include "strings/xcstring_run.h"
#include "support/refusing_new.h"
#include "support/seed.h"

namespace {

using veldt::tests::Lower;
using veldt::tests::OpenString;
using veldt::tests::OperatorsAgree;
using veldt::tests::RefusedNew;

/// The difference of the first two signed bytes that differ after `fold`, up to the first zero
/// byte.
template <typename Fold>
int PlainDifference(const std::string& a, const std::string& b, Fold fold) {
    for (std::size_t i = 0;; ++i) {
        const int x = static_cast<signed char>(fold(a.c_str()[i]));
        const int y = static_cast<signed char>(fold(b.c_str()[i]));
        if (x != y || x == 0) return x - y;
    }
}

char AsItIs(char c) {
    return c;
}

/// Two texts of which one often is the other with a byte changed, and zero bytes in some.
class Pairs {
  public:
    void Draw() {
        a = Word(random_() % (random_() % 4 == 0 ? 300 : 40));
        b = random_() % 4 == 0 ? Word(random_() % 40) : a;
        if (!b.empty() && random_() % 2 == 0) b[random_() % b.size()] = Letter();
        b.resize(random_() % 4 == 0 ? random_() % (b.size() + 1) : b.size());
    }

    std::string a;
    std::string b;

  private:
    char Letter() { return "aAzZ[{@`\x7F\x80\xC9\xE9"[random_() % (random_() % 8 == 0 ? 13 : 12)]; }
    std::string Word(std::size_t length) {
        std::string text(length, 0);
        for (char& c : text) c = Letter();
        return text;
    }

    std::mt19937 random_{veldt::tests::Seed()};
};

/// Whether each width of step stops where the texts first differ but for their case, also widths
/// that this machine wouldn't choose.
bool StepsAgree(const std::string& a, const std::string& b) {
    using namespace veldt::strings;
    const std::size_t length = std::min(a.size(), b.size());
    std::size_t first = 0;
    while (first < length && a[first] != 0 && Lower(a[first]) == Lower(b[first])) ++first;
    const auto place = [](const char*, const char*, std::size_t i) { return i; };
    const bool wide = length > WideSearch<SameTextNoCase>::kStep && __builtin_cpu_supports("avx2");
    return Search<SameTextNoCase>::Run(a.data(), b.data(), length, place) == first &&
           (!wide || WideSearch<SameTextNoCase>::Run(a.data(), b.data(), length, place) == first);
}

TEST(XCString, AMillionOperationsAgainstAModel) {
    const long before = veldt::tests::LiveBlocks();
    {
        std::mt19937 random(veldt::tests::Seed());
        const auto run = std::make_unique<veldt::tests::XCStringRun<std::mt19937>>(random);
        for (int step = 0; step < 1000000; ++step) {
            run->Step();
            run->Check();
            ASSERT_FALSE(HasFatalFailure()) << "at step " << step;
        }
    }
    EXPECT_EQ(veldt::tests::LiveBlocks(), before);
}

TEST(XCString, OrdersBySignedBytes) {
    Pairs texts;
    for (int round = 0; round < 50000; ++round) {
        texts.Draw();
        const XCString a(texts.a.data(), static_cast<int>(texts.a.size()));
        const XCString b(texts.b.data(), static_cast<int>(texts.b.size()));
        const int exact = PlainDifference(texts.a, texts.b, AsItIs);
        ASSERT_EQ(a.Compare(b), (exact > 0) - (exact < 0));
        ASSERT_EQ(a.CompareNoCase(b), PlainDifference(texts.a, texts.b, Lower));
        ASSERT_TRUE(OperatorsAgree(a, b, exact));
        ASSERT_TRUE(OperatorsAgree(a, texts.b.c_str(), exact));
        ASSERT_TRUE(OperatorsAgree(texts.a.c_str(), b, exact));
        ASSERT_TRUE(StepsAgree(texts.a, texts.b));
    }
}

// The length is set when the writing ends; until then all go by the terminator.
TEST(XCString, ALockedOneIsWhatWasWrittenSoFar) {
    const std::string written = "abc, and then a good deal more than a vector holds, up to a xylem";
    for (const std::size_t cut : {written.size(), std::size_t{8}}) {
        const std::string text = written.substr(0, cut);
        XCString s("abc");
        s.GetBuffer(80);
        std::strcpy(s.LockBuffer(), text.c_str());
        EXPECT_STREQ(XCString(s), text.c_str());
        EXPECT_TRUE(s == text.c_str());
        EXPECT_TRUE(s == XCString(text.c_str()));
        std::string greater = text;
        ++greater.back();
        EXPECT_FALSE(s == greater.c_str());
        EXPECT_EQ(s.Compare(greater.c_str()), -1);
        EXPECT_TRUE(s < XCString(greater.c_str()));
        EXPECT_EQ(s.CompareNoCase(greater.c_str()), -1);
        EXPECT_EQ(s.Find(text.c_str() + 4), 4);
        EXPECT_EQ(s.Find(greater.c_str() + 4), -1);
    }
}

TEST(XCString, NoLengthIsBeyond31Bits) {
    OpenString s("abc");
    EXPECT_THROW(s.ConcatCopy(INT_MAX, "", INT_MAX, ""), std::bad_alloc);
    EXPECT_THROW(s.AllocCopy(s, INT_MAX, 0, 1), std::bad_alloc);
    EXPECT_THROW(s.GetBuffer(INT_MAX), std::bad_alloc);
    EXPECT_STREQ(s, "abc");
    OpenString longest("abc");
    try {
        longest.GetBufferSetLength(INT_MAX - 1);
    } catch (const std::bad_alloc&) {
        EXPECT_STREQ(longest, "abc");
        return;
    }
    EXPECT_EQ(longest.GetLength(), INT_MAX - 1);
    EXPECT_THROW(longest += 'x', std::bad_alloc);
    EXPECT_THROW(longest += longest, std::bad_alloc);
    EXPECT_EQ(longest.GetAt(2), 'c');
    EXPECT_EQ(longest.GetAt(INT_MAX - 1), 0);
}

/// Loads into a string with a sharer, refused each of its requests for memory in turn.
void ExpectNoHalfLoad(unsigned int id) {
    for (long nth = 1; nth < 9; ++nth) {
        XCString s("abc");
        const XCString sharer(s);
        const RefusedNew refusal(nth);
        try {
            s.LoadStringA(nullptr, id);
        } catch (const std::bad_alloc&) {
        }
        if (!refusal.Happened()) return;
        EXPECT_EQ(static_cast<const char*>(s), static_cast<const char*>(sharer)) << id;
    }
    ADD_FAILURE() << "always refused";
}

// The resources, under ids that say their lengths, are in resources.rc and resources_posix.cpp.
TEST(XCString, LoadsTextsOfAnyLength) {
    const std::pair<unsigned int, int> cases[] = {{0, 0},     {254, 254}, {255, 511},  {510, 511},
                                                  {511, 767}, {512, 767}, {1200, 1279}};
    for (const auto& [length, capacity] : cases) {
        const std::string text = length == 0 ? "" : std::string(length - 1, 'x') + 'y';
        XCString s;
        EXPECT_EQ(s.LoadStringA(nullptr, length), length != 0);
        EXPECT_EQ(std::string(s), text);
        EXPECT_EQ(s.GetAllocLength(), capacity);

        XCString locked("abc");
        locked.GetBuffer(1300);
        const char* buffer = locked.LockBuffer();
        locked.LoadStringA(nullptr, length);
        EXPECT_EQ(static_cast<const char*>(locked), buffer);
        EXPECT_EQ(std::string(locked), text);
        ExpectNoHalfLoad(length);
    }
    XCString old("abc");
    EXPECT_EQ(old.LoadStringA(nullptr, 9999), 0);
    EXPECT_STREQ(old, "");
}

}  // namespace
