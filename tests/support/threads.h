// Work on several threads at once.
#pragma once

#include <thread>
#include <vector>

namespace veldt::tests {

/// Does `work(number)` on a thread for each number from 1 to `count`, and waits for all.
template <class Work>
void OnThreads(int count, Work work) {
    std::vector<std::thread> threads;
    for (int number = 1; number <= count; ++number) threads.emplace_back(work, number);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace veldt::tests
