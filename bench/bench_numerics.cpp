// What the decimal conversions cost beside the C library's, on the same numbers and in turn: texts
// and records against snprintf with as many digits, reading against strtod between saving and
// restoring LC_NUMERIC. Prints the median of each in nanoseconds and their ratio; ends with 1 if a
// ratio exceeds its limit. Writing few digits has none: snprintf gets cheaper with fewer, and the
// conversions, which always find seventeen, don't.
#include <veldt20/numerics.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 101;
constexpr double kWritingLimit = 1.0 / 3;
constexpr double kReadingLimit = 1.0 / 2;
constexpr double kNoLimit = 1000;

/// What the compiler must not find unused.
volatile unsigned char sink;

struct Numbers {
    const char* name;
    std::vector<double> values;
};

std::vector<Numbers> Samples() {
    constexpr std::size_t kCount = 2000;
    std::mt19937_64 random(20);
    Numbers any = {"any bits", {}};
    Numbers plain = {"0 to 1e6", {}};
    Numbers prices = {"prices", {}};
    while (any.values.size() < kCount) {
        const auto x = std::bit_cast<double>(random());
        if (std::isfinite(x)) {
            any.values.push_back(x);
        }
        plain.values.push_back(static_cast<double>(random() >> 11) * 0x1p-53 * 1e6);
        prices.values.push_back(static_cast<double>(random() % 10000000) / 100);
    }
    return {any, plain, prices};
}

template <class Work>
double NanosecondsPerNumber(std::size_t count, const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < count; ++i) {
        work(i);
    }
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    return time.count() / static_cast<double>(count);
}

double Median(std::vector<double>& times) {
    const auto middle = times.begin() + kRounds / 2;
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

template <class Ours, class Theirs>
bool Compare(const std::string& what, std::size_t count, double limit, const Ours& ours,
             const Theirs& theirs) {
    std::vector<double> times[2];
    for (int round = 0; round < kRounds; ++round) {
        times[0].push_back(NanosecondsPerNumber(count, ours));
        times[1].push_back(NanosecondsPerNumber(count, theirs));
    }
    const double ourTime = Median(times[0]);
    const double theirTime = Median(times[1]);
    const double ratio = ourTime / theirTime;
    std::printf("%-24s %7.1f ns  %7.1f ns  ratio %.2f", what.c_str(), ourTime, theirTime, ratio);
    if (limit < kNoLimit) {
        std::printf(", at most %.2f%s", limit, ratio > limit ? "  MISSED" : "");
    }
    std::printf("\n");
    return ratio <= limit;
}

bool Writing(const Numbers& numbers, std::int16_t digits) {
    const auto& values = numbers.values;
    XNDecForm form = {0, digits};
    const auto print = [&](std::size_t i) {
        char text[64];
        std::snprintf(text, sizeof(text), "%.*e", digits - 1, values[i]);
        sink = static_cast<unsigned char>(text[1]);
    };
    const auto toText = [&](std::size_t i) {
        unsigned char text[256];
        XFp::Num2Str(&form, values[i], text);
        sink = text[1];
    };
    const auto toRecord = [&](std::size_t i) {
        XNDecimal record;
        XFp::Num2Dec(&form, values[i], &record);
        sink = record.digits[1];
    };
    const std::string tail = std::string(" ") + numbers.name + ", " + std::to_string(digits);
    const double limit = digits < 15 ? kNoLimit : kWritingLimit;
    const bool text = Compare("Num2Str" + tail, values.size(), limit, toText, print);
    return Compare("Num2Dec" + tail, values.size(), limit, toRecord, print) && text;
}

struct Written {
    unsigned char text[256];
    XNDecimal record;
};

std::vector<Written> Write(const std::vector<double>& values, std::int16_t digits) {
    std::vector<Written> written(values.size());
    XNDecForm form = {0, digits};
    for (std::size_t i = 0; i < values.size(); ++i) {
        XFp::Num2Str(&form, values[i], written[i].text);
        written[i].text[written[i].text[0] + 1] = 0;
        XFp::Num2Dec(&form, values[i], &written[i].record);
    }
    return written;
}

bool Reading(const Numbers& numbers, std::int16_t digits) {
    const std::vector<Written> written = Write(numbers.values, digits);
    volatile double result;
    const auto underLocale = [&](std::size_t i) {
        const char* const current = std::setlocale(LC_NUMERIC, nullptr);
        const std::size_t size = std::strlen(current) + 1;
        char* const saved = new char[size];
        std::memcpy(saved, current, size);
        std::setlocale(LC_NUMERIC, "C");
        result = std::strtod(reinterpret_cast<const char*>(written[i].text) + 1, nullptr);
        std::setlocale(LC_NUMERIC, saved);
        delete[] saved;
    };
    const auto fromText = [&](std::size_t i) {
        double x;
        XFp::Str2Num(written[i].text, &x);
        result = x;
    };
    const auto fromRecord = [&](std::size_t i) { result = XFp::Dec2Num(&written[i].record); };
    const std::string tail = std::string(" ") + numbers.name + ", " + std::to_string(digits);
    const bool text =
        Compare("Str2Num" + tail, written.size(), kReadingLimit, fromText, underLocale);
    return Compare("Dec2Num" + tail, written.size(), kReadingLimit, fromRecord, underLocale) &&
           text;
}

}  // namespace

int main() {
    bool met = true;
    for (const Numbers& numbers : Samples()) {
        for (const auto digits : std::initializer_list<std::int16_t>{6, 15, 17}) {
            met &= Writing(numbers, digits);
            met &= Reading(numbers, digits);
        }
    }
    return met ? 0 : 1;
}
