// OR, AND and exclusive OR of two areas, in wide steps that give what single bytes would.
//
// A step reads its mask bytes before it writes its target bytes, so it is exact unless the target
// stands ahead of the mask by less than the step is wide: then mask bytes of the step are target
// bytes of the same step. Such a short lag is lengthened first. With the lag d,
//
//     t[i] = t[i] op t[i - d] = (t[i] op old t[i - d]) op t[i - 2d],
//
// so folding each byte with the old one d below it, from the top down, doubles the lag.
#include "memory/byte_logic.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#define VELDT20_INLINE inline __attribute__((always_inline))

namespace veldt::memory {

namespace {

using Byte = unsigned char;
template <std::size_t width>
struct VectorOf;
template <>
struct VectorOf<1> {
    using Type = Byte;
};
template <>
struct VectorOf<2> {
    using Type = std::uint16_t;
};
template <>
struct VectorOf<4> {
    using Type = std::uint32_t;
};
template <>
struct VectorOf<8> {
    using Type = std::uint64_t;
};
template <>
struct VectorOf<16> {
    using Type = std::uint64_t __attribute__((vector_size(16)));
};
template <>
struct VectorOf<32> {
    using Type = std::uint64_t __attribute__((vector_size(32)));
};

struct Or {
    template <typename T>
    VELDT20_INLINE static void Apply(T& a, const T& b) {
        a = static_cast<T>(a | b);
    }
};
struct And {
    template <typename T>
    VELDT20_INLINE static void Apply(T& a, const T& b) {
        a = static_cast<T>(a & b);
    }
};
struct Xor {
    template <typename T>
    VELDT20_INLINE static void Apply(T& a, const T& b) {
        a = static_cast<T>(a ^ b);
    }
};

template <typename Op, std::size_t width>
VELDT20_INLINE void Step(Byte* target, const Byte* mask) {
    typename VectorOf<width>::Type bytes;
    typename VectorOf<width>::Type maskBytes;
    std::memcpy(&bytes, target, width);
    std::memcpy(&maskBytes, mask, width);
    Op::Apply(bytes, maskBytes);
    std::memcpy(target, &bytes, width);
}

/// The last `count` modulo 2 * `width` bytes, from the first one up.
template <typename Op, std::size_t width>
VELDT20_INLINE void Rest(Byte*& target, const Byte*& mask, std::size_t count) {
    if ((count & width) != 0) {
        Step<Op, width>(target, mask);
        target += width;
        mask += width;
    }
    if constexpr (width > 1) {
        Rest<Op, width / 2>(target, mask, count);
    }
}

/// Exact for targets that stand ahead of the mask by `width` bytes or more, or not at all.
template <typename Op, std::size_t width>
VELDT20_INLINE void Ascend(Byte* target, const Byte* mask, std::size_t count) {
    constexpr std::size_t kUnrolled = 4 * width;
    constexpr std::size_t kWorthAligning = 16 * width;
    if (count >= kWorthAligning) {
        // A store across two cache lines costs twice as much; reads hardly suffer.
        const std::size_t head = -reinterpret_cast<std::uintptr_t>(target) % width;
        Rest<Op, width / 2>(target, mask, head);
        count -= head;
        for (; count >= kUnrolled; count -= kUnrolled) {
            Step<Op, width>(target, mask);
            Step<Op, width>(target + width, mask + width);
            Step<Op, width>(target + 2 * width, mask + 2 * width);
            Step<Op, width>(target + 3 * width, mask + 3 * width);
            target += kUnrolled;
            mask += kUnrolled;
        }
    }
    for (; count >= width; count -= width) {
        Step<Op, width>(target, mask);
        target += width;
        mask += width;
    }
    Rest<Op, width / 2>(target, mask, count);
}

/// target[i] op= target[i - lag] by what stood there before, from the last byte down to `lag`.
template <typename Op, std::size_t width>
VELDT20_INLINE void Descend(Byte* target, std::size_t lag, std::size_t count) {
    while (count >= lag + width) {
        count -= width;
        Step<Op, width>(target + count, target + count - lag);
    }
    while (count > lag) {
        --count;
        Step<Op, 1>(target + count, target + count - lag);
    }
}

/// A target that stands `lag` bytes ahead of its mask, 0 < lag < width. The long lag is twice what
/// exactness needs, so that a step seldom waits for the one before it to be stored. A piece at a
/// time, so that all passes over it find it in the first cache.
template <typename Op, std::size_t width>
VELDT20_INLINE void AscendBehindShortLag(Byte* target, std::size_t lag, std::size_t count) {
    constexpr std::size_t kPiece = 16384;
    constexpr std::size_t kLongEnough = 2 * width;
    std::size_t longLag = lag;
    while (longLag < kLongEnough) {
        longLag *= 2;
    }
    while (count > 0) {
        const std::size_t piece = std::min(count, kPiece);
        const std::size_t head = std::min(piece, longLag);
        // The passes spoil the bytes that have none of this piece a long lag below them.
        Byte finished[2 * kLongEnough + width];
        std::memcpy(finished, target - lag, lag + head);
        for (std::size_t i = lag; i < lag + head; ++i) {
            Step<Op, 1>(finished + i, finished + i - lag);
        }
        for (std::size_t pass = lag; pass < longLag; pass *= 2) {
            Descend<Op, width>(target, pass, piece);
        }
        std::memcpy(target, finished + lag, head);
        Ascend<Op, width>(target + head, target, piece - head);
        target += piece;
        count -= piece;
    }
}

template <typename Op, std::size_t width>
VELDT20_INLINE void Combine(void* target, const void* mask, std::size_t count) {
    auto* targetBytes = static_cast<Byte*>(target);
    const auto* maskBytes = static_cast<const Byte*>(mask);
    const std::size_t lag =
        reinterpret_cast<std::uintptr_t>(target) - reinterpret_cast<std::uintptr_t>(mask);
    if (lag > 0 && lag < std::min(width, count)) {
        AscendBehindShortLag<Op, width>(targetBytes, lag, count);
    } else {
        Ascend<Op, width>(targetBytes, maskBytes, count);
    }
}

template <typename Op>
__attribute__((target("avx2"))) void CombineWide(void* target, const void* mask,
                                                 std::size_t count) {
    Combine<Op, 32>(target, mask, count);
}

/// Out of line, so that a caller with few bytes saves no registers for it.
template <typename Op>
[[gnu::noinline]] void CombineBy(VectorWidth width, void* target, const void* mask,
                                 std::size_t count) {
    if (width == VectorWidth::k32) {
        CombineWide<Op>(target, mask, count);
    } else {
        Combine<Op, 16>(target, mask, count);
    }
}

}  // namespace

VectorWidth WidestVectors() {
    return __builtin_cpu_supports("avx2") ? VectorWidth::k32 : VectorWidth::k16;
}

void OrBytes(void* target, const void* mask, std::size_t count, VectorWidth width) {
    CombineBy<Or>(width, target, mask, count);
}

void AndBytes(void* target, const void* mask, std::size_t count, VectorWidth width) {
    CombineBy<And>(width, target, mask, count);
}

void XorBytes(void* target, const void* mask, std::size_t count, VectorWidth width) {
    CombineBy<Xor>(width, target, mask, count);
}

}  // namespace veldt::memory
