// The rows of a veldt-bench whose instructions and cache misses are known, in place of the suite's.
#include <vector>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr int kStep = 100'000;
constexpr std::size_t kLine = 64;

/// Twice as many lines as the first cache of the simulated processor holds; all fit the second.
std::vector<char> bytes(1024 * kLine);

[[gnu::noinline]] void Spin(int times) {
    for (int i = 0; i < times; ++i) {
        Touch(nullptr);
    }
}

[[gnu::noinline]] double Theirs() {
    for (int i = 0; i < kStep; ++i) {
        Touch(nullptr);
    }
    return 1;
}

/// Hardly more than four times the instructions of theirs, and 2000 misses of the first cache.
[[gnu::noinline]] double Ours() {
    for (std::size_t i = 0; i < 2000; ++i) {
        bytes[i * kLine % bytes.size()] += 1;
    }
    for (int i = 0; i < 4 * kStep; ++i) {
        Touch(nullptr);
    }
    return 1;
}

/// What comes before the rounds takes longer than they do.
Setup After(int steps, double (*round)()) {
    return [=]() -> Round {
        Spin(steps * kStep);
        return round;
    };
}

}  // namespace

std::vector<Section> AllSections() {
    const std::vector<Contestant> both = {{"ours", ""}, {"theirs", ""}};
    const Row even = {"even", {}, {After(0, Theirs), After(0, Theirs)}};
    const Row uneven = {"uneven", {}, {After(50, Ours), After(90, Theirs)}};
    return {{"Known work", "", both, {even, uneven}}, {"Others", "", both, {even}}};
}

}  // namespace veldt::bench
