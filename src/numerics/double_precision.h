// Keeps the extended registers of 32-bit code to the precision of doubles for a while.
#pragma once

#include <cstdint>

namespace veldt::numerics {

/// The 32-bit standard library computes in extended registers, and what it rounds to them and then
/// to a double is rounded twice. 64-bit code has no such registers in its way, and this no effect.
class DoublePrecision {
  public:
    DoublePrecision() {
        if constexpr (kExtendedRegisters) {
            asm volatile("fnstcw %0" : "=m"(before_));
            const auto control =
                static_cast<std::uint16_t>((before_ & ~kPrecisionField) | kDoublePrecision);
            asm volatile("fldcw %0" : : "m"(control) : "memory");
        }
    }
    ~DoublePrecision() {
        if constexpr (kExtendedRegisters) {
            asm volatile("fldcw %0" : : "m"(before_) : "memory");
        }
    }
    DoublePrecision(const DoublePrecision&) = delete;
    DoublePrecision& operator=(const DoublePrecision&) = delete;

  private:
    static constexpr bool kExtendedRegisters = sizeof(void*) == 4;
    static constexpr int kPrecisionField = 0x300;
    static constexpr int kDoublePrecision = 0x200;

    std::uint16_t before_ = 0;
};

}  // namespace veldt::numerics
