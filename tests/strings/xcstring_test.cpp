// XCString: the random run, and what it leaves out.
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
#include "strings/orders.h"
#include "strings/xcstring_run.h"
#include "support/seed.h"

namespace {

using veldt::tests::OpenString;

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

// Also in steps of a width that this machine wouldn't choose.
TEST(XCString, ComparisonsStopWhereTheTextsFirstDifferButForTheirCase) {
    using namespace veldt::strings;
    std::mt19937 random(veldt::tests::Seed());
    const auto place = [](const char*, const char*, std::size_t i) { return i; };
    for (int round = 0; round < 50000; ++round) {
        const auto [a, b] = veldt::tests::TwoTexts(random);
        const std::size_t length = random() % (std::min(a.size(), b.size()) + 1);
        const std::string low = veldt::tests::Lower(a), other = veldt::tests::Lower(b);
        std::size_t first = 0;
        while (first < length && low[first] != 0 && low[first] == other[first]) ++first;
        ASSERT_EQ(Search<SameTextNoCase>::Run(a.data(), b.data(), length, place), first);
        if (length > WideSearch<SameTextNoCase>::kStep && __builtin_cpu_supports("avx2")) {
            ASSERT_EQ(WideSearch<SameTextNoCase>::Run(a.data(), b.data(), length, place), first);
        }
    }
}

// The length is set when the writing ends; until then all go by the terminator.
TEST(XCString, ALockedOneIsWhatWasWrittenSoFar) {
    for (const char* text :
         {"abcdefgh", "abc, and a good deal more than a vector holds, to a xylem"}) {
        XCString s("abc");
        s.GetBuffer(80);
        std::strcpy(s.LockBuffer(), text);
        std::string greater = text;
        ++greater.back();
        EXPECT_STREQ(XCString(s), text);
        EXPECT_TRUE(s == text && s == XCString(text));
        EXPECT_FALSE(s == greater.c_str());
        EXPECT_TRUE(s < XCString(greater.c_str()));
        EXPECT_EQ(s.Compare(greater.c_str()), -1);
        EXPECT_EQ(s.CompareNoCase(greater.c_str()), -1);
        EXPECT_EQ(s.Find(text + 4), 4);
        EXPECT_EQ(s.Find(greater.c_str() + 4), -1);
    }
}

TEST(XCString, NoLengthIsBeyond31Bits) {
    OpenString s("abc");
    EXPECT_THROW(s.ConcatCopy(INT_MAX, "", INT_MAX, ""), std::bad_alloc);
    EXPECT_THROW(s.AllocCopy(s, INT_MAX, 0, 1), std::bad_alloc);
    EXPECT_THROW(s.GetBuffer(INT_MAX), std::bad_alloc);
    s.ConcatCopy(0, "", 0, "");
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

}  // namespace
