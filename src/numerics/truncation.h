// The one conversion from a double to an integer that the library makes.
#pragma once

#include <cstdint>

namespace veldt::numerics {

/// The low 32 bits of `x` cut toward zero to a 64-bit integer; 0 for a NaN and for what 64 bits
/// don't hold, where the language leaves the conversion undefined.
inline std::int32_t LowBitsTruncated(double x) {
    if (!(x >= -0x1p63 && x < 0x1p63)) {
        return 0;
    }
    return static_cast<std::int32_t>(static_cast<std::int64_t>(x));
}

}  // namespace veldt::numerics
