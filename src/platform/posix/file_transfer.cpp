// Moving bytes: each handle's position is kept here, so a transfer is one call of the kernel.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "platform/posix/descriptors.h"
#include "platform/posix/errors.h"
#include "platform/posix/open_files.h"

namespace veldt::platform {

static_assert(sizeof(off_t) == 8, "positions are 64-bit on every target");

namespace {

// The kernel moves a little under 2 GB at a time.
constexpr DWORD kLargestTransfer = 0x40000000;

// Repeats `call(done, rest)` until `count` bytes have moved, one call moves none, or one fails.
// Gives the system's error number.
template <class Call>
DWORD MoveAll(DWORD count, DWORD& done, Attempt attempt, Call call) {
    while (done < count) {
        const DWORD rest = std::min(count - done, kLargestTransfer);
        const ssize_t moved = Uninterrupted([&] { return call(done, rest); });
        if (moved < 0) return ErrorFromErrno(errno, attempt);
        if (moved == 0) break;
        done += static_cast<DWORD>(moved);
    }
    return 0;
}

}  // namespace

BOOL ReadFile(HANDLE handle, void* buffer, DWORD count, DWORD* done, void*) {
    *done = 0;
    OpenFile* file = FindFile(handle);
    if (file == nullptr) return EndCall(ERROR_INVALID_HANDLE);
    if ((file->access & GENERIC_READ) == 0) return EndCall(ERROR_ACCESS_DENIED);
    // Past the largest position there is nothing to read.
    const DWORD reach =
        static_cast<DWORD>(std::min<std::int64_t>(count, INT64_MAX - file->position));
    const DWORD error = MoveAll(reach, *done, Attempt::kReading, [&](DWORD offset, DWORD rest) {
        return pread(file->descriptor, static_cast<char*>(buffer) + offset, rest,
                     file->position + offset);
    });
    file->position += *done;
    return EndCall(error);
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD count, DWORD* done, void*) {
    *done = 0;
    OpenFile* file = FindFile(handle);
    if (file == nullptr) return EndCall(ERROR_INVALID_HANDLE);
    if ((file->access & GENERIC_WRITE) == 0) return EndCall(ERROR_ACCESS_DENIED);
    DWORD error = MoveAll(count, *done, Attempt::kWriting, [&](DWORD offset, DWORD rest) {
        return pwrite(file->descriptor, static_cast<const char*>(buffer) + offset, rest,
                      file->position + offset);
    });
    if (error == 0 && *done < count) error = ERROR_DISK_FULL;
    file->position += *done;
    return EndCall(error);
}

DWORD SetFilePointer(HANDLE handle, LONG distanceLow, LONG* distanceHigh, DWORD method) {
    OpenFile* file = FindFile(handle);
    const DWORD low = static_cast<DWORD>(distanceLow);
    const LONG high = distanceHigh != nullptr ? *distanceHigh : distanceLow >> 31;
    DWORD error = 0;
    if (file == nullptr) {
        error = ERROR_INVALID_HANDLE;
    } else if (method != FILE_BEGIN) {
        error = ERROR_INVALID_PARAMETER;
    } else if (high < 0) {
        error = ERROR_NEGATIVE_SEEK;
    }
    SetLastError(error);
    if (error != 0) return INVALID_SET_FILE_POINTER;
    file->position = static_cast<std::int64_t>(high) << 32 | low;
    return low;
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
    const OpenFile* file = FindFile(handle);
    struct stat status;
    DWORD error = 0;
    if (file == nullptr) {
        error = ERROR_INVALID_HANDLE;
    } else if (fstat(file->descriptor, &status) != 0) {
        error = ErrorFromErrno(errno, Attempt::kReading);
    }
    SetLastError(error);
    if (error != 0) return INVALID_FILE_SIZE;
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (high != nullptr) *high = static_cast<DWORD>(size >> 32);
    return static_cast<DWORD>(size);
}

BOOL SetEndOfFile(HANDLE handle) {
    const OpenFile* file = FindFile(handle);
    if (file == nullptr) return EndCall(ERROR_INVALID_HANDLE);
    if ((file->access & GENERIC_WRITE) == 0) return EndCall(ERROR_ACCESS_DENIED);
    if (Uninterrupted([&] { return ftruncate(file->descriptor, file->position); }) != 0) {
        return EndCall(ErrorFromErrno(errno, Attempt::kWriting));
    }
    return EndCall(0);
}

}  // namespace veldt::platform
