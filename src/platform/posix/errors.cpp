// The last error of each thread, and the one table of what the kernel's codes become.
#include "platform/posix/errors.h"

#include <cerrno>

namespace veldt::platform {

namespace {

constinit thread_local DWORD lastError = 0;

struct Row {
    int code;
    DWORD error;
    Attempt attempt = Attempt::kAny;
};

// The first row that fits counts, so a row for one attempt stands before the one for any.
constexpr Row kRows[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {ENOBUFS, ERROR_NOT_ENOUGH_MEMORY},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENXIO, ERROR_BAD_UNIT},
    {ENODEV, ERROR_BAD_UNIT},
    // A lease that another program holds on the file; elsewhere a device that has to be waited for.
    {EAGAIN, ERROR_SHARING_VIOLATION, Attempt::kPath},
    {EAGAIN, ERROR_NOT_READY},
    {ENOMEDIUM, ERROR_NOT_READY},
    {EIO, ERROR_READ_FAULT, Attempt::kReading},
    {EIO, ERROR_WRITE_FAULT, Attempt::kWriting},
    {EIO, ERROR_IO_DEVICE},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {ENOLCK, ERROR_LOCK_VIOLATION},
    {EDEADLK, ERROR_LOCK_VIOLATION},
    {ENODATA, ERROR_HANDLE_EOF},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {EEXIST, ERROR_ALREADY_EXISTS, Attempt::kDirectoryCreation},
    {EEXIST, ERROR_FILE_EXISTS},
    {EINVAL, ERROR_INVALID_NAME, Attempt::kPath},
    {EINVAL, ERROR_INVALID_NAME, Attempt::kDirectoryCreation},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EOVERFLOW, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {ETIMEDOUT, ERROR_SEM_TIMEOUT},
    {EILSEQ, ERROR_INVALID_NAME},
    {ESPIPE, ERROR_SEEK_ON_DEVICE},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EFAULT, ERROR_NOACCESS},
    {ESTALE, ERROR_FILE_INVALID},
    {EMLINK, ERROR_TOO_MANY_LINKS},
    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
};

}  // namespace

DWORD ErrorFromErrno(int code, Attempt attempt) {
    for (const Row& row : kRows) {
        if (row.code == code && (row.attempt == Attempt::kAny || row.attempt == attempt)) {
            return row.error;
        }
    }
    return code == 0 ? 0 : ERROR_GEN_FAILURE;
}

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

}  // namespace veldt::platform
