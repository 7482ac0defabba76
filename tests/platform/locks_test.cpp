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
    CRITICAL_SECTION section{};
    std::multiset<DWORD> numbers = {0, GetCurrentThreadId()};
    std::vector<std::thread> threads;
    for (int at = 0; at < 8; ++at) {
        threads.emplace_back([&] {
            EXPECT_EQ(GetLastError(), 0u);
            SetLastError(5);
            EnterCriticalSection(&section);
            numbers.insert(GetCurrentThreadId());
            LeaveCriticalSection(&section);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(std::set<DWORD>(numbers.begin(), numbers.end()).size(), 10u);
}

}  // namespace
