// From doubles to decimal records and readable text.
#include <veldt20/floating_point.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "numerics/digit_engine.h"

namespace veldt::numerics {
namespace {

constexpr int kLongestText = 255;
constexpr int kLongestFloatingText = 20;  ///< in digits
constexpr int kDecimalCapacity = sizeof(XNDecimal::digits) - 1;

/// Builds a length-prefixed string; what doesn't fit is dropped.
class Writer {
  public:
    Writer(unsigned char* out, int capacity) : out_(out), room_(capacity) {}
    ~Writer() { out_[0] = static_cast<unsigned char>(length_); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void Put(char c) {
        if (length_ < room_) {
            out_[++length_] = static_cast<unsigned char>(c);
        }
    }
    void Put(std::string_view text) {
        for (const char c : text) {
            Put(c);
        }
    }
    void PutZeros(int count) {
        for (int i = std::min(count, room_ - length_); i > 0; --i) {
            Put('0');
        }
    }
    /// The digits `from` to `to` - 1, zeros where there are none.
    void Put(const Digits& digits, int from, int to) {
        const int stored = std::min(to, digits.stored);
        for (int i = from; i < stored; ++i) {
            Put(digits.At(i));
        }
        PutZeros(to - std::max(from, stored));
    }

  private:
    unsigned char* const out_;
    const int room_;
    int length_ = 0;
};

void PutFloating(const Digits& digits, Writer& text) {
    text.Put(digits.negative ? '-' : ' ');
    text.Put(digits.At(0));
    text.Put('.');
    text.Put(digits, 1, digits.length);
    const int exponent = digits.point - 1;
    text.Put(exponent < 0 ? "e-" : "e+");
    char buffer[8];
    const char* const end = std::to_chars(buffer, buffer + sizeof(buffer), std::abs(exponent)).ptr;
    text.Put({buffer, static_cast<std::size_t>(end - buffer)});
}

void PutFixed(const Digits& digits, int places, Writer& text) {
    if (digits.negative) {
        text.Put('-');
    }
    if (digits.point <= 0) {
        text.Put("0.");
        text.PutZeros(-digits.point);
        text.Put(digits, 0, digits.length);
        return;
    }
    const int point = digits.length == 0 ? 1 : digits.point;
    text.Put(digits, 0, point);
    if (places > 0) {
        text.Put('.');
        text.Put(digits, point, point + places);
    }
}

}  // namespace
}  // namespace veldt::numerics

using namespace veldt::numerics;

void XFp::Num2Dec(const XNDecForm* form, double x, XNDecimal* out) {
    const bool floating = form->style == 0;
    const int wanted = std::clamp<int>(form->digitCount, 1, kDecimalCapacity);
    const Digits digits = floating ? FloatDigits(x, wanted) : FixedDigits(x, form->digitCount);
    Writer text(out->digits, kDecimalCapacity);
    out->sign = digits.negative;
    out->exponent = 0;
    if (!digits.token.empty()) {
        text.Put(digits.token);
        return;
    }
    const int count = floating ? wanted : std::clamp(digits.length, 1, kDecimalCapacity);
    const int exponent = digits.length == 0 ? -form->digitCount : digits.point - count;
    out->exponent = static_cast<std::int16_t>(exponent);
    text.Put(digits, 0, count);
}

void XFp::Num2Str(XNDecForm* form, double x, unsigned char* out) {
    const bool floating = form->style == 0;
    if (floating && form->digitCount > kLongestFloatingText) {
        form->digitCount = kLongestFloatingText;
    }
    const int wanted = form->digitCount;
    const Digits digits = floating ? FloatDigits(x, std::max(wanted, 1)) : FixedDigits(x, wanted);
    Writer text(out, kLongestText);
    if (!digits.token.empty()) {
        text.Put(digits.token);
    } else if (floating) {
        PutFloating(digits, text);
    } else {
        PutFixed(digits, wanted, text);
    }
}
