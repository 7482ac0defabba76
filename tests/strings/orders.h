// Whether the six operators say what a comparison says.
#pragma once

namespace veldt::tests {

/// `order` is below 0, 0 or above 0.
template <typename A, typename B>
bool OperatorsAgree(const A& a, const B& b, int order) {
    return (a == b) == (order == 0) && (a != b) == (order != 0) && (a < b) == (order < 0) &&
           (a > b) == (order > 0) && (a <= b) == (order <= 0) && (a >= b) == (order >= 0);
}

}  // namespace veldt::tests
