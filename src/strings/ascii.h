// Questions about ASCII characters that no locale has a say in.
#pragma once

namespace veldt::strings {

/// A to Z become a to z, every other byte stays.
template <typename Byte>
constexpr Byte AsciiLower(Byte c) {
    return c >= 'A' && c <= 'Z' ? static_cast<Byte>(c + ('a' - 'A')) : c;
}

constexpr bool IsAsciiSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool IsAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace veldt::strings
