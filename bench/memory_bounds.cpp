// Measures what the memory calls promise beyond speed alone, each figure beside its bound: cost at
// scale, cost of locks, 3 GB of live blocks, pages that come and go, and what stays resident after
// a heap has been fragmented and compacted. Names on the command line choose among them.
#include <malloc.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <random>
#include <string_view>
#include <vector>

#include "platform/posix/faults.h"
#include "rows/resident.h"
#include "rows/ways.h"
#include "suite/work.h"

namespace {

using namespace veldt::bench;
using Clock = std::chrono::steady_clock;

int missed = 0;

void Report(const char* what, double figure, double bound) {
    const bool met = figure <= bound;
    missed += met ? 0 : 1;
    std::printf("%-58s %8.2f  at most %6.2f  %s\n", what, figure, bound, met ? "met" : "MISSED");
    std::fflush(stdout);
}

double Median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

double Seconds(const std::function<void()>& work) {
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The median of the ratios of two works, run in turn.
double Ratio(const std::function<void()>& ours, const std::function<void()>& theirs, int rounds) {
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i) {
        const double a = Seconds(ours);
        ratios.push_back(a / Seconds(theirs));
    }
    return Median(ratios);
}

void MeasureSmallPair() {
    constexpr int kPairs = 1'000'000;
    char* other = _XNewPtr(16);
    const auto ours = [] {
        for (int i = 0; i < kPairs; ++i) {
            char* p = _XNewPtr(16);
            Touch(p);
            XDisposePtr(p);
        }
    };
    const auto theirs = [] {
        for (int i = 0; i < kPairs; ++i) {
            void* p = std::malloc(16);
            Touch(p);
            std::free(p);
        }
    };
    Report("new and dispose of 16 bytes, over malloc and free", Ratio(ours, theirs, 15), 1.0);
    XDisposePtr(other);
}

void MeasureLocks() {
    constexpr int kPairs = 1'000'000;
    char** h = _XNewHandle(100);
    const auto ours = [h] {
        for (int i = 0; i < kPairs; ++i) {
            XHLock(h);
            XHUnlock(h);
        }
    };
    std::recursive_mutex mutex;
    const auto theirs = [&mutex] {
        for (int i = 0; i < kPairs; ++i) {
            mutex.lock();
            Touch(&mutex);
            mutex.unlock();
        }
    };
    Report("lock and unlock of a handle, over std::recursive_mutex", Ratio(ours, theirs, 15), 3.0);
    XDisposeHandle(h);
}

/// A live set whose blocks are replaced at random, the same sequence for every way to hold them.
template <class Way>
class LiveSet {
  public:
    LiveSet(std::uint64_t bytes, std::uint32_t smallest, std::uint32_t largest)
        : smallest_(smallest), span_(largest - smallest + 1) {
        for (std::uint64_t live = 0; live < bytes;) {
            const std::uint32_t size = NextSize();
            blocks_.push_back(Way::New(size));
            live += size;
        }
    }
    ~LiveSet() {
        for (const auto block : blocks_) {
            Way::Dispose(block);
        }
    }
    LiveSet(const LiveSet&) = delete;
    LiveSet& operator=(const LiveSet&) = delete;

    void Replace(int times) {
        for (int i = 0; i < times; ++i) {
            typename Way::Block& block = blocks_[random_() % blocks_.size()];
            Way::Dispose(block);
            block = Way::New(NextSize());
        }
    }

  private:
    std::uint32_t NextSize() { return smallest_ + static_cast<std::uint32_t>(random_() % span_); }

    std::mt19937 random_{1};
    std::uint32_t smallest_;
    std::uint32_t span_;
    std::vector<typename Way::Block> blocks_;
};

/// Our cost over the C library's for random replacement with `bytes` live.
template <class Way>
double CostAt(std::uint64_t bytes, std::uint32_t smallest, std::uint32_t largest) {
    constexpr int kReplacements = 300'000;
    LiveSet<Way> ours(bytes, smallest, largest);
    LiveSet<CLibrary> theirs(bytes, smallest, largest);
    ours.Replace(kReplacements);
    theirs.Replace(kReplacements);
    return Ratio([&] { ours.Replace(kReplacements); }, [&] { theirs.Replace(kReplacements); }, 7);
}

template <class Way>
void MeasureScaleOf(const char* what, std::uint32_t smallest, std::uint32_t largest) {
    const double small = CostAt<Way>(16U << 20, smallest, largest);
    const double large = CostAt<Way>(1U << 30, smallest, largest);
    std::printf("  %s: %.2f of the C library at 16 MB live, %.2f at 1 GB\n", what, small, large);
    Report(what, large / small, 1.25);
}

void MeasureScale() {
    MeasureScaleOf<Pointers>("scale of fixed blocks (18 bytes), 1 GB over 16 MB", 18, 18);
    MeasureScaleOf<Pointers>("scale of variable-size blocks (19 to 500)", 19, 500);
    MeasureScaleOf<Handles>("scale of relocatable blocks (19 to 500)", 19, 500);
}

void MeasureThreeGigabytes() {
    constexpr std::uint64_t kBytes = 3ULL << 30;
    std::vector<char*> blocks;
    std::uint64_t live = 0;
    int failures = 0;
    for (std::uint32_t i = 0; live < kBytes && failures == 0; ++i) {
        const std::int32_t size = i % 16 == 0 ? 20'000 : 1000 + static_cast<std::int32_t>(i % 1000);
        char* block = _XNewPtr(size);
        failures += block == nullptr ? 1 : 0;
        if (block != nullptr) {
            blocks.push_back(block);
            live += static_cast<std::uint64_t>(size);
        }
    }
    std::printf("  3 GB live: %zu blocks, footprint %.2f GB\n", blocks.size(),
                XHeapFootprint() / 1e9);
    Report("failures on the way to 3 GB of live blocks", failures, 0);
    for (char* block : blocks) {
        XDisposePtr(block);
    }
}

void MeasureComingAndGoing() {
    using veldt::platform::faults::CountAddressSpace;
    constexpr int kRounds = 10'000;
    constexpr std::int32_t kSizes[] = {16, 1000, 8000, 100'000, 1'000'000};
    for (const std::int32_t size : kSizes) {
        XDisposePtr(_XNewPtr(size));
    }
    const std::uint64_t before = CountAddressSpace().systemCalls;
    for (int i = 0; i < kRounds; ++i) {
        for (const std::int32_t size : kSizes) {
            XDisposePtr(_XNewPtr(size));
        }
    }
    Report("system calls for 50,000 pages that come and go",
           static_cast<double>(CountAddressSpace().systemCalls - before), 0);
}

void FragmentHandles() {
    std::vector<char**> blocks(kFragmentBlocks);
    const double before = ResidentBytes();
    const double live = Fragment<Handles>(blocks, 10);
    const double seconds = Seconds(XMemCompactHeap);
    const double resident = ResidentBytes() - before;
    XHeapStatistics figures;
    XHeapGetStatistics(&figures);
    const auto pages = static_cast<double>(figures.committed[2]);
    std::printf(
        "  %.2f MB live, %.2f MB in moveable pages, %.2f MB resident, compacted in %.1f ms\n",
        live / 1e6, pages / 1e6, resident / 1e6, seconds * 1e3);
    const std::uint64_t inPages = figures.families[kXMoveableHandle].liveBytes;
    Report("moveable pages over the blocks in them", pages / static_cast<double>(inPages), 1.08);
    Report("resident over live bytes, fragmented and compacted", resident / live, 1.35);
    for (char** h : blocks) {
        if (h != nullptr) {
            XDisposeHandle(h);
        }
    }
}

void FragmentCLibrary() {
    std::vector<void*> blocks(kFragmentBlocks);
    const double before = ResidentBytes();
    const double live = Fragment<CLibrary>(blocks, 10);
    malloc_trim(0);
    std::printf("  the C library, trimmed: %.2f times the live bytes\n",
                (ResidentBytes() - before) / live);
    std::ranges::for_each(blocks, std::free);
}

void MeasureFragmentation() {
    // A small round first, so that the program's own pages are resident before the count.
    std::vector<char**> few(100);
    Fragment<Handles>(few, 10);
    XMemCompactHeap();
    XMemExitInstance();
    XMemInitInstance();
    FragmentHandles();
    FragmentCLibrary();
}

struct Measure {
    const char* name;
    void (*run)();
};
// Fragmentation comes first, while the process holds nothing but itself.
constexpr Measure kMeasures[] = {{"fragmentation", MeasureFragmentation},
                                 {"pair", MeasureSmallPair},
                                 {"locks", MeasureLocks},
                                 {"coming", MeasureComingAndGoing},
                                 {"scale", MeasureScale},
                                 {"3gb", MeasureThreeGigabytes}};

}  // namespace

int main(int count, char** arguments) {
    for (const Measure& measure : kMeasures) {
        bool wanted = count == 1;
        for (int i = 1; i < count; ++i) {
            wanted = wanted || std::string_view(arguments[i]) == measure.name;
        }
        if (wanted) {
            if (XMemInitInstance() == 0) {
                std::fputs("the system has no memory for a heap\n", stderr);
                return 2;
            }
            measure.run();
            XMemExitInstance();
        }
    }
    return missed == 0 ? 0 : 1;
}
