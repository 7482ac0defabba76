// A live set whose blocks are replaced at random, and one block that grows step by step.
#include <memory>
#include <random>

#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr std::uint32_t kSmallest = 16;
constexpr std::uint32_t kLargest = 2000;
constexpr std::uint32_t kMeanSize = (kSmallest + kLargest) / 2;

/// The same sequence of places and sizes for every way to hold the blocks.
template <class Way>
class LiveSet {
  public:
    explicit LiveSet(std::size_t blocks) : blocks_(blocks) {
        for (auto& block : blocks_) {
            block = Way::New(NextSize());
        }
    }

    /// The steps are drawn before the clock runs.
    double Replace() {
        for (Step& step : steps_) {
            step = {static_cast<std::uint32_t>(random_() % blocks_.size()), NextSize()};
        }
        auto step = steps_.begin();
        return NanosecondsOf(kSteps, [&] {
            auto& block = blocks_[step->place];
            Way::Dispose(block);
            block = Way::New(step->size);
            ++step;
        });
    }

  private:
    static constexpr int kSteps = 20'000;
    struct Step {
        std::uint32_t place;
        std::uint32_t size;
    };

    std::uint32_t NextSize() {
        return kSmallest + static_cast<std::uint32_t>(random_() % (kLargest - kSmallest + 1));
    }

    std::mt19937 random_{1};
    std::vector<typename Way::Block> blocks_;
    std::vector<Step> steps_{kSteps};
};

template <class Way>
Setup Replacing(std::size_t blocks) {
    return [=]() -> Round {
        auto set = std::make_shared<LiveSet<Way>>(blocks);
        return [set] { return set->Replace(); };
    };
}

/// Starts at 16 bytes with a block of another's behind it.
template <class Way>
Round Grow(std::uint32_t last, std::uint32_t step) {
    return [=] {
        constexpr int kBlocks = 20;
        const int steps = static_cast<int>(last / step);
        return NanosecondsOf(kBlocks,
                             [=] {
                                 auto block = Way::New(16);
                                 const auto behind = Way::New(16);
                                 for (std::uint32_t size = step; size <= last; size += step) {
                                     Way::Resize(block, size);
                                     Touch(block);
                                 }
                                 Way::Dispose(block);
                                 Way::Dispose(behind);
                             }) /
               steps;
    };
}

template <class Way>
Setup GrowingTo(std::uint32_t last, std::uint32_t step) {
    return [=] { return Grow<Way>(last, step); };
}

template <class Way>
Row ReplacementRow(std::string name, std::size_t blocks, Bound bound) {
    return {std::move(name), bound, {Replacing<Way>(blocks), Replacing<CLibrary>(blocks)}};
}

template <class Way>
Row GrowthRow(const char* name, std::uint32_t last, std::uint32_t step) {
    return {name, {}, {GrowingTo<Way>(last, step), GrowingTo<CLibrary>(last, step)}};
}

}  // namespace

Section LiveSets() {
    // A page takes 64 KB of address space, of which 32-bit programs have less than 4 GB.
    constexpr std::size_t kMany = (sizeof(void*) == 8 ? 1U << 30 : 1U << 28) / kMeanSize;
    const std::string amount = sizeof(void*) == 8 ? "1 GB live" : "256 MB live";
    Section section{"Replacing blocks of a live set at random",
                    "Blocks of 16 to 2000 bytes; one is disposed and a new one of another size "
                    "made in its place.",
                    Allocators(),
                    {ReplacementRow<Pointers>("pointers, 100,000 live", 100'000, {1.0}),
                     ReplacementRow<Handles>("handles, 100,000 live", 100'000, {}),
                     ReplacementRow<Pointers>("pointers, " + amount, kMany, {}),
                     ReplacementRow<Handles>("handles, " + amount, kMany, {})},
                    true};
    section.rows[0].headline = true;
    for (Row& row : section.rows) {
        row.rounds = 9;
        row.processes = row.name.ends_with("B live") ? 1 : 2;
    }
    return section;
}

Section Growing() {
    return {"Growing a block step by step",
            "One block from 16 bytes upward, with another behind it; the time is that of a step.",
            Allocators(),
            {GrowthRow<Pointers>("pointer, to 4 KB by 16 bytes", 4000, 16),
             GrowthRow<Handles>("handle, to 4 KB by 16 bytes", 4000, 16),
             GrowthRow<Pointers>("pointer, to 256 KB by 1 KB", 256 << 10, 1 << 10),
             GrowthRow<Handles>("handle, to 256 KB by 1 KB", 256 << 10, 1 << 10)},
            true};
}

}  // namespace veldt::bench
