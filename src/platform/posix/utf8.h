// Characters of UTF-8 and of 16-bit text, one at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veldt::platform {

struct Utf16Character {
    std::uint32_t code;  ///< U+FFFD for a surrogate without its other half
    std::size_t units;
};

inline Utf16Character ReadUtf16(const unsigned short* text, std::size_t length) {
    const std::uint32_t first = text[0];
    if (first < 0xD800 || first > 0xDFFF) return {first, 1};
    if (first < 0xDC00 && length > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF) {
        return {0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00u), 2};
    }
    return {0xFFFD, 1};
}

/// Gives the bytes written, 1 to 4.
inline int WriteUtf8(std::uint32_t code, char* bytes) {
    if (code < 0x80) {
        bytes[0] = static_cast<char>(code);
        return 1;
    }
    const int count = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    for (int i = count - 1; i > 0; --i, code >>= 6) {
        bytes[i] = static_cast<char>(0x80 | (code & 0x3F));
    }
    bytes[0] = static_cast<char>((0xF00u >> count) | code);
    return count;
}

struct Utf8Character {
    std::uint32_t code;
    std::size_t bytes;  ///< for what isn't valid, how much of it one replacement stands for
    bool valid;
};

/// Overlong forms, surrogates and codes above 0x10FFFF are not valid. What isn't valid is cut where
/// no valid character could have gone on.
inline Utf8Character ReadUtf8(const unsigned char* text, std::size_t length) {
    const unsigned first = text[0];
    if (first < 0x80) return {first, 1, true};
    if (first < 0xC2 || first > 0xF4) return {0, 1, false};
    const std::size_t count = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    // The second byte's range keeps out what is overlong, a surrogate or too large.
    unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    std::uint32_t code = first & (0x7Fu >> count);
    for (std::size_t i = 1; i < count; ++i) {
        if (i == length || text[i] < low || text[i] > high) return {0, i, false};
        code = code << 6 | (text[i] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {code, count, true};
}

}  // namespace veldt::platform
