// Orders of texts: texts to try them on, and whether the six operators say the same.
#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <utility>

namespace veldt::tests {

inline std::string Terminated(const std::string& text) {
    return text.c_str();
}

/// The letters A to Z as small ones, all other bytes as they are.
inline std::string Lower(std::string text) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

/// Two texts of which one often is the other with a byte changed, and zero bytes in some.
inline std::pair<std::string, std::string> TwoTexts(std::mt19937& random) {
    const auto letter = [&] {
        return "aAzZ[{@`\x7F\x80\xC9\xE9"[random() % (random() % 8 == 0 ? 13 : 12)];
    };
    const auto word = [&](std::size_t length) {
        std::string text(length, 0);
        for (char& c : text) c = letter();
        return text;
    };
    const std::string a = word(random() % (random() % 4 == 0 ? 300 : 40));
    std::string b = random() % 4 == 0 ? word(random() % 40) : a;
    if (!b.empty() && random() % 2 == 0) b[random() % b.size()] = letter();
    if (random() % 4 == 0) b.resize(random() % (b.size() + 1));
    return {a, b};
}

/// `order` is below 0, 0 or above 0.
template <typename A, typename B>
bool OperatorsAgree(const A& a, const B& b, int order) {
    return (a == b) == (order == 0) && (a != b) == (order != 0) && (a < b) == (order < 0) &&
           (a > b) == (order > 0) && (a <= b) == (order <= 0) && (a >= b) == (order >= 0);
}

}  // namespace veldt::tests
