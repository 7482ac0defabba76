#include "suite/work.h"

namespace veldt::bench {

std::vector<Contestant> Allocators() {
    return {{"VELDT20", ""},
            {"C library", ""},
            {"mimalloc", "libmimalloc.so.2"},
            {"jemalloc", "libjemalloc.so.2"},
            {"tcmalloc", "libtcmalloc_minimal.so.4"}};
}

std::vector<Section> AllSections() {
    return {Pairs(),         LonePairs(),   LiveSets(),      Growing(),    Traces(),
            Locking(),       Compaction(),  Fragmentation(), Units(),      Strings(),
            Searching(),     Editing(),     Bytes(),         FixedPoint(), NumbersToText(),
            TextToNumbers(), Collections(), Files()};
}

}  // namespace veldt::bench
