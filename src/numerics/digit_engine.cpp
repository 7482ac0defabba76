#include "numerics/digit_engine.h"

#include <veldt20/floating_point.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace veldt::numerics {
namespace {

/// Seventeen digits tell every double from its neighbours.
constexpr int kSourceDigits = 17;

/// 0.d1d2d3... times 10^point, correctly rounded.
struct Source {
    int point = 0;
    std::array<char, kSourceDigits> text;
};

/// The work is done in integers, so that the rounding mode has no part in it.
Source SourceOf(double magnitude) {
    Source source;
    if (magnitude == 0) {
        source.text.fill('0');
        return source;
    }
    // d.dddddddddddddddde+ddd
    constexpr int kExponentSign = kSourceDigits + 2;
    char buffer[32];
    const char* const end = std::to_chars(buffer, buffer + sizeof(buffer), magnitude,
                                          std::chars_format::scientific, kSourceDigits - 1)
                                .ptr;
    source.text[0] = buffer[0];
    std::memcpy(&source.text[1], buffer + 2, kSourceDigits - 1);
    int exponent = 0;
    std::from_chars(buffer + kExponentSign + 1, end, exponent);
    source.point = (buffer[kExponentSign] == '-' ? -exponent : exponent) + 1;
    return source;
}

/// Adds 1 at the last place of the text. Nines all through carry into a digit of their own.
void RoundUp(Digits& digits) {
    int last = digits.stored - 1;
    while (last >= 0 && digits.At(last) == '9') {
        --last;
    }
    // What stood behind are nines, and become the zeros that need not be stored.
    digits.stored = last + 1;
    if (last >= 0) {
        ++digits.text[static_cast<unsigned>(last)];
        return;
    }
    digits.text[0] = '1';
    digits.stored = 1;
    ++digits.length;
    ++digits.point;
}

/// The modes that round up and to nearest round half up in magnitude, whatever the sign; the other
/// two cut. Where more digits are wanted than can be significant, the last of these is rounded.
void ConvertDigits(const Source& source, int count, Digits& digits) {
    digits.point = source.point;
    digits.length = std::max(count, 0);
    digits.stored = std::min(digits.length, kSignificantDigits);
    std::copy_n(source.text.begin(), digits.stored, digits.text.begin());
    if (count >= 0 && source.text[static_cast<unsigned>(digits.stored)] >= '5' &&
        XFp::GetRound() <= 1) {
        RoundUp(digits);
    }
}

/// Fills in the sign and, for what is no finite number, the token.
Digits Begun(double x) {
    Digits digits;
    digits.negative = std::signbit(x) && x != 0;
    digits.token = std::isfinite(x) ? "" : std::isnan(x) ? "NAN" : "INF";
    return digits;
}

}  // namespace

Digits FloatDigits(double x, int count) {
    Digits digits = Begun(x);
    if (digits.token.empty()) {
        ConvertDigits(SourceOf(std::abs(x)), count, digits);
    }
    return digits;
}

Digits FixedDigits(double x, int places) {
    Digits digits = Begun(x);
    if (digits.token.empty()) {
        const Source source = SourceOf(std::abs(x));
        ConvertDigits(source, source.point + places, digits);
    }
    return digits;
}

}  // namespace veldt::numerics
