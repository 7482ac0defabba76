#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "platform/platform.h"

namespace {

using namespace veldt::platform;

TEST(Locks, OneThreadAtATimeHoweverOftenItEnters) {
    static CRITICAL_SECTION section;  // never initialised but by being static
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&counter] {
            for (int round = 0; round < kRounds; ++round) {
                EnterCriticalSection(&section);
                EnterCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
                if (round % 1000 == 0) std::this_thread::yield();
                ++counter;
                LeaveCriticalSection(&section);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counter, 2L * kThreads * kRounds);
    EXPECT_EQ(section.owner, 0u);
    EXPECT_EQ(section.waiters, 0u);
}

TEST(Threads, HaveNumbersAndLastErrorsOfTheirOwn) {
    SetLastError(77);
    std::vector<DWORD> numbers(8);
    std::vector<std::thread> threads;
    for (DWORD& number : numbers) {
        threads.emplace_back([&number] {
            EXPECT_EQ(GetLastError(), 0u);
            SetLastError(5);
            number = GetCurrentThreadId();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(GetLastError(), 77u);
    std::set<DWORD> others(numbers.begin(), numbers.end());
    others.insert({0, GetCurrentThreadId()});
    EXPECT_EQ(others.size(), 10u);
}

}  // namespace
