// A heap fragmented on purpose, and what of it is resident.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "rows/ways.h"

namespace veldt::bench {

/// Bytes, from the page tables: the quick counters are off by up to some hundred kilobytes.
inline double ResidentBytes() {
    std::FILE* file = std::fopen("/proc/self/smaps_rollup", "r");
    char line[256];
    long long kilobytes = -1;
    while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr && kilobytes < 0) {
        std::sscanf(line, "Rss: %lld kB", &kilobytes);
    }
    if (kilobytes < 0) {
        std::perror("/proc/self/smaps_rollup");
        std::exit(2);
    }
    std::fclose(file);
    return static_cast<double>(kilobytes) * 1024;
}

inline constexpr std::size_t kFragmentBlocks = (64U << 20) / 1008;

/// Of the block with this number: as good as random, and known without a record.
inline std::uint32_t FragmentSize(std::size_t number) {
    return 16 + (static_cast<std::uint32_t>(number) * 0x9E3779B1U >> 7) % 1985;
}

/// Fills all of `blocks` with blocks of 16 to 2000 bytes, every byte written, and disposes all but
/// one in `oneIn` at random, whose places become null. Gives the live bytes.
template <class Way>
double Fragment(std::vector<typename Way::Block>& blocks, std::uint32_t oneIn) {
    double live = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        blocks[i] = Way::New(FragmentSize(i));
        std::memset(Way::Bytes(blocks[i]), 1, FragmentSize(i));
        live += FragmentSize(i);
    }
    std::mt19937 random(7);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (random() % oneIn != 0) {
            live -= FragmentSize(i);
            Way::Dispose(blocks[i]);
            blocks[i] = nullptr;
        }
    }
    return live;
}

}  // namespace veldt::bench
