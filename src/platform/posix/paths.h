// From paths in the system's form to paths that the kernel takes.
#pragma once

#include "platform/platform.h"
#include "platform/posix/errors.h"

#include <climits>
#include <cstddef>

namespace veldt::platform {

/// The kernel takes no path of PATH_MAX bytes or more, so a fixed buffer holds all that can work.
struct KernelPath {
    char text[PATH_MAX];
    std::size_t length;
};

/// Translates `path`; 0 or the system's error number. Names pass byte for byte, trail bytes of
/// double-byte characters are no separators, and both the backslash and the slash are. What a path
/// may begin with:
///
///     C:\dir    from the directory that the letter is mounted on
///     C:dir     the same: every drive's current directory is its root
///     \dir      from the root of drive C
///     dir       from the current directory
///     \\?\C:\   as without the prefix, which lifts the length limit of other systems
///     \\host\   the network, which is not found
DWORD TranslatePath(const char* path, KernelPath& out);

/// The system's number for a call on `path` that failed with `code`. Looks at the directory that
/// the last name stands in to tell a missing file from a missing way.
DWORD PathError(const KernelPath& path, int code, Attempt attempt = Attempt::kPath);

/// Writes the directory that `letter` (A to Z in either case) is mounted on, without a separator at
/// its end. False if it is not mounted; a text that does not fit is cut, with `length` of `size`.
bool DriveDirectory(char letter, char* buffer, std::size_t size, std::size_t& length);

}  // namespace veldt::platform
