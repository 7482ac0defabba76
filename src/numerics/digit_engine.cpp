#include "numerics/digit_engine.h"

#include <veldt20/floating_point.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace veldt::numerics {
namespace {

/// Seventeen digits tell every double from its neighbours. They are what is rounded.
constexpr int kSourceDigits = 17;

/// Behind the wanted digits, as many as nearly always tell how the seventeen would be rounded.
constexpr int kGuardDigits = 2;

struct Wanted {
    int count;
    bool behindPoint;  ///< whether `count` leaves the digits before the point out
    /// The modes to nearest and upward round half up in magnitude, whatever the sign; the other two
    /// cut.
    bool halfUp = XFp::GetRound() <= 1;

    int CountFor(int point) const { return behindPoint ? point + count : count; }

    /// How many digits to begin with.
    int FewFor(int point) const {
        const int few = std::max(CountFor(point), 0) + kGuardDigits;
        return halfUp ? std::min(few, kSourceDigits) : kSourceDigits;
    }
};

/// Whether the seventeen digits would be rounded half up to the same as the `few` that the text
/// begins with. A guard of 50 may stand for a little less, and so may a 1 and zeros, which would
/// take a carry to get there.
bool Decided(const char* text, int few) {
    const std::string_view digits(text, static_cast<std::size_t>(few));
    const bool tie = digits.back() == '0' && digits[digits.size() - 2] == '5';
    const bool carry = digits[0] == '1' && digits.find_first_not_of('0', 1) == digits.npos;
    return few == kSourceDigits || !(tie || carry);
}

/// Puts `count` correctly rounded digits of a number above 0 in front of the text.
void PutDigits(double magnitude, int count, Digits& digits) {
    // d.dddddddddddddddde+ddd, placed so that the first digit need only take the point's place.
    constexpr int kLongest = kSourceDigits + 6;
    char* const text = digits.Text() - 1;
    const char* const end =
        std::to_chars(text, text + kLongest, magnitude, std::chars_format::scientific, count - 1)
            .ptr;
    text[1] = text[0];
    const char* const sign = text + count + 2;
    int exponent = 0;
    for (const char* digit = sign + 1; digit != end; ++digit) {
        exponent = exponent * 10 + (*digit - '0');
    }
    digits.point = (*sign == '-' ? -exponent : exponent) + 1;
}

/// Puts a fraction's correctly rounded digits behind the point. False if it was rounded up to 1; it
/// never is where the digits are seventeen in all.
bool PutFraction(double fraction, int places, Digits& digits) {
    // 0.ddd: the characters in front of the point come back where the first two stand.
    char* const begin = digits.Text() + digits.point - 2;
    char kept[2];
    std::memcpy(kept, begin, sizeof(kept));
    std::to_chars(begin, begin + 2 + kSourceDigits, fraction, std::chars_format::fixed, places);
    const bool below1 = begin[0] == '0';
    std::memcpy(begin, kept, sizeof(kept));
    return below1;
}

/// Splits a number from 1 to 2^31 at the point. The whole part is exact and quickly told, and the
/// fraction alone takes the library less time than the number, on 32-bit targets half.
void FindDigitsInParts(double magnitude, const Wanted& wanted, Digits& digits) {
    const auto whole = static_cast<std::int32_t>(magnitude);
    const double fraction = std::abs(magnitude - whole);
    char* const text = digits.Text();
    const char* const point = std::to_chars(text, text + 10, static_cast<std::uint32_t>(whole)).ptr;
    digits.point = static_cast<int>(point - text);
    const int few = wanted.FewFor(digits.point);
    if (!PutFraction(fraction, std::max(few - digits.point, 1), digits) || !Decided(text, few)) {
        PutFraction(fraction, kSourceDigits - digits.point, digits);
    }
}

/// Digits enough to round to those wanted. They are worked out in integers: the rounding mode has
/// no part in it.
void FindDigits(double magnitude, const Wanted& wanted, Digits& digits) {
    if (magnitude == 0) {
        std::memset(digits.Text(), '0', kSourceDigits);
        return;
    }
    if (magnitude >= 1 && magnitude < 0x1p31) {
        FindDigitsInParts(magnitude, wanted, digits);
        return;
    }
    const int few = wanted.behindPoint ? kSourceDigits : wanted.FewFor(0);
    PutDigits(magnitude, few, digits);
    if (!Decided(digits.Text(), few)) {
        PutDigits(magnitude, kSourceDigits, digits);
    }
}

/// Where more digits are wanted than can be significant, the last of these is rounded.
void Round(const Wanted& wanted, Digits& digits) {
    const int count = wanted.CountFor(digits.point);
    digits.length = std::max(count, 0);
    digits.stored = std::min(digits.length, kSignificantDigits);
    char* const text = digits.Text();
    const int up = (text[digits.stored] >= '5') & int{count >= 0 && wanted.halfUp};
    std::memset(text + digits.stored, '0', Digits::kZeros);
    // The place in front takes the carry. Digits go either way: no branch could foresee it.
    char& carry = text[-1] = '0';
    char* last = text + digits.stored - 1;
    *last = static_cast<char>(*last + up);
    for (; *last > '9'; --last) {
        *last = '0';
        ++last[-1];
    }
    if (carry == '1') {
        text[0] = '1';
        digits.stored = std::max(digits.stored, 1);
        ++digits.length;
        ++digits.point;
    }
}

Digits RoundedDigits(double x, const Wanted& wanted) {
    Digits digits;
    digits.negative = std::signbit(x) && x != 0;
    if (std::isfinite(x)) {
        FindDigits(std::abs(x), wanted, digits);
        Round(wanted, digits);
    } else {
        digits.kind = std::isnan(x) ? Digits::Kind::kNan : Digits::Kind::kInfinity;
    }
    return digits;
}

}  // namespace

Digits FloatDigits(double x, int count) {
    return RoundedDigits(x, {count, false});
}

Digits FixedDigits(double x, int places) {
    return RoundedDigits(x, {places, true});
}

}  // namespace veldt::numerics
