// Pairs of new and dispose: among other blocks, and of a block that is alone.
#include <memory>
#include <random>

#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr int kNeighbours = 1000;
constexpr int kBorderOfLarge = 8192;

/// Blocks of the size of the pairs and smaller, with a gap here and there, so that the block of a
/// pair has a place in a page that stays.
template <class Way>
void MakeNeighbours(std::uint32_t size) {
    std::mt19937 random(3);
    std::vector<typename Way::Block> ended;
    for (int i = 0; i < kNeighbours; ++i) {
        const auto block = Way::New(i % 2 == 0 ? std::min<std::uint32_t>(size, 5000)
                                               : 1 + static_cast<std::uint32_t>(random() % 200));
        Touch(block);
        if (i % 20 == 0) ended.push_back(block);
    }
    for (const auto block : ended) {
        Way::Dispose(block);
    }
}

template <class Way>
Setup PairsOf(std::uint32_t size, int neighbours) {
    return [=]() -> Round {
        if (neighbours > 0) MakeNeighbours<Way>(size);
        const int times = size < kBorderOfLarge ? 300'000 : 50'000;
        return [=] {
            return NanosecondsOf(times, [=] {
                const auto block = Way::New(size);
                Touch(block);
                Way::Dispose(block);
            });
        };
    };
}

std::string SizeText(std::uint32_t size) {
    if (size < 8192) return std::to_string(size) + " bytes";
    return size < 1 << 20 ? std::to_string(size >> 10) + " KB" : std::to_string(size >> 20) + " MB";
}

template <class Way>
Row PairRow(const char* kind, std::uint32_t size, Bound bound, int neighbours) {
    return {std::string(kind) + " of " + SizeText(size),
            bound,
            {PairsOf<Way>(size, neighbours), PairsOf<CLibrary>(size, neighbours)}};
}

}  // namespace

Section Pairs() {
    Section section{"New and dispose",
                    "A block is made and disposed at once, while a thousand others live, with gaps "
                    "between them.",
                    Allocators(),
                    {},
                    true};
    for (const std::uint32_t size : {8U, 16U, 100U, 1000U, 4000U, 8U << 10, 64U << 10, 1U << 20}) {
        const Bound bound = size < kBorderOfLarge ? Bound{0.8, 1.3} : Bound{1.5};
        section.rows.push_back(PairRow<Pointers>("pointer", size, bound, kNeighbours));
        section.rows.back().headline = size == 100;
    }
    for (const std::uint32_t size : {8U, 16U, 100U, 1000U, 4000U, 8U << 10, 64U << 10, 1U << 20}) {
        const Bound bound = size >= 16 && size < kBorderOfLarge ? Bound{1.3} : Bound{};
        section.rows.push_back(PairRow<Handles>("handle", size, bound, kNeighbours));
        section.rows.back().headline = size == 100;
    }
    return section;
}

Section LonePairs() {
    return {
        "New and dispose of a lone block",
        "Nothing else lives in the heap, so that the block's page comes and goes each time.",
        Allocators(),
        {PairRow<Pointers>("pointer", 16, {40}, 0), PairRow<Pointers>("pointer", 100, {10}, 0),
         PairRow<Pointers>("pointer", 1000, {10}, 0), PairRow<Pointers>("pointer", 4000, {10}, 0)},
        true};
}

}  // namespace veldt::bench
