// The rounding mode of a test, put back at its end.
#pragma once

#include <veldt20/numerics.h>

class Rounding {
  public:
    explicit Rounding(int mode) : before_(XFp::FESetRound(static_cast<std::int16_t>(mode))) {}
    ~Rounding() { XFp::SetRound(before_); }
    Rounding(const Rounding&) = delete;
    Rounding& operator=(const Rounding&) = delete;

  private:
    std::int16_t before_;
};
