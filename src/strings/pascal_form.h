// The length-prefixed form: a length byte, then the characters.
#pragma once

#include <cstddef>
#include <cstring>

namespace veldt::strings {

/// The longest text that the length byte can tell.
inline constexpr int kMaxPascalLength = 255;

/// Makes `to` the `length` bytes from `from` on, which may overlap it: the length byte may be one
/// of them, and is written last.
inline unsigned char* StorePascal(unsigned char* to, const void* from, std::size_t length) {
    std::memmove(to + 1, from, length);
    to[0] = static_cast<unsigned char>(length);
    return to;
}

/// Makes `to` the terminated text of the `length` bytes from `from` on, which may overlap it.
inline char* StoreTerminated(char* to, const void* from, std::size_t length) {
    std::memmove(to, from, length);
    to[length] = 0;
    return to;
}

}  // namespace veldt::strings
