// Length-prefixed strings: searching and comparing.
#include <veldt20/strings_pascal.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "strings/find_text.h"
#include "strings/mismatch.h"

unsigned char XPascalStrPos(const unsigned char* pattern, const unsigned char* text) {
    if (pattern[0] == 0) return 0;
    const char* characters = reinterpret_cast<const char*>(text + 1);
    const char* found = veldt::strings::FindText<veldt::strings::Ends::kAtLength>(
        characters, text[0], reinterpret_cast<const char*>(pattern + 1), pattern[0]);
    return static_cast<unsigned char>(found != nullptr ? found - characters + 1 : 0);
}

const unsigned char* XPascalStrRScan(const unsigned char* text, unsigned char c) {
    for (const unsigned char* p = text + text[0]; p > text; --p) {
        if (*p == c) return p;
    }
    return nullptr;
}

int XPascalStrCmp(const unsigned char* a, const unsigned char* b) {
    return XCompareBytes(a + 1, b + 1, a[0], b[0]);
}

int XPascalStrCmp(const char* a, const unsigned char* b) {
    const int length = static_cast<int>(std::strlen(a));
    return XCompareBytes(reinterpret_cast<const unsigned char*>(a), b + 1, length, b[0]);
}

int XPascalStrCmp(const unsigned char* a, const char* b) {
    return -XPascalStrCmp(b, a);
}

int XCompareBytes(const unsigned char* a, const unsigned char* b, int lengthA, int lengthB) {
    const auto shorter = static_cast<std::size_t>(std::min(lengthA, lengthB));
    const std::size_t i = veldt::strings::FirstStop<veldt::strings::Same>(
        reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b), shorter);
    return i < shorter ? a[i] - b[i] : lengthA - lengthB;
}
