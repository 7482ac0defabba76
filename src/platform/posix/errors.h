// From the kernel's error codes to the system's error numbers.
#pragma once

#include "platform/platform.h"

namespace veldt::platform {

/// What the kernel refused; a few of its codes mean something else from call to call.
enum class Attempt { kAny, kPath, kDirectoryCreation, kReading, kWriting };

/// The system's number for `code`, an errno value. ENOENT is always taken for a missing file: only
/// a look at the path tells whether a directory on the way is missing (PathError).
DWORD ErrorFromErrno(int code, Attempt attempt);

/// Ends a call: leaves `error` for GetLastError and gives whether it is 0.
inline BOOL EndCall(DWORD error) {
    SetLastError(error);
    return error == 0;
}

}  // namespace veldt::platform
