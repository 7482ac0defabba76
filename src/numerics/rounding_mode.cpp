// The rounding mode in the library's own numbering.
#include <veldt20/floating_point.h>

#include <cfenv>

namespace {

constexpr int kDirections[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
constexpr std::int16_t kModesByControl[] = {0, 2, 1, 3};

}  // namespace

// Every conversion asks this. The C library looks at twice the bytes that the instruction has just
// stored, and the wait for them takes ten times as long as all of this.
std::int16_t XFp::GetRound() {
    constexpr int kRoundingShift = 10;
    std::uint16_t control;
    asm volatile("fnstcw %0" : "=m"(control));
    return kModesByControl[control >> kRoundingShift & 3];
}

void XFp::SetRound(std::int16_t mode) {
    if (mode >= 0 && mode <= 3) {
        std::fesetround(kDirections[mode]);
    }
}

std::int16_t XFp::FESetRound(std::int16_t mode) {
    const std::int16_t before = GetRound();
    SetRound(mode);
    return before;
}
