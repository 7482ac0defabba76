// From decimal records and readable text to doubles.
#include <veldt20/floating_point.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include "numerics/number_reader.h"

namespace veldt::numerics {
namespace {

std::string_view TextOf(const unsigned char* string) {
    return {reinterpret_cast<const char*>(string) + 1, string[0]};
}

}  // namespace
}  // namespace veldt::numerics

using namespace veldt::numerics;

double XFp::Dec2Num(const XNDecimal* dec) {
    constexpr std::size_t kCapacity = sizeof(XNDecimal::digits) - 1;
    const std::string_view digits = TextOf(dec->digits).substr(0, kCapacity);
    const bool negative = dec->sign % 2 != 0;
    if (digits.starts_with('0')) {
        return 0;
    }
    if (digits == "INF") {
        return negative ? -Inf() : Inf();
    }
    if (digits == "NAN") {
        return Nan(0);
    }
    char buffer[kCapacity + 8];
    char* end = std::copy(digits.begin(), std::find(digits.begin(), digits.end(), '\0'), buffer);
    *end++ = 'E';
    end = std::to_chars(end, buffer + sizeof(buffer), dec->exponent).ptr;
    const double x = ReadNumber({buffer, static_cast<std::size_t>(end - buffer)});
    return negative ? -x : x;
}

void XFp::Str2Num(const unsigned char* text, double* out) {
    const std::string_view number = TextOf(text);
    if (number.starts_with('I')) {
        *out = Inf();
    } else if (number.starts_with('N')) {
        *out = Nan(0);
    } else {
        *out = ReadNumber(number);
    }
}
