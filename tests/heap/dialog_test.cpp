// What the default handler shows, and what it makes of the answers; recursion and the thread table,
// which show boxes of their own. Here a host installs the box.
#include <veldt20/host.h>

#include <barrier>
#include <mutex>
#include <thread>

#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

struct Shown {
    std::string text;
    unsigned style;
    bool operator==(const Shown&) const = default;
};

class Dialogs : public testing::Test {
  protected:
    Dialogs() {
        shown.clear();
        answers.clear();
        previous_ = PoolSetErrorHandler(DefaultErrorHandler);
        XHostSetMessageBox([](const char* text, const char* caption, unsigned style) {
            const std::scoped_lock lock(mutex);
            EXPECT_STREQ(caption, "Tessera Library");
            shown.push_back({text, style});
            return shown.size() <= answers.size() ? answers[shown.size() - 1] : 1;
        });
    }
    ~Dialogs() override {
        XHostSetMessageBox(nullptr);
        PoolSetErrorHandler(previous_);
        EXPECT_EQ(heapRegistry.threadCount, 0U);
    }

    static inline std::mutex mutex;
    static inline std::vector<Shown> shown;
    static inline std::vector<int> answers;

  private:
    HeapErrorHandler previous_;
};

constexpr unsigned kRetry = 0x2112;
constexpr unsigned kPlain = 0x2111;
const std::string kOutOfMemory = "Out of memory.  Please free some memory, then choose retry.";
const std::string kRecursion = "\n\rTessera error handler recursively re-entered.\n\r";
const std::string kTableFull = "\n\rMemory errors in too many threads concurrently.\n\r";

TEST_F(Dialogs, TextOfEachError) {
    const std::pair<int, std::string> rows[] = {
        {-1, "MEM_INTERNAL_ERROR"}, {0, "MEM_INTERNAL_ERROR"},       {1, "MEM_INTERNAL_ERROR"},
        {3, "MEM_BLOCK_TOO_BIG"},   {4, "MEM_ALLOC_ZERO"},           {5, "MEM_RESIZE_FAILED"},
        {6, "MEM_LOCK_ERROR"},      {7, "MEM_EXCEEDED_CEILING"},     {8, "MEM_TOO_MANY_PAGES"},
        {9, "MEM_TOO_MANY_TASKS"},  {10, "MEM_BAD_MEM_POOL"},        {11, "MEM_BAD_BLOCK"},
        {12, "MEM_BAD_FREE_BLOCK"}, {13, "MEM_BAD_HANDLE"},          {14, "MEM_BAD_POINTER"},
        {15, "MEM_INTERNAL_ERROR"}, {1 << 30, "MEM_INTERNAL_ERROR"},
    };
    for (const auto& [error, text] : rows) EXPECT_EQ(HeapErrorText(error), text);
}

TEST_F(Dialogs, Answers) {
    struct Row {
        int error;
        std::vector<int> answers;
        int verdict;
        std::vector<Shown> boxes;
    };
    const std::string bad = HeapErrorText(MEM_BAD_MEM_POOL);
    const Row rows[] = {
        {2, {4}, 1, {{kOutOfMemory, kRetry}}},
        {2, {5}, 0, {{kOutOfMemory, kRetry}}},
        {10, {1}, 0, {{bad, kPlain}}},
        {2, {0, 4}, 1, {{kOutOfMemory, kRetry}, {kOutOfMemory, 0x1112}}},
        {10, {99, -1}, 0, {{bad, kPlain}, {bad, 0x1111}}},
    };
    for (const Row& row : rows) {
        shown.clear();
        answers = row.answers;
        EXPECT_EQ(HeapErrorDispatch(nullptr, row.error), row.verdict);
        EXPECT_EQ(shown, row.boxes) << row.error;
    }
    XHostSetMessageBox(nullptr);
    EXPECT_EQ(HeapErrorDispatch(nullptr, 2), 0) << "no box can be shown";
}

TEST_F(Dialogs, AbortEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [error, answer] : {std::pair{2, 3}, {10, 2}}) {
        EXPECT_EXIT(
            {
                answers = {answer};
                HeapErrorDispatch(nullptr, error);
            },
            testing::KilledBySignal(SIGABRT), "");
    }
}

TEST_F(Dialogs, RecursionIsShownOnce) {
    static TestPool* pool;
    TestPool made(20, PoolSerialised);
    pool = &made;
    PoolSetErrorHandler([](const HeapErrorRecord*) -> std::int32_t {
        EXPECT_EQ(PoolAlloc(*pool, 0, 0), nullptr);
        EXPECT_EQ(HeapErrorDispatch(nullptr, 2), 0);
        return 9;
    });
    EXPECT_EQ(HeapErrorDispatch(made, 3), 9) << "the outer verdict stands";
    EXPECT_EQ(shown, (std::vector<Shown>{{kRecursion, kPlain}, {kRecursion, kPlain}}));
    EXPECT_TRUE(ErrorDepthEnter(0) == false && ErrorDepthEnter(0) && ErrorDepthEnter(0));
    EXPECT_EQ(shown.size(), 3U) << "deeper still, nothing is shown";
    for (int i = 0; i < 3; ++i) ErrorDepthLeave();
}

std::barrier<>* tableBarrier;

TEST_F(Dialogs, The26thThreadIsTurnedAway) {
    std::barrier inside(26);
    tableBarrier = &inside;
    PoolSetErrorHandler([](const HeapErrorRecord*) -> std::int32_t {
        tableBarrier->arrive_and_wait();
        tableBarrier->arrive_and_wait();
        return 6;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 25; ++i) {
        threads.emplace_back([] { EXPECT_EQ(HeapErrorDispatch(nullptr, 4), 6); });
    }
    inside.arrive_and_wait();
    EXPECT_EQ(HeapErrorDispatch(nullptr, 4), 0);
    EXPECT_EQ(shown, (std::vector<Shown>{{kTableFull, kPlain}}));
    EXPECT_EQ(heapRegistry.threadCount, 25U);
    inside.arrive_and_wait();
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
