// 16.16 fixed point: a 32-bit signed integer that holds the number times 65536.
//
//     1.0   0x00010000        smallest step, 1/65536   0x00000001
//    -1.0   0xFFFF0000        largest, 32767.99998...  0x7FFFFFFF
//     0.5   0x00008000        most negative, -32768.0  0x80000000
//
// Arguments called a, b, v and x are raw values in this form unless said otherwise, and so are
// results. The magnitude of a value is its negation if it is negative, read as an unsigned number;
// that of 0x80000000 is 0x80000000.
//
// Two families multiply and divide. The plain one, FixMul and FixDiv, computes. The other one,
// XFixMultiply and XFixDivide, answers 0, 1.0, -1.0 and powers of two by a copy, a negation or a
// shift and leaves the rest to the plain one. They round and overflow differently:
//
//                                     FixMul              XFixMultiply
//     operands in general             to nearest          to nearest (it calls FixMul)
//     an operand of +-1.0             computed, saturates the other operand or its negation
//     a power of two below 1.0        to nearest          cut toward zero
//     a power of two of 2.0 or more   saturates           bits above bit 31 are lost
//
// All functions are pure, and give the same in every floating-point rounding mode.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// The product, to the nearest step, ties away from zero: FixMul(3, 0x8000) is 2, of 1.5 steps.
/// Saturates at 0x7FFFFFFF or 0x80000001 when the product of the operands' whole parts (of their
/// magnitudes) is above 0x7FFF. A product that passes that test and doesn't fit wraps all the same:
/// FixMul(0x7FFFFFFF, 0x18000) is 0xBFFFFFFF.
VELDT20_API std::int32_t FixMul(std::int32_t a, std::int32_t b) noexcept;

/// a / b, cut toward zero: 1.0 by 3.0 is 0x5555. A zero `b` gives 0x80000000 for a negative `a` and
/// 0x7FFFFFFF for any other, 0 included. Any other quotient that doesn't fit keeps the low 32 bits
/// of a * 65536 / b.
VELDT20_API std::int32_t FixDiv(std::int32_t a, std::int32_t b) noexcept;

/// The quotient of two whole numbers as a fixed value, cut toward zero: FixRatio(2, 3) is 0xAAAA.
/// A zero `b` gives 0x80000001 for a negative `a` and 0x7FFFFFFF for any other, 0 included.
/// -32768 counts as the number that it is; -32768 / -1, the one quotient that doesn't fit, gives
/// 0x7FFFFFFF.
VELDT20_API std::int32_t FixRatio(std::int16_t a, std::int16_t b) noexcept;

/// The nearest whole number, ties away from zero: 1.5 gives 2, -0.5 gives -1. What rounds to 32768
/// comes back as -32768.
VELDT20_API std::int16_t FixRound(std::int32_t x) noexcept;

/// The number that FixRound gives, in 32 bits.
VELDT20_API std::int32_t Fix2Long(std::int32_t x) noexcept;

/// The whole number `x` as a fixed value, clamped to -32767.0 (not -32768.0) and 32767.0.
VELDT20_API std::int32_t Long2Fix(std::int32_t x) noexcept;

/// The same number as a double, exactly.
VELDT20_API double Fix2X(std::int32_t x) noexcept;

/// The number `d` as a fixed value, cut toward zero: X2Fix(-1.5) is 0xFFFE8000. What doesn't fit
/// keeps the low 32 bits of d * 65536: X2Fix(40000.0) is 0x9C400000. A NaN, and what isn't within
/// 64 bits once multiplied, gives 0.
VELDT20_API std::int32_t X2Fix(double d) noexcept;

/// 1 if exactly one bit of `v`, read as a bare pattern, is set, and then `exponent` is the power of
/// two that `v` stands for, -16 to 15: 0x8000 (0.5) gives -1, 0x80000000 gives 15. Else 0, and
/// `exponent` stays as it is.
VELDT20_API int XFixTestForPowerOf2(std::int32_t v, std::int32_t& exponent) noexcept;

/// The product by shortcuts. The first of these that holds decides:
/// - an operand is 0: 0;
/// - an operand is 1.0 or -1.0: the other one, or its negation, where -0x80000000 is itself;
/// - the magnitude of `b`, or else of `a`, is a power of two: the other one's magnitude shifted,
///   negated if the signs differ. XFixMultiply(3, 0x8000) is 1, and XFixMultiply(0x40000000,
///   0x40000) is 0. A magnitude of 0x80000000 shifts right as an unsigned number, so that
///   -32768.0 by 0.5 is -16384.0;
/// - FixMul(a, b).
VELDT20_API std::int32_t XFixMultiply(std::int32_t a, std::int32_t b) noexcept;

/// The quotient by shortcuts. The first of these that holds decides:
/// - `a` is 0: 0, also for a zero `b`;
/// - `b` is 1.0 or -1.0: `a`, or its negation, where -0x80000000 is itself;
/// - the magnitudes are equal: 1.0 or -1.0;
/// - the magnitude of `b` is a power of two: that of `a` shifted, bits above bit 31 being lost,
///   negated if the signs differ. XFixDivide(-7, 0x20000) is -3, and -32768.0 by 2.0 is -16384.0;
/// - FixDiv(a, b).
VELDT20_API std::int32_t XFixDivide(std::int32_t a, std::int32_t b) noexcept;
