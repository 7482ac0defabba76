// From doubles to decimal records and readable text.
#include <veldt20/floating_point.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "numerics/digit_engine.h"

namespace veldt::numerics {
namespace {

constexpr int kLongestText = 255;
constexpr int kMostFloatingDigits = 20;
constexpr int kDecimalCapacity = sizeof(XNDecimal::digits) - 1;
static_assert(Digits::kZeros > kMostFloatingDigits && Digits::kZeros > kDecimalCapacity);

void SetString(unsigned char* out, std::string_view text) {
    out[0] = static_cast<unsigned char>(text.size());
    std::memcpy(out + 1, text.data(), text.size());
}

/// Builds the text around the digits where they stand, over their zeros.
void PutFloating(Digits& digits, unsigned char* out) {
    char* const begin = digits.Text() - Digits::kMargin;
    begin[0] = digits.negative ? '-' : ' ';
    begin[1] = begin[2];
    begin[2] = '.';
    char* end = digits.Text() + digits.length;
    const int exponent = digits.point - 1;
    *end++ = 'e';
    *end++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100) {
        *end++ = static_cast<char>('0' + magnitude / 100);
    }
    if (magnitude >= 10) {
        *end++ = static_cast<char>('0' + magnitude / 10 % 10);
    }
    *end++ = static_cast<char>('0' + magnitude % 10);
    SetString(out, {begin, static_cast<std::size_t>(end - begin)});
}

/// Builds a length-prefixed string; what doesn't fit is dropped.
class Writer {
  public:
    explicit Writer(unsigned char* out) : out_(out) {}
    void Finish() { out_[0] = static_cast<unsigned char>(length_); }

    void Put(std::string_view text) {
        const int count = std::min(static_cast<int>(text.size()), kLongestText - length_);
        std::memcpy(out_ + 1 + length_, text.data(), static_cast<std::size_t>(count));
        length_ += count;
    }
    void PutZeros(int count) {
        count = std::clamp(count, 0, kLongestText - length_);
        std::memset(out_ + 1 + length_, '0', static_cast<std::size_t>(count));
        length_ += count;
    }
    /// The digits `from` to `to` - 1, zeros where there are none.
    void Put(const Digits& digits, int from, int to) {
        const int stored = std::clamp(digits.stored, from, to);
        Put({digits.Text() + from, static_cast<std::size_t>(stored - from)});
        PutZeros(to - stored);
    }

  private:
    unsigned char* const out_;
    int length_ = 0;
};

void PutFixed(const Digits& digits, int places, unsigned char* out) {
    Writer text(out);
    if (digits.negative) {
        text.Put("-");
    }
    if (digits.point <= 0) {
        text.Put("0.");
        text.PutZeros(-digits.point);
        text.Put(digits, 0, digits.length);
    } else {
        const int point = digits.length == 0 ? 1 : digits.point;
        text.Put(digits, 0, point);
        if (places > 0) {
            text.Put(".");
            text.Put(digits, point, point + places);
        }
    }
    text.Finish();
}

}  // namespace
}  // namespace veldt::numerics

using namespace veldt::numerics;

void XFp::Num2Dec(const XNDecForm* form, double x, XNDecimal* out) {
    const bool floating = form->style == 0;
    const int wanted = std::clamp<int>(form->digitCount, 1, kDecimalCapacity);
    const Digits digits = floating ? FloatDigits(x, wanted) : FixedDigits(x, form->digitCount);
    out->sign = digits.negative;
    out->exponent = 0;
    if (digits.kind != Digits::Kind::kNumber) {
        SetString(out->digits, TokenOf(digits.kind));
        return;
    }
    const int count = floating ? wanted : std::clamp(digits.length, 1, kDecimalCapacity);
    const int exponent = digits.length == 0 ? -form->digitCount : digits.point - count;
    out->exponent = static_cast<std::int16_t>(exponent);
    SetString(out->digits, {digits.Text(), static_cast<std::size_t>(count)});
}

void XFp::Num2Str(XNDecForm* form, double x, unsigned char* out) {
    const bool floating = form->style == 0;
    if (floating && form->digitCount > kMostFloatingDigits) {
        form->digitCount = kMostFloatingDigits;
    }
    const int wanted = form->digitCount;
    Digits digits = floating ? FloatDigits(x, std::max(wanted, 1)) : FixedDigits(x, wanted);
    if (digits.kind != Digits::Kind::kNumber) {
        SetString(out, TokenOf(digits.kind));
    } else if (floating) {
        PutFloating(digits, out);
    } else {
        PutFixed(digits, wanted, out);
    }
}
