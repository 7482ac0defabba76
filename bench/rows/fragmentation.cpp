// What stays resident of a fragmented heap, and how fast compaction moves blocks.
#include <veldt20/inspect.h>

#include <memory>

#include "rows/resident.h"
#include "suite/allocator_in_use.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

void CompactOurs() {
    XMemCompactHeap();
}

/// The process can't be used for a second round: what the first one left would count.
template <class Way>
Setup Fragmenting(void (*giveBack)()) {
    return [=]() -> Round {
        auto blocks = std::make_shared<std::vector<typename Way::Block>>(kFragmentBlocks);
        return [=] {
            const double before = ResidentBytes();
            const double live = Fragment<Way>(*blocks, 10);
            giveBack();
            return (ResidentBytes() - before) / live;
        };
    };
}

constexpr std::uint32_t kHalf = 2;

double MovedBytes(const XHeapMoment& before) {
    XHeapMoment after;
    XHeapDifference difference;
    if (after.Capture() == 0 || XHeapCompare(before, after, &difference) == 0) std::exit(2);
    return static_cast<double>(difference.movedBytes);
}

/// Gigabytes that changed their place, a second.
double Compact() {
    std::vector<char**> blocks(kFragmentBlocks);
    Fragment<Handles>(blocks, kHalf);
    XHeapMoment before;
    if (before.Capture() == 0) std::exit(2);
    const double start = ProcessorTime();
    XMemCompactHeap();
    const double taken = ProcessorTime() - start;
    const double moved = MovedBytes(before);
    for (char** h : blocks) {
        if (h != nullptr) XDisposeHandle(h);
    }
    return moved / taken;
}

Round CopyPlainly() {
    constexpr std::size_t kBytes = 32U << 20;
    auto source = std::make_shared<std::vector<char>>(kBytes, 'x');
    auto target = std::make_shared<std::vector<char>>(kBytes, 'y');
    return [=] {
        return static_cast<double>(kBytes) / NanosecondsOf(1, [&] {
                   std::memcpy(target->data(), source->data(), kBytes);
                   Touch(target->data());
               });
    };
}

}  // namespace

Section Fragmentation() {
    Row row{"handles, nine in ten disposed",
            {0, 0, 1.35},
            {Fragmenting<Handles>(CompactOurs), Fragmenting<CLibrary>(GiveBack)},
            Unit::kTimesLive,
            true};
    row.processes = 3;
    row.rounds = 1;
    return {"Resident memory over live bytes",
            "64 MB of blocks of 16 to 2000 bytes, nine in ten disposed at random; then each gives "
            "back what it can in its own way (XMemCompactHeap, malloc_trim, mi_collect, "
            "arena purge, ReleaseFreeMemory).",
            Allocators(),
            {row},
            true};
}

Section Compaction() {
    Row row{"XMemCompactHeap, half disposed",
            {3.0},
            {[] { return Compact; }, CopyPlainly},
            Unit::kGigabytesPerSecond,
            true};
    return {"Compaction",
            "Bytes that change their place in a heap of 64 MB of blocks of 16 to 2000 bytes, half "
            "of them disposed at random, against one memcpy of 32 MB.",
            {{"VELDT20", ""}, {"memcpy", ""}},
            {row},
            true};
}

}  // namespace veldt::bench
