#include <gtest/gtest.h>

#include <set>

#include "platform/platform.h"
#include "support/threads.h"

namespace {

using namespace veldt::platform;
using veldt::tests::OnThreads;

TEST(Locks, OneThreadAtATimeHoweverOftenItEnters) {
    static CRITICAL_SECTION section;  // never initialised but by being static
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    long counter = 0;
    OnThreads(kThreads, [&counter](int) {
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
    EXPECT_EQ(counter, 2L * kThreads * kRounds);
    EXPECT_EQ(section.owner, 0u);
    EXPECT_EQ(section.waiters, 0u);
}

TEST(Locks, AreTriedWithoutWaiting) {
    static CRITICAL_SECTION section;
    const auto others = [] {
        int taken = 0;
        OnThreads(1, [&taken](int) {
            taken = TryEnterCriticalSection(&section);
            if (taken != 0) LeaveCriticalSection(&section);
        });
        return taken;
    };
    EXPECT_EQ(TryEnterCriticalSection(&section), 1);
    EXPECT_EQ(TryEnterCriticalSection(&section), 1) << "its owner has it already";
    LeaveCriticalSection(&section);
    EXPECT_EQ(others(), 0);
    LeaveCriticalSection(&section);
    EXPECT_EQ(others(), 1);
}

TEST(Threads, HaveNumbersAndLastErrorsOfTheirOwn) {
    SetLastError(77);
    DWORD numbers[8];
    OnThreads(8, [&numbers](int number) {
        EXPECT_EQ(GetLastError(), 0u);
        SetLastError(5);
        numbers[number - 1] = GetCurrentThreadId();
    });
    EXPECT_EQ(GetLastError(), 77u);
    std::set<DWORD> others(std::begin(numbers), std::end(numbers));
    others.insert({0, GetCurrentThreadId()});
    EXPECT_EQ(others.size(), 10u);
}

}  // namespace
