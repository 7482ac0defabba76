#include "platform/posix/paths.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace veldt::platform {

namespace {

constexpr char kCurrentDrive = 'C';

bool IsSeparator(char byte) {
    return byte == '\\' || byte == '/';
}

bool HasDrive(const char* path) {
    const char letter = static_cast<char>(path[0] | 0x20);
    return letter >= 'a' && letter <= 'z' && path[1] == ':';
}

// The bytes up to the next separator or the end.
std::size_t NameLength(const char* path) {
    std::size_t length = 0;
    while (path[length] != '\0' && !IsSeparator(path[length])) {
        const bool lead = IsDBCSLeadByte(static_cast<BYTE>(path[length])) != 0;
        length += lead && path[length + 1] != '\0' ? 2 : 1;
    }
    return length;
}

bool Append(KernelPath& out, const char* text, std::size_t length) {
    if (length >= sizeof out.text - out.length) return false;
    std::memcpy(out.text + out.length, text, length);
    out.length += length;
    out.text[out.length] = '\0';
    return true;
}

// Appends the names of `path`. Under a drive's root `..` leads back to that root, which has no
// parent, so a mounted drive is not left by it.
bool AppendNames(KernelPath& out, const char* path, bool rooted) {
    std::size_t depth = 0;
    while (*path != '\0') {
        const std::size_t length = NameLength(path);
        const bool parent = length == 2 && path[0] == '.' && path[1] == '.';
        const bool stays = length == 0 || (length == 1 && path[0] == '.');
        const bool atRoot = rooted && parent && depth == 0;
        if (!Append(out, atRoot ? "." : path, atRoot ? 1 : length)) return false;
        if (parent && depth > 0) --depth;
        if (!parent && !stays) ++depth;
        path += length;
        if (*path == '\0') break;
        if (!Append(out, "/", 1)) return false;
        while (IsSeparator(*path)) ++path;
    }
    return true;
}

bool IsDirectory(const char* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// Whether the directory that the last name of `path` stands in is there.
bool HasParent(const KernelPath& path) {
    std::size_t end = path.length;
    while (end > 0 && path.text[end - 1] == '/') --end;
    while (end > 0 && path.text[end - 1] != '/') --end;
    if (end == 0) return IsDirectory(".");
    KernelPath parent;
    std::memcpy(parent.text, path.text, end);
    parent.text[end] = '\0';
    return IsDirectory(parent.text);
}

}  // namespace

DWORD TranslatePath(const char* path, KernelPath& out) {
    out.length = 0;
    out.text[0] = '\0';
    if (path == nullptr || *path == '\0') return ERROR_PATH_NOT_FOUND;
    if (std::strncmp(path, "\\\\?\\", 4) == 0 && HasDrive(path + 4)) path += 4;
    if (path[0] == '\\' && path[1] == '\\') return ERROR_BAD_NETPATH;

    const bool drive = HasDrive(path);
    const bool rooted = drive || IsSeparator(path[0]);
    if (rooted) {
        const char letter = drive ? path[0] : kCurrentDrive;
        if (!DriveDirectory(letter, out.text, sizeof out.text, out.length)) {
            return ERROR_PATH_NOT_FOUND;
        }
        if (drive) path += 2;
        while (IsSeparator(*path)) ++path;
        if (!Append(out, "/", 1)) return ERROR_FILENAME_EXCED_RANGE;
    }
    return AppendNames(out, path, rooted) ? 0 : ERROR_FILENAME_EXCED_RANGE;
}

DWORD PathError(const KernelPath& path, int code, Attempt attempt) {
    if (code == ENOENT && !HasParent(path)) return ERROR_PATH_NOT_FOUND;
    return ErrorFromErrno(code, attempt);
}

}  // namespace veldt::platform
