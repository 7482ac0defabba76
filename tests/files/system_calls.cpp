#include "files/system_calls.h"

#include <dlfcn.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace veldt::tests {

ScriptedCalls scripted;

namespace {

// Goes on to the real call, unless the script lets it fail. `size`, one of the arguments, can
// become smaller first.
template <class Function, class... Rest>
auto Run(std::deque<int>& script, std::size_t& size, Function*, const char* name,
         const Rest&... arguments) {
    const int step = script.empty() ? 0 : script.front();
    if (!script.empty()) script.pop_front();
    if (step < 0) size = std::min(size, static_cast<std::size_t>(-step));
    const auto real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    errno = step;
    return step > 0 ? -1 : real(arguments...);
}

std::size_t noSize = 0;

}  // namespace

}  // namespace veldt::tests

using namespace veldt::tests;

extern "C" {

ssize_t pread64(int file, void* buffer, size_t size, off64_t position) {
    return Run(scripted.reads, size, pread64, "pread64", file, buffer, size, position);
}

ssize_t pwrite64(int file, const void* buffer, size_t size, off64_t position) {
    return Run(scripted.writes, size, pwrite64, "pwrite64", file, buffer, size, position);
}

int ftruncate64(int file, off64_t size) {
    return Run(scripted.truncations, noSize, ftruncate64, "ftruncate64", file, size);
}

int flock(int file, int operation) {
    if (scripted.beforeLock) std::exchange(scripted.beforeLock, nullptr)();
    return Run(scripted.locks, noSize, flock, "flock", file, operation);
}

// The mode comes as one of a variable number of arguments, which are passed like any others.
int open64(const char* path, int flags, mode_t mode) {
    return Run(scripted.openings, noSize, open64, "open64", path, flags, mode);
}
}
