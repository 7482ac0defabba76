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

/// Correctly rounded digits. They are worked out in integers: the rounding mode has no part in it.
class Source {
  public:
    explicit Source(double magnitude) {
        if (magnitude == 0) {
            std::memset(text_, '0', sizeof(text_));
            return;
        }
        const char* const end = std::to_chars(text_, text_ + sizeof(text_), magnitude,
                                              std::chars_format::scientific, kSourceDigits - 1)
                                    .ptr;
        int exponent = 0;
        for (const char* digit = text_ + kExponentAt; digit != end; ++digit) {
            exponent = exponent * 10 + (*digit - '0');
        }
        point_ = (text_[kExponentAt - 1] == '-' ? -exponent : exponent) + 1;
        text_[1] = text_[0];
    }

    /// The number is 0.d1d2d3... times 10 to this power.
    int Point() const { return point_; }
    const char* Text() const { return text_ + 1; }

  private:
    // The text is d.dddddddddddddddde+ddd, until its first digit takes the place of the point.
    static constexpr int kExponentAt = kSourceDigits + 3;

    int point_ = 0;
    char text_[kExponentAt + 4];
};

/// Adds 1 at the last place of the text. Nines all through carry into a digit of their own.
void RoundUp(Digits& digits) {
    char* const text = digits.text.data();
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
void ConvertDigits(const Source& source, int count, Digits& digits) {
    digits.point = source.Point();
    digits.length = std::max(count, 0);
    digits.stored = std::min(digits.length, kSignificantDigits);
    // Both copies have a fixed size, which costs less than the right one.
    std::memcpy(digits.text.data(), source.Text(), kSignificantDigits);
    std::memset(digits.text.data() + digits.stored, '0', digits.text.size() - kSignificantDigits);
    if (count >= 0 && source.Text()[digits.stored] >= '5' && XFp::GetRound() <= 1) {
        RoundUp(digits);
    }
}

/// Fills in what is known before any digit is.
Digits Begun(double x) {
    Digits digits;
    digits.negative = std::signbit(x) && x != 0;
    digits.kind = std::isfinite(x) ? Digits::Kind::kNumber
                  : std::isnan(x)  ? Digits::Kind::kNan
                                   : Digits::Kind::kInfinity;
    return digits;
}

}  // namespace

Digits FloatDigits(double x, int count) {
    Digits digits = Begun(x);
    if (digits.kind == Digits::Kind::kNumber) {
        ConvertDigits(Source(std::abs(x)), count, digits);
    }
    return digits;
}

Digits FixedDigits(double x, int places) {
    Digits digits = Begun(x);
    if (digits.kind == Digits::Kind::kNumber) {
        const Source source(std::abs(x));
        ConvertDigits(source, source.Point() + places, digits);
    }
    return digits;
}

}  // namespace veldt::numerics
