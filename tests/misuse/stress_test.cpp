// The stress build: what a program that keeps the address in a handle reads there.
#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "heap/block_life.h"
#include "memory/handles.h"

namespace {

using namespace veldt::heap;
static_assert(kStress);

constexpr std::int32_t kSizes[] = {1, 40, 200, 4000, 9000};

class Stress : public veldt::tests::WithInstance {};

char** Line(std::int32_t size) {
    char** h = _XNewHandle(size);
    std::memset(*h, 'x', static_cast<std::size_t>(size));
    return h;
}

bool IsWhole(char** h, std::int32_t size) {
    return std::count(*h, *h + size, 'x') == size;
}

/// Nothing is left of the line, and where the heap has no record of its own there is the fill.
bool IsNonsense(const char* stale, std::int32_t size, int fill) {
    const auto filled = std::count(stale, stale + size, static_cast<char>(fill));
    return std::count(stale, stale + size, 'x') == 0 && (size < 40 || filled > size / 4);
}

TEST_F(Stress, EveryCallThatMayMoveBlocksMovesAll) {
    char** resized = Line(50);
    char** fixed = Line(60);
    const std::vector<std::function<void()>> calls = {
        [] { _XNewHandle(30); },        [] { _XNewHandleClear(7000); },
        [] { _XNewPtr(30); },           [&] { _XSetHandleSize(resized, 60); },
        [&] { XEmptyHandle(resized); }, [&] { XHUnlock(fixed); },
        [] { XMemCompactHeap(); },
    };
    for (std::size_t number = 0; number < calls.size(); ++number) {
        SCOPED_TRACE(number);
        char** lines[std::size(kSizes)];
        const char* before[std::size(kSizes)];
        std::transform(std::begin(kSizes), std::end(kSizes), lines, Line);
        XMoveHHi(fixed);
        for (std::size_t i = 0; i < std::size(lines); ++i) before[i] = *lines[i];
        calls[number]();
        for (std::size_t i = 0; i < std::size(lines); ++i) {
            EXPECT_NE(*lines[i], before[i]) << kSizes[i];
            EXPECT_TRUE(IsWhole(lines[i], kSizes[i])) << kSizes[i];
            XDisposeHandle(lines[i]);
        }
    }
}

TEST_F(Stress, AStaleAddressReadsAsNonsense) {
    for (const std::int32_t size : {40, 200, 4000}) {
        char** line = Line(size);
        const char* stale = *line;
        _XNewPtr(10);
        EXPECT_TRUE(IsNonsense(stale, size, kMovedFill)) << size;
        for (int calls = 0; calls < 4; ++calls) {
            _XNewPtr(10);
            EXPECT_NE(*line, stale) << size << ": back after " << calls << " calls";
        }
        stale = *line;
        XDisposeHandle(line);
        EXPECT_TRUE(IsNonsense(stale, size, kFreedFill)) << size;
        EXPECT_TRUE(IsNonsense(*_XNewHandle(size), size, kFreshFill)) << size;
    }
}

TEST_F(Stress, ALockHoldsAgainstAllButTheHandlesOwnResize) {
    for (const std::int32_t size : {500, 9000}) {
        char** line = Line(size);
        XHLock(line);
        const char* stays = *line;
        _XNewHandle(30);
        XMemCompactHeap();
        EXPECT_EQ(*line, stays);
        _XSetHandleSize(line, size - 1);
        EXPECT_NE(*line, stays);
        EXPECT_TRUE(IsWhole(line, size - 1));
        EXPECT_EQ(XHGetState(line), 1);
    }
}

}  // namespace
