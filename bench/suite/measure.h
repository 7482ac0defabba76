// Measures rows: each contestant in a process of its own, all asked for a round in turn.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "suite/work.h"

namespace veldt::bench {

/// A build of this program, whose workers do the work.
struct Build {
    std::string program;
    std::string suffix;  ///< of the titles of its sections
    std::string note;    ///< that their notes end with
    bool ofMemoryAlone;  ///< of the sections those on memory only
    bool withPreloads;   ///< whether allocators to preload exist for it
};

struct Choice {
    std::vector<std::string>
        names;           ///< a row is wanted if its title or name holds one; all if none
    bool quick = false;  ///< one process and few rounds: shows that all works
};

struct Progress {
    std::function<void(const MeasuredSection&)> beginSection;  ///< still without rows
    std::function<void(const MeasuredSection&, const Measured&)> row;
};

/// Measures what is wanted of `build`. `allocators` collects their names and versions.
std::vector<MeasuredSection> MeasureAll(const Build& build, const Choice& choice,
                                        const Progress& progress,
                                        std::set<std::string>& allocators);

}  // namespace veldt::bench
