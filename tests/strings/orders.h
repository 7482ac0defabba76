// Orders of texts: plain ones, and whether the six operators say the same.
#pragma once

#include <string>

namespace veldt::tests {

/// A letter of A to Z as a small one, any other byte as it is.
inline char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

/// `order` is below 0, 0 or above 0.
template <typename A, typename B>
bool OperatorsAgree(const A& a, const B& b, int order) {
    return (a == b) == (order == 0) && (a != b) == (order != 0) && (a < b) == (order < 0) &&
           (a > b) == (order > 0) && (a <= b) == (order <= 0) && (a >= b) == (order >= 0);
}

}  // namespace veldt::tests
