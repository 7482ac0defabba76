#include "numerics/digit_engine.h"

#include <veldt20/floating_point.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace veldt::numerics {
namespace {

/// Below this the part of a number before the point fits one word.
constexpr double kWordLimit = 0x1p31;

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
    if (magnitude >= 1 && magnitude < kWordLimit) {
        FindDigitsInParts(magnitude, wanted, digits);
        return;
    }
    const int few = wanted.behindPoint ? kSourceDigits : wanted.FewFor(0);
    PutDigits(magnitude, few, digits);
    if (!Decided(digits.Text(), few)) {
        PutDigits(magnitude, kSourceDigits, digits);
    }
}

/// The powers of ten that one word holds, and so the numbers of digits that it holds in any case.
constexpr auto kPowersOfTen = [] {
    std::array<std::uint32_t, 10> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}();
constexpr int kWordDigits = kPowersOfTen.size() - 1;

/// By how much a number may fall short of one with so many digits for its seventeen digits to reach
/// it: half a unit of theirs, in 2^-64 of a unit of the last digit.
constexpr auto kSlack = [] {
    std::array<std::uint64_t, kWordDigits + 1> slack{};
    std::uint64_t share = std::uint64_t{1} << 63;
    for (int digits = kSourceDigits - 1; digits > 0; --digits) {
        share /= 10;
        if (digits <= kWordDigits) {
            slack[static_cast<std::size_t>(digits)] = share;
        }
    }
    return slack;
}();

int CountDigits(std::uint32_t number) {
    constexpr int kLog2 = 1233;  // of ten's, in 1/4096
    const int atLeast = std::bit_width(number) * kLog2 >> 12;
    return atLeast + (number >= kPowersOfTen[static_cast<std::size_t>(atLeast)] ? 1 : 0);
}

/// A few digits of a number from 1 to 2^31, which is what most numbers are: the number times the
/// power of ten is exact in three words, and the one that is rounded to is quickly told. False if
/// the digits are more than that.
bool RoundScaled(double magnitude, const Wanted& wanted, Digits& digits) {
    const auto whole = static_cast<std::uint32_t>(static_cast<std::int32_t>(magnitude));
    const int point = CountDigits(whole);
    const int count = wanted.CountFor(point);
    if (count < point || count > kWordDigits) {
        return false;
    }
    // The fraction in 2^-64: the field of the exponent, and what stands before the point, go out.
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t fraction = bits << (12 + (bits >> 52) - 1023);
    const std::uint32_t power = kPowersOfTen[static_cast<std::size_t>(count - point)];
    const std::uint64_t low = (fraction & 0xFFFFFFFF) * power;
    const std::uint64_t high = (fraction >> 32) * power + (low >> 32);
    const std::uint64_t rest = high << 32 | (low & 0xFFFFFFFF);

    const std::uint64_t roundedUp = std::uint64_t{wanted.halfUp} << 63;
    const bool up = rest >= roundedUp - kSlack[static_cast<std::size_t>(count)];
    const std::uint32_t number = whole * power + static_cast<std::uint32_t>(high >> 32) + up;
    char* const text = digits.Text();
    const char* const end = std::to_chars(text, text + kWordDigits + 1, number).ptr;
    digits.length = digits.stored = static_cast<int>(end - text);
    digits.point = point + digits.length - count;
    return true;
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
    const double magnitude = std::abs(x);
    if (magnitude >= 1 && magnitude < kWordLimit && RoundScaled(magnitude, wanted, digits)) {
        return digits;
    }
    if (std::isfinite(x)) {
        FindDigits(magnitude, wanted, digits);
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
