// Rounding to nearest for a while, whatever the caller's mode.
#pragma once

#include <veldt20/floating_point.h>

namespace veldt::numerics {

/// Costs a mere look at the mode where it is to nearest already.
class NearestRounding {
  public:
    NearestRounding() : before_(XFp::GetRound()) {
        if (before_ != 0) {
            XFp::SetRound(0);
        }
    }
    ~NearestRounding() {
        if (before_ != 0) {
            XFp::SetRound(before_);
        }
    }
    NearestRounding(const NearestRounding&) = delete;
    NearestRounding& operator=(const NearestRounding&) = delete;

    /// The caller's mode.
    std::int16_t Before() const { return before_; }

  private:
    const std::int16_t before_;
};

}  // namespace veldt::numerics
