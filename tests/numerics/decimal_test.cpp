// Decimal conversions, case by case. The differential program holds them against references of
// their own on random numbers.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "numerics/rounding.h"

namespace {

const double kSentinel = XFp::Nan(0);
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kIeeeNan = std::numeric_limits<double>::quiet_NaN();

enum Style : std::uint8_t { kFloating, kFixed, kFixedToo = 255 };

/// The text, after a look that nothing behind it was written.
std::string Text(Style style, int digitCount, double x, XNDecForm* after = nullptr) {
    XNDecForm form = {style, static_cast<std::int16_t>(digitCount)};
    unsigned char out[300];
    std::memset(out, 0x77, sizeof(out));
    XFp::Num2Str(&form, x, out);
    for (std::size_t i = out[0] + 1u; i < sizeof(out); ++i) {
        EXPECT_EQ(out[i], 0x77) << "byte " << i << " written, length " << int{out[0]};
    }
    if (after != nullptr) {
        *after = form;
    }
    return {reinterpret_cast<const char*>(out) + 1, out[0]};
}

struct Decimal {
    int sign, exponent;
    std::string digits;
    bool operator==(const Decimal&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Decimal& d) {
    return out << d.sign << ' ' << d.exponent << ' ' << d.digits;
}

Decimal Record(Style style, int digitCount, double x) {
    const XNDecForm form = {style, static_cast<std::int16_t>(digitCount)};
    struct {
        XNDecimal record;
        unsigned char behind[64];
    } room;
    std::memset(&room, 0x77, sizeof(room));
    XFp::Num2Dec(&form, x, &room.record);
    for (const unsigned char byte : room.behind) {
        EXPECT_EQ(byte, 0x77) << "written behind the record";
    }
    EXPECT_LT(room.record.digits[0], sizeof(room.record.digits));
    return {
        room.record.sign, room.record.exponent,
        std::string(reinterpret_cast<const char*>(room.record.digits) + 1, room.record.digits[0])};
}

double Number(int sign, int exponent, const std::string& digits) {
    XNDecimal record = {static_cast<std::uint8_t>(sign), static_cast<std::int16_t>(exponent), {}};
    record.digits[0] = static_cast<unsigned char>(digits.size());
    std::memcpy(record.digits + 1, digits.data(),
                std::min(digits.size(), sizeof(record.digits) - 1));
    return XFp::Dec2Num(&record);
}

double Parsed(const std::string& text) {
    // Exactly as long as the string is, so that a look past its end is seen.
    std::vector<unsigned char> string(1, static_cast<unsigned char>(text.size()));
    string.insert(string.end(), text.begin(), text.end());
    double x = 77;
    XFp::Str2Num(string.data(), &x);
    return x;
}

TEST(Decimal, FloatingText) {
    const struct {
        int digitCount;
        double x;
        const char* text;
    } cases[] = {{6, 3.14159, " 3.14159e+0"},
                 {6, -3.14159, "-3.14159e+0"},
                 {6, 1e300, " 1.00000e+300"},
                 {6, 1e-5, " 1.00000e-5"},
                 {6, 0.0, " 0.00000e-1"},
                 {6, -0.0, " 0.00000e-1"},
                 {3, 9.996, " 1.000e+1"},
                 {1, 3.0, " 3.e+0"},
                 {1, 0.96, " 1.0e+0"},
                 {0, 3.0, " 3.e+0"},
                 {-400, 2.5, " 3.e+0"},
                 {15, 2.0 / 3.0, " 6.66666666666667e-1"},
                 {17, 2.0 / 3.0, " 6.6666666666666700e-1"},
                 {16, 9.999999999999998, " 1.0000000000000000e+1"},
                 {6, kSentinel, "-1.23457e+13"},
                 {14, kSentinel, "-1.2345679012345e+13"},
                 {15, 5e-324, " 4.94065645841247e-324"},
                 {15, 1.7976931348623157e308, " 1.79769313486232e+308"},
                 {6, kIeeeNan, "NAN"},
                 {5, kInfinity, "INF"},
                 {5, -kInfinity, "INF"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Text(kFloating, c.digitCount, c.x), c.text);
    }
    for (const int digitCount : {20, 21, 25, 400, 32767}) {
        XNDecForm form;
        EXPECT_EQ(Text(kFloating, digitCount, 1.0, &form), " 1.0000000000000000000e+0");
        EXPECT_EQ(form.digitCount, 20);
    }
    XNDecForm form;
    EXPECT_EQ(Text(kFloating, -7, kInfinity, &form), "INF");
    EXPECT_EQ(form.digitCount, -7);
}

TEST(Decimal, FixedText) {
    const struct {
        int digitCount;
        double x;
        const char* text;
    } cases[] = {{2, 3.14159, "3.14"},  {2, -3.14159, "-3.14"},
                 {0, 1234.5, "1235"},   {2, 9.996, "10.00"},
                 {2, 0.005, "0.01"},    {2, 0.001, "0.00"},
                 {2, 0.0001, "0.000"},  {2, -0.001, "-0.00"},
                 {0, 0.4, "0."},        {0, 0.5, "1"},
                 {0, 0.0, "0."},        {2, 0.0, "0.00"},
                 {2, -0.0, "0.00"},     {1, 0.06, "0.1"},
                 {-1, 1234.0, "1230"},  {-3, 1234.0, "1000"},
                 {-3, 600.0, "1000"},   {-3, -400.0, "-0"},
                 {-5, 1234.0, "0"},     {-32768, 1e300, "0"},
                 {-32768, 0.5, "0."},   {20, 0.1, "0.10000000000000000000"},
                 {2, kInfinity, "INF"}, {2, -kInfinity, "INF"},
                 {0, kIeeeNan, "NAN"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Text(kFixed, c.digitCount, c.x), c.text);
        EXPECT_EQ(Text(kFixedToo, c.digitCount, c.x), c.text);
    }
    // Longer texts are cut.
    EXPECT_EQ(Text(kFixed, 2, 1e300), "1" + std::string(254, '0'));
    EXPECT_EQ(Text(kFixed, 32767, -1.5), "-1.5" + std::string(251, '0'));
    EXPECT_EQ(Text(kFixed, 400, 1e-300), "0." + std::string(253, '0'));
    EXPECT_EQ(Text(kFixed, 253, 0.5), "0.5" + std::string(252, '0'));
    EXPECT_EQ(Text(kFixed, 250, 0.5).size(), 252u);
}

TEST(Decimal, ModesRoundHalfUpOrCut) {
    for (int mode = 0; mode < 4; ++mode) {
        const Rounding rounding(mode);
        const bool up = mode < 2;
        for (const double sign : {1.0, -1.0}) {
            EXPECT_EQ(Text(kFloating, 3, sign * 1.2355).substr(1), up ? "1.24e+0" : "1.23e+0");
            EXPECT_EQ(Text(kFloating, 2, sign * 1.25).substr(1), up ? "1.3e+0" : "1.2e+0");
            EXPECT_EQ(Record(kFloating, 2, sign * 1.25).digits, up ? "13" : "12");
        }
        EXPECT_EQ(Text(kFixed, 0, 0.9), up ? "1" : "0.");
        EXPECT_EQ(Text(kFixed, -3, 999.0), up ? "1000" : "0");
        EXPECT_EQ(Text(kFloating, 16, 2.0 / 3.0),
                  up ? " 6.666666666666670e-1" : " 6.666666666666660e-1");
    }
}

TEST(Decimal, Records) {
    const struct {
        Style style;
        int digitCount;
        double x;
        Decimal record;
    } cases[] = {{kFloating, 6, 3.14159, {0, -5, "314159"}},
                 {kFloating, 5, -1234.5, {1, -1, "12345"}},
                 {kFloating, 3, 9.996, {0, -1, "100"}},
                 {kFloating, 6, 0.0, {0, -6, "000000"}},
                 {kFloating, 6, -0.0, {0, -6, "000000"}},
                 {kFloating, 20, 1.0, {0, -19, "1" + std::string(19, '0')}},
                 {kFloating, 23, 1.0, {0, -22, "1" + std::string(22, '0')}},
                 {kFloating, 400, 1.0, {0, -22, "1" + std::string(22, '0')}},
                 {kFloating, -400, 26.0, {0, 1, "3"}},
                 {kFloating, 6, kInfinity, {0, 0, "INF"}},
                 {kFloating, 6, -kInfinity, {1, 0, "INF"}},
                 {kFloating, 6, std::copysign(kIeeeNan, 1.0), {0, 0, "NAN"}},
                 {kFloating, 6, std::copysign(kIeeeNan, -1.0), {1, 0, "NAN"}},
                 {kFixed, 2, 3.14159, {0, -2, "314"}},
                 {kFixed, 2, -9.996, {1, -2, "1000"}},
                 {kFixed, 0, 1234.5, {0, 0, "1235"}},
                 {kFixed, -2, 1250.0, {0, 2, "13"}},
                 {kFixed, -4, 1234.0, {0, 4, "0"}},
                 {kFixed, 2, 0.0012, {0, -2, "0"}},
                 {kFixed, 4, 0.00126, {0, -4, "13"}},
                 {kFixed, 2, 0.0, {0, -2, "00"}},
                 {kFixed, -400, -1.0, {1, 400, "0"}},
                 {kFixed, 400, 1.5, {0, -22, "15" + std::string(21, '0')}},
                 {kFixed, 2, 1e300, {0, 278, "1" + std::string(22, '0')}},
                 {kFixedToo, 2, -kInfinity, {1, 0, "INF"}}};
    for (const auto& c : cases) {
        EXPECT_EQ(Record(c.style, c.digitCount, c.x), c.record) << c.digitCount << ' ' << c.x;
    }
}

TEST(Decimal, EveryDigitCountStaysWithinItsBuffer) {
    const double numbers[] = {0.0,    5e-324,    1e-310,   9.9999999999999995e-5,   0.5,      1.0,
                              999.75, -1234.5e6, 9.995e99, -1.2e308, kInfinity};
    for (int digitCount = -400; digitCount <= 400; ++digitCount) {
        for (const double x : numbers) {
            for (const Style style : {kFloating, kFixed}) {
                Text(style, digitCount, x);
                const Decimal record = Record(style, digitCount, x);
                // Rounding moves a number by no more than half a unit of the last place.
                const double back = Number(record.sign, record.exponent, record.digits);
                if (std::isfinite(x)) {
                    const double unit = std::pow(10.0, record.exponent);
                    EXPECT_LE(std::abs(back - x), unit * 0.5000001 + std::abs(x) * 1e-15)
                        << x << " with " << digitCount << " became " << record;
                }
            }
        }
    }
}

TEST(Decimal, RecordsToNumbers) {
    EXPECT_EQ(Number(0, -5, "314159"), 3.14159);
    EXPECT_EQ(Number(1, -1, "12345"), -1234.5);
    EXPECT_EQ(Number(2, -1, "12345"), 1234.5) << "bit 0 alone is the sign";
    EXPECT_EQ(Number(255, 0, "5"), -5.0);
    for (const char* digits : {"000000", "0123", "0"}) {
        const double zero = Number(1, 7, digits);
        EXPECT_TRUE(zero == 0 && !std::signbit(zero)) << digits;
    }
    EXPECT_EQ(Number(0, 32767, "1"), kInfinity);
    EXPECT_EQ(Number(0, -32768, "1"), 0.0);
    EXPECT_EQ(Number(0, -346, "49406564584124654417656"), 4.9406564584124654e-324);
    EXPECT_EQ(Number(0, 5, "INF"), kInfinity);
    EXPECT_EQ(Number(1, 5, "INF"), -kInfinity);
    EXPECT_EQ(Number(0, 5, "NAN"), kSentinel);
    EXPECT_EQ(Number(1, 5, "NAN"), kSentinel);
    // What no conversion writes: read as text, whatever its length byte says.
    EXPECT_EQ(Number(0, 3, ""), 0.0);
    EXPECT_EQ(Number(0, 3, "12e1"), 120.0);
    EXPECT_EQ(Number(1, 3, "x"), 0.0);
    EXPECT_EQ(Number(0, 1, std::string("12\00034", 5)), 120.0);
    EXPECT_EQ(Number(0, 0, std::string(255, '1')), 11111111111111111111111.0);
}

TEST(Decimal, TextToNumbers) {
    const struct {
        const char* text;
        double x;
    } cases[] = {{"INF", kInfinity},
                 {"Infinity", kInfinity},
                 {"I5", kInfinity},
                 {"NAN", kSentinel},
                 {"None", kSentinel},
                 {"inf", kInfinity},
                 {"-INF", -kInfinity},
                 {" +iNfInItY", kInfinity},
                 {"1.5", 1.5},
                 {"-2e3", -2000},
                 {" 12", 12},
                 {"\t\n\v\f\r+12", 12},
                 {"1,5", 1},
                 {"", 0},
                 {" ", 0},
                 {"-", 0},
                 {"+-5", 0},
                 {"--5", 0},
                 {".", 0},
                 {".e5", 0},
                 {".5", 0.5},
                 {"5.", 5},
                 {"1e", 1},
                 {"1e+", 1},
                 {"1e+x", 1},
                 {"1d5", 1},
                 {"in", 0},
                 {"infinite", kInfinity},
                 {"0x1.8p3", 12},
                 {"0X.8", 0.5},
                 {"-0x1FP-1z", -15.5},
                 {"0x", 0},
                 {"0xp5", 0},
                 {"0x1p", 1},
                 {"0x.g", 0},
                 {"\0200x1", 0},
                 {"0x1p99999999999", kInfinity},
                 {"0x1p-99999999999", 0},
                 {"1e99999999999", kInfinity},
                 {"-1e99999999999", -kInfinity},
                 {"1e-99999999999", 0},
                 {"0e99999999999", 0},
                 {"1.7976931348623158e308", 1.7976931348623157e308},
                 {"1.7976931348623159e308", kInfinity},
                 {"2.4703282292062327e-324", 0},
                 {"2.4703282292062328e-324", 5e-324},
                 {"9007199254740993", 9007199254740992},
                 {"9007199254740993.00000000000000000000000000000001", 9007199254740994}};
    for (const auto& c : cases) {
        EXPECT_EQ(Parsed(c.text), c.x) << '"' << c.text << '"';
    }
    for (const char* text : {"nan", " -NAN", "nAn(7)"}) {
        EXPECT_TRUE(std::isnan(Parsed(text))) << text;
    }
    EXPECT_TRUE(std::signbit(Parsed("-0"))) << "the minus of a zero";
    EXPECT_TRUE(std::signbit(Parsed("-0x0"))) << "the minus of a zero";
    EXPECT_EQ(Parsed(std::string(255, '1')), 1.1111111111111111e254);
    EXPECT_EQ(Parsed("." + std::string(250, '0') + "1e9"), 1e-242);
    EXPECT_EQ(Parsed(std::string(255, ' ')), 0.0);
    EXPECT_EQ(Parsed(std::string("12\00034", 5)), 12.0);
}

TEST(Decimal, TextIsRoundedTheCallersWay) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    const struct {
        const char* text;
        double nearest, above, below;
    } cases[] = {{"0.1", 0.1, 0.1, 0x1.9999999999999p-4},
                 {"0.3", 0.3, 0x1.3333333333334p-2, 0.3},
                 {"0.5000000000000000000000", 0.5, 0.5, 0.5},
                 {"0.50000000000000000000001", 0.5, 0.5 + 0x1p-53, 0.5},
                 {"0.49999999999999999999999", 0.5, 0.5, 0.5 - 0x1p-54},
                 {"9007199254740993", 0x1p53, 0x1p53 + 2, 0x1p53},
                 {"1e400", kInfinity, kInfinity, kLargest},
                 {"1e-400", 0, 5e-324, 0},
                 {"0e-400", 0, 0, 0},
                 {"5e-324", 5e-324, 1e-323, 5e-324},
                 {"4e-324", 5e-324, 5e-324, 0},
                 {"0x1.00000000000008p0", 1, 1 + 0x1p-52, 1},
                 {"0x1.00000000000018p0", 1 + 0x1p-51, 1 + 0x1p-51, 1 + 0x1p-52},
                 {"0x1.000000000000080000000001p0", 1 + 0x1p-52, 1 + 0x1p-52, 1},
                 {"0x0.fffffffffffff8p-1022", 0x1p-1022, 0x1p-1022, 0x0.fffffffffffffp-1022},
                 {"0x0.fffffffffffffcp+1024", kInfinity, kInfinity, kLargest},
                 {"0x1p-1075", 0, 5e-324, 0},
                 {"0x1.00000000000000000001p-1075", 5e-324, 5e-324, 0},
                 {"0x1p-1200", 0, 5e-324, 0},
                 {"0x1p1024", kInfinity, kInfinity, kLargest}};
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
    EXPECT_EQ(Number(1, -1, "1"), -0.1) << "a record's sign comes on after the rounding";
    EXPECT_GT(Parsed("-0.1"), -0.1);
}

TEST(Decimal, RoundTrips) {
    for (const double x : {1.0 / 3.0, 12345.678901234, -1e-300, 4.5e15, kSentinel}) {
        EXPECT_NEAR(Parsed(Text(kFloating, 15, x)), x, std::abs(x) * 1e-14);
    }
    EXPECT_EQ(Parsed(Text(kFloating, 14, kSentinel)), kSentinel);
    EXPECT_EQ(Parsed(Text(kFloating, 6, -kInfinity)), kInfinity);
    EXPECT_EQ(Parsed(Text(kFixed, 6, kIeeeNan)), kSentinel);
}

TEST(Decimal, LocaleHasNoPartInIt) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "German_Germany.1252"}) {
        std::setlocale(LC_NUMERIC, name);
        const std::string during = std::setlocale(LC_NUMERIC, nullptr);
        EXPECT_EQ(Parsed("1.5"), 1.5);
        EXPECT_EQ(Parsed("1,5"), 1.0);
        EXPECT_EQ(Number(0, -1, "15"), 1.5);
        EXPECT_EQ(Text(kFixed, 1, 1.5), "1.5");
        EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), during);
    }
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(Decimal, ThreadsDoNotShareScratch) {
    const auto work = [](double x, int mode) {
        XFp::SetRound(static_cast<std::int16_t>(mode));
        const std::string text = Text(kFloating, 15, x);
        const Decimal record = Record(kFixed, 3, x);
        const double back = Parsed(text);
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(Text(kFloating, 15, x), text);
            ASSERT_EQ(Record(kFixed, 3, x), record);
            ASSERT_EQ(Parsed(text), back);
        }
    };
    std::thread other(work, -98765.4321e-9, 2);
    const Rounding restored(1);
    work(12345.6789, 1);
    other.join();
}

}  // namespace
