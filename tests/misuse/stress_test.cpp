// The stress build: what a program that keeps the address in a handle reads there.
#include <gtest/gtest.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "heap/block_life.h"

namespace {

using namespace veldt::heap;
static_assert(kStress);

constexpr std::int32_t kSizes[] = {1, 40, 200, 4000, 9000};

class Stress : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(XMemInitInstance(), 1); }
    void TearDown() override {
        char message[200];
        EXPECT_EQ(XHeapCheck(message, sizeof message), 1) << message;
        XMemExitInstance();
    }
};

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
    char* pointer = _XNewPtr(100);
    char** resized = Line(50);
    char** fixed = Line(60);
    const std::vector<std::function<void()>> calls = {
        [] { _XNewHandle(30); },        [] { _XNewHandleClear(7000); },
        [] { _XNewPtr(30); },           [&] { _XSetHandleSize(resized, 60); },
        [&] { XEmptyHandle(resized); }, [&] { XHUnlock(fixed); },
        [] { XMemCompactHeap(); },
    };
    for (const auto& call : calls) {
        std::vector<char**> lines;
        for (const std::int32_t size : kSizes) lines.push_back(Line(size));
        XMoveHHi(fixed);
        std::vector<const char*> before;
        for (char** line : lines) before.push_back(*line);
        const auto number = &call - calls.data();
        call();
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_NE(*lines[i], before[i]) << "call " << number << " size " << kSizes[i];
            EXPECT_TRUE(IsWhole(lines[i], kSizes[i])) << "call " << number;
            XDisposeHandle(lines[i]);
        }
    }
    XDisposePtr(pointer);
}

TEST_F(Stress, AStaleAddressReadsAsNonsense) {
    for (const std::int32_t size : {40, 200, 4000}) {
        char** line = Line(size);
        char** other = Line(size);
        const char* stale = *line;
        const char* otherStale = *other;
        _XNewPtr(10);
        EXPECT_TRUE(IsNonsense(stale, size, kMovedFill)) << size;
        EXPECT_TRUE(IsNonsense(otherStale, size, kMovedFill)) << size;
        for (int calls = 0; calls < 4; ++calls) {
            _XNewPtr(10);
            EXPECT_NE(*line, stale) << size << ": back after " << calls << " calls";
        }
        stale = *line;
        XDisposeHandle(line);
        EXPECT_TRUE(IsNonsense(stale, size, kFreedFill)) << size;
        char** fresh = _XNewHandle(size);
        EXPECT_TRUE(IsNonsense(*fresh, size, kFreshFill)) << size;
    }
}

TEST_F(Stress, ALockHoldsAgainstAllButTheHandlesOwnResize) {
    char** line = Line(500);
    char** large = Line(9000);
    XHLock(line);
    XHLock(large);
    const char* stays = *line;
    const char* largeStays = *large;
    _XNewHandle(30);
    XMemCompactHeap();
    EXPECT_EQ(*line, stays);
    EXPECT_EQ(*large, largeStays);
    _XSetHandleSize(line, 400);
    _XSetHandleSize(large, 8999);
    EXPECT_NE(*line, stays);
    EXPECT_NE(*large, largeStays);
    EXPECT_TRUE(IsWhole(line, 400) && IsWhole(large, 8999));
    EXPECT_EQ(XHGetState(line), 1);
}

}  // namespace
