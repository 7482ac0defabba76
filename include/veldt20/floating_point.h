// XFp, the floating-point toolbox: rounding mode, not-a-number, logarithms, powers, two finance
// functions, a random number generator, and the conversions between doubles and decimal text.
#pragma once

#include <veldt20/decimal_records.h>
#include <veldt20/export.h>

#include <cstdint>

/// Every operation is static; an object holds nothing.
///
/// A rounding mode is 0 to nearest (ties to even), 1 upward, 2 downward, 3 toward zero. It belongs
/// to the calling thread, which every floating-point operation of that thread obeys; nothing but
/// SetRound and FESetRound changes it.
///
/// The not-a-number of this class is a finite double, -12345679012345.0 (0xC2A674E79FC3F200), and
/// arithmetic doesn't keep it: the sum of it and 1.0 is an ordinary number. Functions that fail
/// give it back, and those told to test their arguments with IsNan take an IEEE NaN for it as well.
///
/// All functions may be called from several threads at once and give the same bits on every target.
class VELDT20_API XFp {
  public:
    /// The current mode.
    static std::int16_t GetRound();
    /// Sets the mode; a value outside 0 to 3 does nothing.
    static void SetRound(std::int16_t mode);
    /// The mode so far; sets the mode as SetRound does. Keep the result and set it back:
    ///
    ///     const auto before = XFp::FESetRound(2);
    ///     ...
    ///     XFp::SetRound(before);
    static std::int16_t FESetRound(std::int16_t mode);

    /// Positive infinity.
    static double Inf();
    /// The not-a-number, whatever the code.
    static double Nan(unsigned char code);
    /// 1 for the not-a-number and for every IEEE NaN, else 0.
    static int IsNan(double x);

    /// `x` cut toward zero in any mode: -2.7 gives -2. What doesn't fit keeps the low 32 bits of
    /// the 64-bit number; a NaN, and what 64 bits don't hold, gives 0.
    static std::int32_t Num2LongInt(double x);
    /// Its argument.
    static double Num2Double(double x);
    /// `x` to a whole number in the current mode: 2.5 gives 2.0, 3.0, 2.0, 2.0 in modes 0 to 3.
    static double RInt(double x);
    /// RInt, converted as by Num2LongInt.
    static std::int32_t RIntToL(double x);

    /// The natural logarithm, computed in extended precision. The not-a-number unless `x` is above
    /// 0: for zeros, negative numbers (among them the not-a-number) and IEEE NaNs.
    static double Ln(double x);
    /// The logarithm to base 2, in the same way: 8.0 gives 3.0.
    static double Log2(double x);

    /// `x` to the power `y`. The not-a-number if IsNan holds for either, if `x` is negative and `y`
    /// has a fraction, and if `x` is 0 and `y` negative. All else follows the standard library: 0.0
    /// to the power 0.0 is 1.0, and overflow is infinity. The result is the true power rounded once
    /// in the current mode: the work carries some 70 bits, and only what lies closer than that to
    /// the border between two doubles can fall on the wrong side.
    static double XpwrY(double x, double y);
    /// The growth factor of `n` periods at rate `r`, XpwrY(1.0 + r, n): (0.05, 10.0) gives
    /// 1.628894626777442. The not-a-number if IsNan holds for either.
    static double Compound(double r, double n);
    /// The present value of 1 per period over `n` periods at rate `r`, (1 - (1 + r)^-n) / r, and
    /// `n` for a zero rate: (0.05, 10.0) gives 7.721734929184818. The not-a-number if IsNan holds
    /// for either or for the power, and, the rate not being zero, for `n` below -644.0.
    static double Annuity(double r, double n);

    /// Makes `*x` 16807 times itself modulo 2147483647, and gives it back. From a whole number from
    /// 1 to 2147483646 this is exact and visits all of them: 1 gives 16807, then 282475249. Other
    /// states are not refused: 0 stays 0, a fraction or a sign is carried along.
    static double Randomx(double* x);

    /// Fills `out` with the digits of `x`, as many as `form` wants but never more than the 23 that
    /// the record has room for, and `exponent` to go with them. 3.14159 with 6 digits in floating
    /// style is 314159 times 10^-5; with 2 in fixed style it is 314 times 10^-2.
    ///
    /// At most 15 digits are significant, the rest is 0. Modes 0 and 1 round the 17 correctly
    /// rounded digits of `x` half up in magnitude, modes 2 and 3 cut them. A carry drops a last 0
    /// in floating style (9.996 with 3 digits is 100 times 10^-1), where a `digitCount` below 1
    /// acts as 1. In fixed style a number that has no digit left is the digit 0. A zero has no
    /// sign. Infinities and NaNs give their token and sign, and exponent 0.
    static void Num2Dec(const XNDecForm* form, double x, XNDecimal* out);

    /// The number of the record, correctly rounded in the current mode before the sign comes on.
    /// Digits that begin with 0 give +0.0, whatever follows. "INF" gives infinity with the sign,
    /// "NAN" the not-a-number, which has none. Other text is read as by Str2Num, with "E" and the
    /// exponent behind it.
    static double Dec2Num(const XNDecimal* dec);

    /// Writes `x` to the length-prefixed string `out`, which must hold 256 bytes; a longer text is
    /// cut to 255 characters. Digits are those of Num2Dec but for the carry, which gives one more.
    ///
    ///     floating, 6    " 3.14159e+0"   "-1.23457e+13"   " 0.00000e-1" for zeros
    ///     floating, 3    " 1.000e+1" for 9.996
    ///     fixed, 2       "3.14"   "-0.00" for -0.001   "0.000" for 0.0001: all the zeros behind
    ///                    the point that the number has, even when fewer were wanted
    ///     fixed, 0       "1235" for 1234.5   "0." for 0.4
    ///     fixed, -2      "1200" for 1234.0
    ///
    /// Floating style stores 20 in `form` if more digits are wanted. Infinities and NaNs give "INF"
    /// and "NAN", without a sign. The decimal mark is a point in every locale.
    static void Num2Str(XNDecForm* form, double x, unsigned char* out);

    /// Reads a length-prefixed string. One that begins with I is infinity, one that begins with N
    /// the not-a-number. Anything else is read as the standard library's strtod does in the "C"
    /// locale, whatever the locale is and without touching it: white space, a sign, then a decimal
    /// or 0x number, "inf" or "nan" in any case; what follows is ignored, and what is no number
    /// gives 0.0. The result is correctly rounded in the current mode.
    static void Str2Num(const unsigned char* text, double* out);

    /// An object holds nothing; copying one copies nothing.
    XFp() = default;
    XFp(const XFp&) = default;
    XFp& operator=(const XFp&);
};
