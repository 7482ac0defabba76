#include "memory/find_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>

#include "memory/two_way_search.h"
#include "support/seed.h"

namespace {

using namespace veldt::memory;

std::int32_t Find(const std::string& text, const std::string& pattern) {
    return MemFindBytes(text.data(), static_cast<std::int32_t>(text.size()), pattern.data(),
                        static_cast<std::int32_t>(pattern.size()));
}

std::size_t FindTwoWay(const std::string& text, const std::string& pattern) {
    return TwoWaySearch(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                        reinterpret_cast<const unsigned char*>(pattern.data()), pattern.size());
}

std::string RandomLetters(std::size_t count, std::uint_fast32_t letters, std::mt19937& random) {
    std::string text(count, '\0');
    for (char& c : text) c = static_cast<char>('a' + random() % letters);
    return text;
}

TEST(FindBytes, FindsTheFirstPlaceOrNone) {
    std::mt19937 random(veldt::tests::Seed());
    for (int round = 0; round < 50000 && !HasFailure(); ++round) {
        const std::uint_fast32_t letters = 1 + random() % 3;
        const std::string text = RandomLetters(random() % 400, letters, random);
        std::string pattern =
            RandomLetters(1 + random() % (round % 2 == 0 ? 6 : 60), letters, random);
        if (round % 3 == 0 && pattern.size() < text.size()) {
            pattern = text.substr(random() % (text.size() - pattern.size() + 1), pattern.size());
        }
        const std::size_t expected = text.find(pattern);
        ASSERT_EQ(Find(text, pattern), static_cast<std::int32_t>(expected))
            << text << ' ' << pattern;
        if (pattern.size() <= text.size()) {
            ASSERT_EQ(FindTwoWay(text, pattern), expected) << text << ' ' << pattern;
        }
    }
}

TEST(FindBytes, NothingIsNowhere) {
    EXPECT_EQ(MemFindBytes("abc", 3, nullptr, 1), -1);
    EXPECT_EQ(MemFindBytes("abc", 3, "a", 0), -1);
    EXPECT_EQ(MemFindBytes("abc", 3, "a", -1), -1);
    EXPECT_EQ(MemFindBytes("abc", -3, "a", 1), -1);
    EXPECT_EQ(MemFindBytes("abc", 2, "bc", 2), -1);
}

/// The best of some runs, in nanoseconds.
double TimeToMiss(const std::string& text, const std::string& pattern) {
    double best = 1e18;
    for (int run = 0; run < 15; ++run) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Find(text, pattern), -1);
        const std::chrono::duration<double, std::nano> time =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, time.count());
    }
    return best;
}

TEST(FindBytes, NoPatternTakesMoreThanLinearTime) {
    constexpr std::size_t kText = 65536;
    std::mt19937 random(veldt::tests::Seed());
    const std::string letters = RandomLetters(kText, 26, random);
    const double ordinary = TimeToMiss(letters, letters.substr(100, 16) + "!");
    const std::string same(kText, 'a');
    const std::string half(kText / 2, 'a');
    EXPECT_LE(TimeToMiss(same, half + "b"), 2 * ordinary);

    // A search that starts afresh at each place takes thousands of times as long as the ordinary.
    std::string abab = same;
    for (std::size_t i = 1; i < kText; i += 2) abab[i] = 'b';
    std::string sparse = same;
    for (std::size_t i = 1023; i < kText; i += 1024) sparse[i] = 'b';
    for (const auto& [text, pattern] : {
             std::pair{same, "b" + half},
             {same, half.substr(1000) + "b" + half.substr(1000)},
             {sparse, std::string(1024, 'a')},
             {abab, abab.substr(0, kText / 4) + abab.substr(1, kText / 4)},
         }) {
        EXPECT_LE(TimeToMiss(text, pattern), 500 * ordinary) << pattern.substr(0, 70);
    }
}

}  // namespace
