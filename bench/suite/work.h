// How work is described to the suite. A section is a list of rows that share their contestants; a
// row says how each of them does its work. Sections live in rows/, one file a subject.
#pragma once

#include <time.h>

#include <functional>
#include <string>
#include <vector>

#include "suite/results.h"

namespace veldt::bench {

/// One round of a contestant's work, some milliseconds of it. Gives the figure in the row's unit.
using Round = std::function<double()>;
/// Makes ready for the rounds. Runs in a process of its own, which does nothing else.
using Setup = std::function<Round()>;

struct Contestant {
    std::string name;
    std::string preload;  ///< the allocator's shared object; empty for none
};

struct Row {
    std::string name;
    Bound bound;
    /// In the contestants' order, ours first. The last one serves all that follow, which differ by
    /// what is preloaded.
    std::vector<Setup> ways;
    Unit unit = Unit::kNanoseconds;
    bool headline = false;
    /// Of each contestant, one after the other: at which addresses a process has its memory can be
    /// worth a third of a short call.
    int processes = 7;
    /// That each of them is asked for. After the first few a heap has learnt how much memory comes
    /// and goes; with one round more or fewer of those the figure changes by half.
    int rounds = 8;
};

struct Section {
    std::string title;
    std::string note;
    std::vector<Contestant> contestants;
    std::vector<Row> rows;
    bool ofMemory = false;  ///< measured with 4-byte pointers too
};

/// The C library and the allocators that stand in for it, behind this library.
std::vector<Contestant> Allocators();

Section Pairs();
Section LonePairs();
Section LiveSets();
Section Growing();
Section Traces();
Section Fragmentation();
Section Units();
Section Compaction();
Section Locking();
Section Strings();
Section Searching();
Section Editing();
Section Bytes();
Section FixedPoint();
Section NumbersToText();
Section TextToNumbers();
Section Collections();
Section Files();

/// All of them, in the order in which they are shown.
std::vector<Section> AllSections();

/// Keeps the compiler from knowing what the bytes are, or that nobody looks at them.
inline void Touch(const void* bytes) {
    asm volatile("" : : "r"(bytes) : "memory");
}

/// The processor time that this thread has used, in nanoseconds. The time in which others had the
/// processor isn't in it.
inline double ProcessorTime() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Nanoseconds a call, of `times` calls in a row.
template <class Call>
double NanosecondsOf(int times, Call&& call) {
    const double start = ProcessorTime();
    for (int i = 0; i < times; ++i) {
        call();
    }
    return (ProcessorTime() - start) / times;
}

}  // namespace veldt::bench
