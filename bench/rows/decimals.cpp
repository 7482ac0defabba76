// Decimal conversions: writing beside snprintf and std::to_chars with as many digits, reading
// beside strtod between saving and restoring LC_NUMERIC, and std::from_chars.
#include <veldt20/numerics.h>

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr std::size_t kNumbers = 2000;
constexpr double kWritingBound = 1.0 / 3;
constexpr double kReadingBound = 0.5;

enum class Sample { kAnyBits, kPlain, kPrices };
constexpr Sample kSamples[] = {Sample::kAnyBits, Sample::kPlain, Sample::kPrices};
constexpr const char* kSampleNames[] = {"any bits", "0 to 1e6", "prices"};

std::vector<double> Values(Sample sample) {
    std::mt19937_64 random(20);
    std::vector<double> values;
    while (values.size() < kNumbers) {
        const std::uint64_t bits = random();
        const double number = sample == Sample::kAnyBits ? std::bit_cast<double>(bits)
                              : sample == Sample::kPlain
                                  ? static_cast<double>(bits >> 11) * 0x1p-53 * 1e6
                                  : static_cast<double>(bits % 10'000'000) / 100;
        if (std::isfinite(number)) values.push_back(number);
    }
    return values;
}

/// `call(element)` for all elements of what `make` gives, ten times a round.
template <class Make, class Call>
Setup OnAll(Make make, Call call) {
    return [=]() -> Round {
        auto elements = std::make_shared<decltype(make())>(make());
        return [=] {
            return NanosecondsOf(10,
                                 [&] {
                                     for (const auto& element : *elements) {
                                         call(element);
                                     }
                                 }) /
                   static_cast<double>(elements->size());
        };
    };
}

struct Written {
    unsigned char text[256];
    XNDecimal record;
};

std::vector<Written> WrittenValues(Sample sample, std::int16_t digits) {
    std::vector<Written> written;
    XNDecForm form = {0, digits};
    for (const double value : Values(sample)) {
        Written& entry = written.emplace_back();
        XFp::Num2Str(&form, value, entry.text);
        entry.text[entry.text[0] + 1] = 0;
        XFp::Num2Dec(&form, value, &entry.record);
    }
    return written;
}

/// A library's own, in a program that may have set any locale.
double ReadUnderLocale(const char* text) {
    const std::string saved = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "C");
    const double value = std::strtod(text, nullptr);
    std::setlocale(LC_NUMERIC, saved.c_str());
    return value;
}

void ToText(std::int16_t digits, double value) {
    XNDecForm form = {0, digits};
    unsigned char text[256];
    XFp::Num2Str(&form, value, text);
    Touch(text);
}

void ToRecord(std::int16_t digits, double value) {
    const XNDecForm form = {0, digits};
    XNDecimal record;
    XFp::Num2Dec(&form, value, &record);
    Touch(&record);
}

void Print(std::int16_t digits, double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
    Touch(text);
}

void ToChars(std::int16_t digits, double value) {
    char text[64];
    std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, digits - 1);
    Touch(text);
}

using Writer = void (*)(std::int16_t digits, double value);

Row WritingRow(const char* name, Writer ours, Sample sample, std::int16_t digits) {
    const auto way = [=](Writer writer) {
        return OnAll([=] { return Values(sample); }, [=](double value) { writer(digits, value); });
    };
    return {std::string(name) + ", " + std::to_string(digits) + " digits, " +
                kSampleNames[static_cast<int>(sample)],
            {kWritingBound},
            {way(ours), way(Print), way(ToChars)}};
}

using Reader = double (*)(const Written& entry);

Row ReadingRow(const char* name, Reader ours, Sample sample, std::int16_t digits) {
    const auto way = [=](Reader reader) {
        return OnAll([=] { return WrittenValues(sample, digits); },
                     [=](const Written& entry) {
                         const double value = reader(entry);
                         Touch(&value);
                     });
    };
    const Reader locale = [](const Written& entry) {
        return ReadUnderLocale(reinterpret_cast<const char*>(entry.text) + 1);
    };
    const Reader fromChars = [](const Written& entry) {
        const char* text = reinterpret_cast<const char*>(entry.text) + 1;
        double value = 0;
        std::from_chars(text, text + entry.text[0], value);
        return value;
    };
    return {std::string(name) + ", " + std::to_string(digits) + " digits, " +
                kSampleNames[static_cast<int>(sample)],
            {kReadingBound},
            {way(ours), way(locale), way(fromChars)}};
}

}  // namespace

Section NumbersToText() {
    Section section{"Numbers to text",
                    "To length-prefixed text and to decimal records, beside snprintf and "
                    "std::to_chars with as many digits.",
                    {{"VELDT20", ""}, {"snprintf", ""}, {"std::to_chars", ""}},
                    {}};
    for (const Sample sample : kSamples) {
        for (const std::int16_t digits : {std::int16_t{6}, std::int16_t{15}, std::int16_t{17}}) {
            section.rows.push_back(WritingRow("Num2Str", ToText, sample, digits));
            section.rows.push_back(WritingRow("Num2Dec", ToRecord, sample, digits));
        }
    }
    section.rows[2].headline = true;
    return section;
}

Section TextToNumbers() {
    Section section{"Text to numbers",
                    "Beside strtod with the decimal point held to a dot by saving and restoring "
                    "LC_NUMERIC, and std::from_chars.",
                    {{"VELDT20", ""}, {"strtod", ""}, {"std::from_chars", ""}},
                    {}};
    const Reader text = [](const Written& entry) {
        double value = 0;
        XFp::Str2Num(entry.text, &value);
        return value;
    };
    const Reader record = [](const Written& entry) { return XFp::Dec2Num(&entry.record); };
    for (const Sample sample : kSamples) {
        for (const std::int16_t digits : {std::int16_t{6}, std::int16_t{15}, std::int16_t{17}}) {
            section.rows.push_back(ReadingRow("Str2Num", text, sample, digits));
            section.rows.push_back(ReadingRow("Dec2Num", record, sample, digits));
        }
    }
    section.rows[2].headline = true;
    return section;
}

}  // namespace veldt::bench
