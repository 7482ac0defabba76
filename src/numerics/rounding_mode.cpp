// The rounding mode in the library's own numbering.
#include <veldt20/floating_point.h>

#include <cfenv>

namespace {

constexpr int kDirections[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

}  // namespace

std::int16_t XFp::GetRound() {
    switch (std::fegetround()) {
        case FE_UPWARD:
            return 1;
        case FE_DOWNWARD:
            return 2;
        case FE_TOWARDZERO:
            return 3;
        default:
            return 0;
    }
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
