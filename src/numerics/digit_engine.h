// The decimal digits of a double, rounded to where they are wanted.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace veldt::numerics {

/// No more digits than these are ever significant.
inline constexpr int kSignificantDigits = 15;

/// The number 0.d1d2d3... times 10^point, or what is no finite number.
class Digits {
  public:
    enum class Kind : std::uint8_t { kNumber, kInfinity, kNan };

    /// The zeros that stand behind the stored digits, so that short texts can be taken as they are.
    static constexpr int kZeros = 25;
    /// The characters before the digits that whoever builds a text around them may use.
    static constexpr int kMargin = 2;

    char* Text() { return room_.data() + kMargin; }
    const char* Text() const { return room_.data() + kMargin; }

    Kind kind = Kind::kNumber;
    bool negative = false;
    int point = 0;
    int length = 0;  ///< the digits that are wanted, those of a carry included; may be 0
    int stored = 0;  ///< those of them that may be other than 0

  private:
    std::array<char, kMargin + kSignificantDigits + kZeros> room_;
};

/// What stands for a number that isn't finite.
constexpr std::string_view TokenOf(Digits::Kind kind) {
    return kind == Digits::Kind::kInfinity ? "INF" : "NAN";
}

/// `count` significant digits, or one more when rounding carries: 9.996 to three gives 1000.
Digits FloatDigits(double x, int count);

/// The digits down to `places` behind the point. 0.06 to one place gives 1 by a carry; a number
/// that has no digit there gives none.
Digits FixedDigits(double x, int places);

}  // namespace veldt::numerics
