// Seeds for randomised runs.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <random>

namespace veldt::tests {

/// Another one at each run, or what VELDT20_SEED says. Printed, so that a run that failed can be
/// repeated.
inline unsigned int Seed() {
    const char* wanted = std::getenv("VELDT20_SEED");
    const unsigned int seed = wanted != nullptr
                                  ? static_cast<unsigned int>(std::strtoul(wanted, nullptr, 0))
                                  : std::random_device{}();
    std::printf("VELDT20_SEED=%u\n", seed);
    return seed;
}

}  // namespace veldt::tests
