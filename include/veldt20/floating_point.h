// XFp, the floating-point toolbox: rounding mode, not-a-number, logarithms, powers, two finance
// functions, a random number generator, and the conversions between doubles and decimal text.
#pragma once

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

    XFp() = default;
    XFp(const XFp&) = default;
    XFp& operator=(const XFp&);
};
