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

/// The best of some runs, in nanoseconds. The text has the pattern at its end alone.
double TimeToFind(std::string text, const std::string& pattern) {
    text += pattern;
    const auto expected = static_cast<std::int32_t>(text.find(pattern));
    double best = 1e18;
    for (int run = 0; run < 15; ++run) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Find(text, pattern), expected);
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
    const double ordinary = TimeToFind(letters, letters.substr(100, 16) + "!");
    const std::string same(kText, 'a');
    const std::string half(kText / 2, 'a');
    std::string abab = same;
    for (std::size_t i = 1; i < kText; i += 2) abab[i] = 'b';
    std::string sparse = same;
    for (std::size_t i = 1023; i < kText; i += 1024) sparse[i] = 'b';
    struct Row {
        std::string text, pattern;
        double most;  // times the ordinary
    };
    const Row rows[] = {
        {same, half + "b", 6},
        // The linear search takes up to fifty times; one that starts afresh at each place,
        // hundreds.
        {same, "b" + half, 200},
        {same, half.substr(1000) + "b" + half.substr(1000), 200},
        {sparse, std::string(1024, 'a'), 200},
        {abab, abab.substr(0, kText / 4) + abab.substr(1, kText / 4), 200},
    };
    for (const Row& row : rows) {
        EXPECT_LE(TimeToFind(row.text, row.pattern), row.most * ordinary)
            << row.pattern.substr(0, 70);
    }
}

}  // namespace
