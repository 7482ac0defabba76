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

/// Puts the correctly rounded digits of a finite number in front of the text. They are worked out
/// in integers: the rounding mode has no part in it.
void FindDigits(double magnitude, Digits& digits) {
    if (magnitude == 0) {
        std::memset(digits.Text(), '0', kSourceDigits);
        return;
    }
    // d.dddddddddddddddde+ddd, placed so that the first digit need only take the point's place.
    constexpr int kLongest = kSourceDigits + 6;
    char* const text = digits.Text() - 1;
    const char* const end = std::to_chars(text, text + kLongest, magnitude,
                                          std::chars_format::scientific, kSourceDigits - 1)
                                .ptr;
    text[1] = text[0];
    const char* const sign = text + kSourceDigits + 2;
    int exponent = 0;
    for (const char* digit = sign + 1; digit != end; ++digit) {
        exponent = exponent * 10 + (*digit - '0');
    }
    digits.point = (*sign == '-' ? -exponent : exponent) + 1;
}

Digits SourceOf(double x) {
    Digits digits;
    digits.negative = std::signbit(x) && x != 0;
    if (std::isfinite(x)) {
        FindDigits(std::abs(x), digits);
    } else {
        digits.kind = std::isnan(x) ? Digits::Kind::kNan : Digits::Kind::kInfinity;
    }
    return digits;
}

/// Adds 1 at the last place of the text. Nines all through carry into a digit of their own.
void RoundUp(Digits& digits) {
    char* const text = digits.Text();
    for (int i = digits.stored - 1; i >= 0; --i) {
        if (text[i] != '9') {
            ++text[i];
            return;
        }
        text[i] = '0';
    }
    text[0] = '1';
    digits.stored = std::max(digits.stored, 1);
    ++digits.length;
    ++digits.point;
}

/// The modes that round up and to nearest round half up in magnitude, whatever the sign; the other
/// two cut. Where more digits are wanted than can be significant, the last of these is rounded.
void ConvertDigits(int count, Digits& digits) {
    digits.length = std::max(count, 0);
    digits.stored = std::min(digits.length, kSignificantDigits);
    const char next = digits.Text()[digits.stored];
    std::memset(digits.Text() + digits.stored, '0', Digits::kZeros);
    if (count >= 0 && next >= '5' && XFp::GetRound() <= 1) {
        RoundUp(digits);
    }
}

}  // namespace

Digits FloatDigits(double x, int count) {
    Digits digits = SourceOf(x);
    if (digits.kind == Digits::Kind::kNumber) {
        ConvertDigits(count, digits);
    }
    return digits;
}

Digits FixedDigits(double x, int places) {
    Digits digits = SourceOf(x);
    if (digits.kind == Digits::Kind::kNumber) {
        ConvertDigits(digits.point + places, digits);
    }
    return digits;
}

}  // namespace veldt::numerics
