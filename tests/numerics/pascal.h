// Length-prefixed strings, as the conversions of numbers take and give them.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

inline std::string FromPascal(const unsigned char* string) {
    return {reinterpret_cast<const char*>(string) + 1, string[0]};
}

/// Exactly as long as the string is, so that a look past its end is seen.
inline std::vector<unsigned char> Pascal(const std::string& text) {
    std::vector<unsigned char> string(1 + text.size());
    string[0] = static_cast<unsigned char>(text.size());
    std::copy(text.begin(), text.end(), string.begin() + 1);
    return string;
}
