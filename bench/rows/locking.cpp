// Holding a handle's block in its place.
#include <mutex>

#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr int kPairs = 500'000;

Round LockHandle() {
    char** h = _XNewHandle(100);
    return [h] {
        return NanosecondsOf(kPairs, [h] {
            XHLock(h);
            Touch(*h);
            XHUnlock(h);
        });
    };
}

Round LockMutex() {
    return [] {
        std::recursive_mutex mutex;
        return NanosecondsOf(kPairs, [&mutex] {
            mutex.lock();
            Touch(&mutex);
            mutex.unlock();
        });
    };
}

}  // namespace

Section Locking() {
    return {"Lock and unlock",
            "A handle's block is held in its place and let go.",
            {{"VELDT20", ""}, {"std::recursive_mutex", ""}},
            {{"XHLock and XHUnlock", {3.0}, {LockHandle, LockMutex}}},
            true};
}

}  // namespace veldt::bench
