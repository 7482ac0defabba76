// Decimal conversions, case by case. The differential program holds them against references of
// their own on random numbers.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "numerics/comma_locale.h"
#include "numerics/pascal.h"
#include "numerics/rounding.h"

namespace {

const double kSentinel = XFp::Nan(0);
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kFloat = 0, kFixed = 1;

/// The text, after a look that nothing behind it was written.
std::string Text(int style, int digitCount, double x) {
    XNDecForm form = {static_cast<std::uint8_t>(style), static_cast<std::int16_t>(digitCount)};
    unsigned char out[300];
    std::memset(out, 0x77, sizeof(out));
    XFp::Num2Str(&form, x, out);
    for (std::size_t i = out[0] + 1u; i < sizeof(out); ++i) {
        EXPECT_EQ(out[i], 0x77) << "byte " << i << " written, length " << int{out[0]};
    }
    EXPECT_EQ(form.digitCount, style == kFloat && digitCount > 20 ? 20 : digitCount);
    return FromPascal(out);
}

/// Sign, exponent and digits.
std::string Record(int style, int digitCount, double x) {
    const XNDecForm form = {static_cast<std::uint8_t>(style),
                            static_cast<std::int16_t>(digitCount)};
    XNDecimal record[2];
    std::memset(record, 0x77, sizeof(record));
    XFp::Num2Dec(&form, x, record);
    EXPECT_EQ(record[1].sign, 0x77) << "written behind the record";
    EXPECT_LT(record[0].digits[0], sizeof(record[0].digits));
    return std::to_string(record[0].sign) + ' ' + std::to_string(record[0].exponent) + ' ' +
           FromPascal(record[0].digits);
}

double Number(int sign, int exponent, const std::string& digits) {
    XNDecimal record = {static_cast<std::uint8_t>(sign), static_cast<std::int16_t>(exponent), {}};
    record.digits[0] = static_cast<unsigned char>(digits.size());
    std::memcpy(record.digits + 1, digits.data(),
                std::min(digits.size(), sizeof(record.digits) - 1));
    return XFp::Dec2Num(&record);
}

double Parsed(const std::string& text) {
    double x = 77;
    XFp::Str2Num(Pascal(text).data(), &x);
    return x;
}

std::string Zeros(int count) {
    return std::string(static_cast<std::size_t>(count), '0');
}

// Numbers in every style are the differential program's; these it meets seldom or never.
struct Case {
    int style, digitCount;
    double x;
    const char* result;
};

TEST(Decimal, Texts) {
    const Case cases[] = {
        {kFloat, 6, -0.0, " 0.00000e-1"},
        {kFloat, -400, 2.5, " 3.e+0"},
        {kFloat, 15, 5e-324, " 4.94065645841247e-324"},
        {kFloat, 5, -kInf, "INF"},
        {kFloat, 6, NAN, "NAN"},
        {kFloat, 6, kSentinel, "-1.23457e+13"},
        {kFixed, 2, -0.001, "-0.00"},
        {kFixed, 0, 0.4, "0."},
        {kFixed, 2, -0.0, "0.00"},
        {kFixed, -3, -400, "-0"},
        {kFixed, -32768, 1e300, "0"},
        {255, 2, -2.5, "-2.50"},
        {255, 2, -kInf, "INF"},
    };
    for (const Case& c : cases) EXPECT_EQ(Text(c.style, c.digitCount, c.x), c.result);
    // Below the tie, but not in 17 digits.
    EXPECT_EQ(Text(kFloat, 7, 1.0303445), " 1.030345e+0");
    for (const int digitCount : {20, 21, 32767}) {
        EXPECT_EQ(Text(kFloat, digitCount, 1.0), " 1." + Zeros(19) + "e+0");
    }
    // Longer texts are cut.
    EXPECT_EQ(Text(kFixed, 2, 1e300), "1" + Zeros(254));
    EXPECT_EQ(Text(kFixed, 32767, -1.5), "-1.5" + Zeros(251));
    EXPECT_EQ(Text(kFixed, 400, 1e-300), "0." + Zeros(253));
    EXPECT_EQ(Text(kFixed, 400, 0.5), "0.5" + Zeros(252));
}

TEST(Decimal, Records) {
    const Case cases[] = {{kFloat, 5, -1234.5, "1 -1 12345"}, {kFloat, 6, -0.0, "0 -6 000000"},
                          {kFloat, 6, -kInf, "1 0 INF"},      {kFloat, 6, -NAN, "1 0 NAN"},
                          {kFixed, 2, 0, "0 -2 00"},          {255, 2, -kInf, "1 0 INF"}};
    for (const Case& c : cases) EXPECT_EQ(Record(c.style, c.digitCount, c.x), c.result);
    EXPECT_EQ(Record(kFloat, 20, 1.0), "0 -19 1" + Zeros(19));
    EXPECT_EQ(Record(kFloat, 400, 1.0), "0 -22 1" + Zeros(22)) << "what the record holds";
    EXPECT_EQ(Record(kFixed, 400, 1.5), "0 -22 15" + Zeros(21));
    EXPECT_EQ(Record(kFixed, 2, 1e300), "0 278 1" + Zeros(22));
}

TEST(Decimal, RecordsToNumbers) {
    const struct {
        int sign, exponent;
        std::string digits;
        double x;
    } cases[] = {{0, -5, "314159", 3.14159},
                 {1, -1, "12345", -1234.5},
                 {0, 3, "12e1", 120},
                 {2, 0, "5", 5},
                 {255, 0, "5", -5},
                 {0, 3, "", 0},
                 {0, 32767, "1", kInf},
                 {0, -32768, "1", 0},
                 {1, 5, "INF", -kInf},
                 {1, 5, "NAN", kSentinel},
                 {0, 1, {"12\00034", 5}, 120},
                 {0, 0, std::string(255, '1'), 11111111111111111111111.0}};
    for (const auto& c : cases) {
        EXPECT_EQ(Number(c.sign, c.exponent, c.digits), c.x) << c.digits << ' ' << c.exponent;
    }
    for (const char* digits : {"000000", "0123", "0"}) {
        const double zero = Number(1, 7, digits);
        EXPECT_TRUE(zero == 0 && !std::signbit(zero)) << digits;
    }
}

TEST(Decimal, TextToNumbers) {
    const struct {
        double x;
        std::vector<std::string> texts;
    } cases[] = {{kInf,
                  {"INF", "Infinity", "I5", "inf", " +iNfInItY", "infinite", "1e9999999999",
                   "0x1p99999999999"}},
                 {-kInf, {"-INF"}},
                 {kSentinel, {"NAN", "None"}},
                 {0,
                  {"", " ", "-", "+-5", "--5", ".", ".e5", "in", "0x", "0xp5", "0x.g", "\0200x1",
                   "1e-9999999999", "0e9999999999", std::string(255, ' ')}},
                 {0.5, {".5", "0X.8"}},
                 {1, {"1,5", "1e", "1e+x", "1d5", "0x1p"}},
                 {1.5, {"1.5", "1.5 7"}},
                 {5, {"5."}},
                 {12, {" 12", "\t\n\v\f\r+12", "0x1.8p3", std::string("12\00034", 5)}},
                 {-2000, {"-2e3"}},
                 {-15.5, {"-0x1FP-1z"}},
                 {1.1111111111111111e254, {std::string(255, '1')}},
                 {1e-242, {"." + Zeros(250) + "1e9"}}};
    for (const auto& c : cases) {
        for (const std::string& text : c.texts) {
            EXPECT_EQ(Parsed(text), c.x) << '"' << text << '"';
        }
    }
    EXPECT_TRUE(std::isnan(Parsed("nan")) && std::isnan(Parsed(" -nAn(7)")));
    EXPECT_TRUE(std::signbit(Parsed("-0")) && std::signbit(Parsed("-0x0")));
}

TEST(Decimal, TextIsRoundedTheCallersWay) {
    const struct {
        const char* text;
        double nearest, above, below;
    } cases[] = {{"0.1", 0.1, 0.1, 0x1.9999999999999p-4},
                 {"9007199254740993", 0x1p53, 0x1p53 + 2, 0x1p53},
                 {"1.7976931348623158e308", kLargest, kInf, kLargest},
                 {"1e-400", 0, 5e-324, 0},
                 {"0x1.00000000000008p0", 1, 1 + 0x1p-52, 1},
                 {"0x1.0000000000000800000000010p0", 1 + 0x1p-52, 1 + 0x1p-52, 1},
                 {"0x0.fffffffffffff8p-1022", 0x1p-1022, 0x1p-1022, 0x0.fffffffffffffp-1022},
                 {"0x1.00000000000000000001p-1075", 5e-324, 5e-324, 0},
                 {"0x1p1024", kInf, kInf, kLargest}};
    for (const auto& c : cases) {
        const double results[] = {c.nearest, c.above, c.below, c.below};
        const double negated[] = {c.nearest, c.below, c.above, c.below};
        for (int mode = 0; mode < 4; ++mode) {
            const Rounding rounding(mode);
            EXPECT_EQ(Parsed(c.text), results[mode]) << c.text << " in mode " << mode;
            EXPECT_EQ(Parsed(std::string("-") + c.text), -negated[mode]) << c.text << ' ' << mode;
            EXPECT_EQ(XFp::GetRound(), mode);
        }
    }
    const Rounding upward(1);
    EXPECT_GT(Parsed("-0.1"), Number(1, -1, "1")) << "a record's sign comes on after rounding";
}

bool PrintsCommas() {
    char text[8];
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return std::strcmp(text, "0,5") == 0;
}

TEST(Decimal, NeitherThreadsNorLocalesMeet) {
    SetCommaLocale();
    ASSERT_TRUE(PrintsCommas());
    const auto work = [](double x, const char* text, const char* record) {
        for (int i = 0; i < 5000; ++i) {
            ASSERT_EQ(Text(kFloat, 15, x), text);
            ASSERT_EQ(Record(kFixed, 3, x), record);
            ASSERT_EQ(Parsed(text), x);
            ASSERT_EQ(Parsed("1,5"), 1);
            ASSERT_EQ(Number(0, -1, "15"), 1.5);
            ASSERT_TRUE(PrintsCommas());
        }
    };
    std::thread other(work, -98765.4321e-9, "-9.87654321000000e-5", "1 -3 0");
    work(12345.6789, " 1.23456789000000e+4", "0 -3 12345679");
    other.join();
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
