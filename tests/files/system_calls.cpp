#include "files/system_calls.h"

#include <dlfcn.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

namespace veldt::tests {

ScriptedCalls scripted;

namespace {

// True if the call fails. Otherwise `size` may have become smaller.
bool Meets(std::deque<int>& script, std::size_t& size) {
    if (script.empty()) return false;
    const int step = script.front();
    script.pop_front();
    if (step < 0) size = std::min(size, static_cast<std::size_t>(-step));
    if (step > 0) errno = step;
    return step > 0;
}

bool Fails(std::deque<int>& script) {
    std::size_t unused = 0;
    return Meets(script, unused);
}

template <class Function>
Function* Real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

}  // namespace veldt::tests

using namespace veldt::tests;

extern "C" {

ssize_t pread64(int file, void* buffer, size_t size, off64_t position);
ssize_t pwrite64(int file, const void* buffer, size_t size, off64_t position);
int ftruncate64(int file, off64_t size) noexcept;
int flock(int file, int operation) noexcept;
int open64(const char* path, int flags, ...);
int close(int file);

ssize_t pread64(int file, void* buffer, size_t size, off64_t position) {
    if (Meets(scripted.reads, size)) return -1;
    return Real(pread64, "pread64")(file, buffer, size, position);
}

ssize_t pwrite64(int file, const void* buffer, size_t size, off64_t position) {
    if (Meets(scripted.writes, size)) return -1;
    return Real(pwrite64, "pwrite64")(file, buffer, size, position);
}

int ftruncate64(int file, off64_t size) noexcept {
    return Fails(scripted.truncations) ? -1 : Real(ftruncate64, "ftruncate64")(file, size);
}

int flock(int file, int operation) noexcept {
    if (scripted.beforeLock) std::exchange(scripted.beforeLock, nullptr)();
    return Fails(scripted.locks) ? -1 : Real(flock, "flock")(file, operation);
}

int open64(const char* path, int flags, ...) {
    if (Fails(scripted.openings)) return -1;
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Real(open64, "open64")(path, flags, mode);
}

// Whatever it reports, the descriptor is gone.
int close(int file) {
    const int result = Real(close, "close")(file);
    return Fails(scripted.closings) ? -1 : result;
}
}
