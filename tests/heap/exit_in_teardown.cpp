// A process that ends while one of its threads takes the heap down ends as it was told to.
#include <veldt20/memory.h>

#include <atomic>
#include <thread>

#include "heap/locks.h"

namespace {

std::atomic<bool> ended = false;

/// The last of all: the thread goes on while everything else that ends with the process does.
[[gnu::destructor(101)]] void LetTheThreadEnd() {
    while (!ended) std::this_thread::yield();
}

}  // namespace

int main() {
    if (XMemInitInstance() != 1) return ended = true;
    for (int i = 0; i < 10'000; ++i) {
        if (_XNewPtr(5000) == nullptr) return ended = true;
    }
    std::thread([] {
        XMemExitInstance();
        ended = true;
    }).detach();
    // The thread holds this lock from the first step to the last.
    while (!ended && veldt::heap::RegistryLock.TryTake()) veldt::heap::RegistryLock.Release();
    return 0;
}
