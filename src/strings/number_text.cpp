// Whole numbers and their decimal text.
#include <veldt20/strings_pascal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include "strings/ascii.h"

namespace {

/// No more characters than a 32-bit number can have: a sign and ten digits.
constexpr int kMaxDigits = 11;

/// The number at `text`, of which nothing at or behind `end` is read.
std::int32_t ParseNumber(const char* text, const char* end) {
    using Limits = std::numeric_limits<std::int32_t>;
    while (text != end && veldt::strings::IsAsciiSpace(*text)) ++text;
    const bool negative = text != end && *text == '-';
    if (text != end && (*text == '-' || *text == '+')) ++text;
    // One more than the largest number is kept apart, so that the smallest can be told.
    constexpr std::int64_t kBound = std::int64_t{Limits::max()} + 1;
    std::int64_t number = 0;
    for (; text != end && veldt::strings::IsAsciiDigit(*text); ++text) {
        number = std::min(number * 10 + (*text - '0'), kBound);
    }
    return static_cast<std::int32_t>(negative ? -number : std::min(number, kBound - 1));
}

}  // namespace

void XNumToString(std::int32_t number, unsigned char* to) {
    char* digits = reinterpret_cast<char*>(to + 1);
    char* end = std::to_chars(digits, digits + kMaxDigits, number).ptr;
    *end = 0;
    to[0] = static_cast<unsigned char>(end - digits);
}

void XStringToNum(const unsigned char* from, std::int32_t* result) {
    const char* digits = reinterpret_cast<const char*>(from + 1);
    *result = ParseNumber(digits, digits + from[0]);
}

void XStringToNum(const char* from, std::int32_t* result) {
    // The terminator is no digit: no end is needed.
    *result = ParseNumber(from, nullptr);
}
