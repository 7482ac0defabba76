// Runs a trace over a keeper: timed passes first, then one that takes the figures, with every byte
// verified where that was asked for.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "trace.h"

struct Figures {
    std::uint64_t operations = 0;
    double nsPerOperation = 0;  ///< the median of the timed passes
    std::uint64_t peakLiveBytes = 0;
    std::uint64_t peakFootprint = 0;
    std::uint64_t liveBytes = 0;
    std::uint64_t footprint = 0;
    std::uint64_t footprintAfterCompaction = 0;
    double compactionSeconds = 0;
    std::uint64_t mismatches = 0;
};

struct Settings {
    std::uint32_t repeat = 1;
    bool verify = false;
    std::function<void(std::uint32_t pass, std::uint32_t passes)> progress;
    std::function<void()> beforeCompaction;
    std::function<void()> afterCompaction;
};

/// Gives an empty text, or why the replay could not go on.
template <class Keeper>
std::string Replay(const Trace& trace, const Settings& settings, Figures& figures);
