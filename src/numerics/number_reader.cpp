#include "numerics/number_reader.h"

#include <veldt20/floating_point.h>

#include <charconv>
#include <cmath>
#include <limits>

#include "numerics/double_precision.h"
#include "numerics/text_rounding.h"

namespace veldt::numerics {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The value of a hexadecimal digit, 16 or more for any other character.
constexpr unsigned HexDigit(char c) {
    if (IsDigit(c)) {
        return static_cast<unsigned>(c - '0');
    }
    const unsigned letter = (static_cast<unsigned char>(c) | 0x20u) - 'a';
    return letter < 6 ? letter + 10 : 16;
}

/// Whether the text begins with `word`, letters all of them and small.
constexpr bool BeginsWith(std::string_view text, std::string_view word) {
    if (text.size() < word.size()) {
        return false;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        if ((text[i] | 0x20) != word[i]) {
            return false;
        }
    }
    return true;
}

/// A prefix without a digit is the number 0 and a rest.
bool BeginsHexadecimal(std::string_view text) {
    if (!text.starts_with('0') || !BeginsWith(text.substr(1), "x")) {
        return false;
    }
    text.remove_prefix(2);
    if (text.starts_with('.')) {
        text.remove_prefix(1);
    }
    return !text.empty() && HexDigit(text[0]) < 16;
}

/// The exponent behind `letter`, held within bounds that no text gets a number back from; 0 if
/// there is none.
int ReadExponent(std::string_view text, char letter) {
    constexpr int kBound = 100000;
    if (text.empty() || (text[0] | 0x20) != letter) {
        return 0;
    }
    text.remove_prefix(1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    int exponent = 0;
    for (; !text.empty() && IsDigit(text[0]) && exponent < kBound; text.remove_prefix(1)) {
        exponent = exponent * 10 + (text[0] - '0');
    }
    return negative ? -exponent : exponent;
}

/// `text` begins behind the 0x.
double ReadHexadecimal(std::string_view text, Direction direction) {
    BinaryNumber number = {};
    bool fraction = false;
    for (; !text.empty(); text.remove_prefix(1)) {
        if (text[0] == '.' && !fraction) {
            fraction = true;
            continue;
        }
        const unsigned digit = HexDigit(text[0]);
        if (digit >= 16) {
            break;
        }
        if (number.significand >> 60 == 0) {
            number.significand = number.significand << 4 | digit;
        } else {
            number.more |= digit != 0;
            number.exponent += 4;
        }
        number.exponent -= fraction ? 4 : 0;
    }
    number.exponent += ReadExponent(text, 'p');
    return Rounded(number, direction);
}

/// `text` is a decimal number and nothing else.
DecimalNumber Dissect(std::string_view text) {
    DecimalNumber number = {};
    bool fraction = false;
    for (; !text.empty() && (IsDigit(text[0]) || text[0] == '.'); text.remove_prefix(1)) {
        if (text[0] == '.') {
            fraction = true;
            continue;
        }
        if (text[0] != '0' || number.count != 0) {
            number.digits[number.count++] = text[0];
            number.point += fraction ? 0 : 1;
        } else {
            number.point -= fraction ? 1 : 0;
        }
    }
    number.point += ReadExponent(text, 'e');
    return number;
}

std::from_chars_result FromChars(std::string_view text, double& x) {
    const DoublePrecision precision;
    return std::from_chars(text.data(), text.data() + text.size(), x);
}

/// What from_chars gives is one of the number's two neighbours: on some targets the one that the
/// mode asks for, on others the nearest in any mode.
double ReadDecimal(std::string_view text, bool negative, std::int16_t mode) {
    double neighbour = 0;
    const auto [end, error] = FromChars(text, neighbour);
    if (error == std::errc() && mode == 0) {
        return neighbour;
    }
    const DecimalNumber number =
        Dissect(text.substr(0, static_cast<std::size_t>(end - text.data())));
    if (error == std::errc::result_out_of_range) {
        neighbour = number.point > 0 ? kInfinity : 0;
    }
    return Directed(neighbour, number, DirectionOf(mode, negative));
}

}  // namespace

double ReadNumber(std::string_view text) {
    while (!text.empty() && IsSpace(text[0])) {
        text.remove_prefix(1);
    }
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const bool fraction = text.size() > 1 && text[0] == '.' && IsDigit(text[1]);
    double magnitude;
    if (BeginsHexadecimal(text)) {
        magnitude = ReadHexadecimal(text.substr(2), DirectionOf(XFp::GetRound(), negative));
    } else if (fraction || (!text.empty() && IsDigit(text[0]))) {
        magnitude = ReadDecimal(text, negative, XFp::GetRound());
    } else if (BeginsWith(text, "inf")) {
        magnitude = kInfinity;
    } else if (BeginsWith(text, "nan")) {
        magnitude = std::numeric_limits<double>::quiet_NaN();
    } else {
        return 0;
    }
    return negative ? -magnitude : magnitude;
}

}  // namespace veldt::numerics
