// The byte utilities against the C library on the same bytes, in turn, and the search under editing
// handles against memmem. Prints the median of each and of their ratio; ends with 1 if a ratio is
// above its limit.
#include <veldt20/bytes.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "memory/find_bytes.h"

namespace {

constexpr int kRounds = 41;
constexpr std::size_t kText = 65536;  // that is searched
constexpr double kSameSpeed = 1.05;
constexpr double kMemorySpeed = 1.2;
constexpr double kOnText = 1.2;

bool withinLimits = true;

/// Keeps the compiler from knowing what the bytes are, or that nobody looks at them.
void Touch(const void* bytes) {
    asm volatile("" : : "r"(bytes) : "memory");
}

template <class Call>
double NanosecondsOf(int times, Call call) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        call();
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / times;
}

double MedianOf(std::vector<double> times) {
    std::nth_element(times.begin(), times.begin() + kRounds / 2, times.end());
    return times[kRounds / 2];
}

/// Times both, one after the other in each round, and so often in a round as to pass over some
/// megabytes with `work` bytes at a time.
template <class Ours, class Theirs>
void Compare(const char* name, std::size_t size, std::size_t work, double limit, Ours ours,
             Theirs theirs) {
    const int times = static_cast<int>(std::max<std::size_t>(1, 8000000 / work));
    std::vector<double> our;
    std::vector<double> their;
    std::vector<double> ratios;  // round by round, as the machine's speed drifts
    for (int round = 0; round < kRounds; ++round) {
        our.push_back(NanosecondsOf(times, ours));
        their.push_back(NanosecondsOf(times, theirs));
        ratios.push_back(our.back() / their.back());
    }
    const double ratio = MedianOf(ratios);
    const bool within = ratio <= limit;
    withinLimits = withinLimits && within;
    std::printf("%-26s %9zu bytes %12.1f ns %12.1f ns %6.2f%s\n", name, size, MedianOf(our),
                MedianOf(their), ratio, within ? "" : "  above its limit");
}

void CompareUtilities(std::size_t size, std::size_t skew) {
    const auto count = static_cast<unsigned int>(size);
    std::vector<char> first(size + 128, 'x');
    std::vector<char> second(size + 128, 'x');
    char* a = first.data() + skew;
    char* b = second.data() + 2 * skew;
    const auto copy = [&] { std::memcpy(a, b, size), Touch(a); };
    Compare(
        "XBlockMove / memmove", size, size, kSameSpeed, [&] { XBlockMove(b, a, count), Touch(a); },
        [&] { std::memmove(a, b, size), Touch(a); });
    Compare(
        "XBlockClear / memset", size, size, kSameSpeed, [&] { XBlockClear(a, count), Touch(a); },
        [&] { std::memset(a, 0, size), Touch(a); });
    Compare(
        "XMemSet / memset", size, size, kSameSpeed, [&] { XMemSet(a, 'x', count), Touch(a); },
        [&] { std::memset(a, 'x', size), Touch(a); });
    std::memcpy(a, b, size);
    int equal = 0;
    Compare(
        "XBlockEqual / memcmp", size, size, kSameSpeed,
        [&] { equal += XBlockEqual(a, b, count), Touch(&equal); },
        [&] { equal += std::memcmp(a, b, size) == 0, Touch(&equal); });
    Compare(
        "XMemSetOr / memcpy", size, size, kMemorySpeed, [&] { XMemSetOr(a, b, count), Touch(a); },
        copy);
    Compare(
        "XMemSetAnd / memcpy", size, size, kMemorySpeed, [&] { XMemSetAnd(a, b, count), Touch(a); },
        copy);
    Compare(
        "XMemSetXor / memcpy", size, size, kMemorySpeed, [&] { XMemSetXor(a, b, count), Touch(a); },
        copy);
}

std::string Letters(std::size_t count, std::mt19937& random) {
    std::string text(count, '\0');
    // The commoner a letter is in English, the more often it stands here.
    constexpr char kLetters[] = "      eeeeetttaaaooooiiinnnsshhrrddlcumwfgypbvk";
    for (char& c : text) {
        c = kLetters[random() % (sizeof kLetters - 1)];
    }
    return text;
}

void CompareSearch(const char* name, const std::string& text, const std::string& pattern) {
    const auto find = [&] {
        const int place =
            veldt::memory::MemFindBytes(text.data(), static_cast<int>(text.size()), pattern.data(),
                                        static_cast<int>(pattern.size()));
        Touch(&place);
    };
    Compare(name, pattern.size(), kText, kOnText, find,
            [&] { Touch(memmem(text.data(), text.size(), pattern.data(), pattern.size())); });
}

}  // namespace

int main() {
    std::printf("%-26s %15s %15s %15s %6s\n", "", "", "this library", "C library", "ratio");
    // In the caches of one core; further out, what the other cores do decides.
    for (const std::size_t size : {4096u, 65536u, 1u << 20}) {
        CompareUtilities(size, 0);
        CompareUtilities(size, 3);
    }
    std::mt19937 random(20);
    const std::string text = Letters(kText, random);
    for (const std::size_t length : {2u, 4u, 8u, 16u, 64u, 1000u}) {
        CompareSearch("search, last byte differs", text, text.substr(3000, length - 1) + "!");
        CompareSearch("search, first byte differs", text, "!" + text.substr(3000, length - 1));
    }
    const std::string same(kText, 'a');
    CompareSearch("search, a...ab in a...a", same, std::string(kText / 2, 'a') + "b");
    CompareSearch("search, ba...a in a...a", same, "b" + std::string(kText / 2, 'a'));
    return withinLimits ? 0 : 1;
}
