// Any text read as a number, any number written as a text: within its record, and read back as the
// same number to fifteen digits.
#include <veldt20/numerics.h>

#include <bit>
#include <cmath>

#include "fuzz/input.h"

namespace {

using veldt::fuzz::Input;
using veldt::fuzz::Require;

/// Fifteen digits are kept. The largest numbers of all may round up to infinity.
bool Near(double back, double value) {
    constexpr double kRoundsToInfinity = 1.7976931348623150e308;
    if (std::isnan(value)) {
        return XFp::IsNan(back) != 0;
    }
    if (std::isinf(back)) {
        return std::signbit(back) == std::signbit(value) && std::abs(value) >= kRoundsToInfinity;
    }
    return std::abs(back - value) <= std::abs(value) * 1e-14 + 1e-323;
}

void CheckWayBack(double value) {
    XNDecForm form = {0, 15};
    XNDecimal decimal;
    XFp::Num2Dec(&form, value, &decimal);
    Require(decimal.digits[0] < sizeof decimal.digits, "the digits overrun their record");
    Require(std::isinf(value) || Near(XFp::Dec2Num(&decimal), value), "a record loses a number");
    unsigned char text[256];
    XFp::Num2Str(&form, value, text);
    double back = 0;
    XFp::Str2Num(text, &back);
    // The text of an infinity has no sign.
    Require(std::isinf(value) ? std::isinf(back) : Near(back, value), "a text loses a number");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Input input(bytes, size);
    const auto any = std::bit_cast<double>(input.Long());
    CheckWayBack(any);
    XNDecForm form = {static_cast<std::uint8_t>(input.Byte() & 1),
                      static_cast<std::int16_t>(input.Word())};
    unsigned char text[256];
    XFp::Num2Str(&form, any, text);
    XNDecimal decimal;
    XFp::Num2Dec(&form, any, &decimal);

    const std::string source = input.Text();
    text[0] = static_cast<unsigned char>(source.size());
    std::memcpy(text + 1, source.data(), source.size());
    double value = 0;
    XFp::Str2Num(text, &value);
    CheckWayBack(value);
    decimal.exponent = static_cast<std::int16_t>(input.Word());
    std::memcpy(decimal.digits, text, sizeof decimal.digits);
    CheckWayBack(XFp::Dec2Num(&decimal));
    return 0;
}
