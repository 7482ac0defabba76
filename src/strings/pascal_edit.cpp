// Length-prefixed strings: setting up, copying, appending, replacing.
#include <veldt20/strings_pascal.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "strings/pascal_form.h"

namespace strings = veldt::strings;

void XPascalStrInit(unsigned char* text) {
    text[0] = 0;
}

unsigned char XPascalStrLen(const unsigned char* text) {
    return text[0];
}

unsigned char XPascalStrIsEmpty(const unsigned char* text) {
    return text[0] == 0;
}

std::uint32_t XPascalSetRange(int first, int last, int base) {
    const auto from = static_cast<std::uint32_t>(first);
    const std::uint32_t count = static_cast<std::uint32_t>(last) - from + 1;
    const std::uint32_t shift = from - static_cast<std::uint32_t>(base);
    return ((std::uint32_t{1} << (count % 32)) - 1) << (shift % 32);
}

unsigned char* XPascalStrCpy(unsigned char* to, const unsigned char* from) {
    return strings::StorePascal(to, from + 1, from[0]);
}

unsigned char* XPascalStrCpy(unsigned char* to, const char* from, int limit) {
    const int length = static_cast<int>(std::strlen(from) & 0xFFFF);
    const int count = std::max(std::min(length, limit), 0);
    return strings::StorePascal(to, from, static_cast<std::size_t>(count));
}

unsigned char* XPascalStrCpy(unsigned char* to, const unsigned char* from, unsigned char first,
                             unsigned char count) {
    const int rest = from[0] + 1 - first;
    const int copied = std::clamp<int>(count, 0, std::max(rest, 0));
    return strings::StorePascal(to, from + first, static_cast<std::size_t>(copied));
}

unsigned char* XPascalStrCat(unsigned char* to, const unsigned char* from) {
    const int length = to[0];
    const int added = std::min<int>(from[0], strings::kMaxPascalLength - length);
    std::memmove(to + 1 + length, from + 1, static_cast<std::size_t>(added));
    to[0] = static_cast<unsigned char>(length + added);
    return to;
}

unsigned char XPascalStrReplace(unsigned char* text, unsigned char from, unsigned char to) {
    const int length = text[0];
    int count = 0;
    for (int i = length; i > 0; --i) {
        if (text[i] != from) continue;
        text[i] = to;
        ++count;
    }
    return static_cast<unsigned char>(count);
}
