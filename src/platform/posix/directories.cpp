// Directories, attributes, and the search for names.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/posix/descriptors.h"
#include "platform/posix/paths.h"
#include "platform/posix/wildcards.h"

namespace veldt::platform {

namespace {

// FindClose gets this back: a search keeps nothing, as only its first match is ever asked for.
constinit char searchHandle = 0;

DWORD Attributes(const struct stat& status) {
    DWORD attributes = 0;
    if (S_ISDIR(status.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        attributes |= FILE_ATTRIBUTE_READONLY;
    }
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

void Describe(const char* name, const struct stat& status, WIN32_FIND_DATAA* data) {
    *data = {};
    data->dwFileAttributes = Attributes(status);
    const auto size = static_cast<std::uint64_t>(status.st_size);
    data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
    data->nFileSizeLow = static_cast<DWORD>(size);
    std::memcpy(data->cFileName, name, std::min(std::strlen(name), MAX_PATH - 1));
}

DWORD FindName(const KernelPath& path, const char* name, WIN32_FIND_DATAA* data) {
    struct stat status;
    if (stat(path.text, &status) != 0) return PathError(path, errno);
    Describe(name, status, data);
    return 0;
}

// A name that leads nowhere, a dangling symbolic link, is passed over: it can't be opened either.
DWORD FindMatch(const char* directory, const char* pattern, WIN32_FIND_DATAA* data) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory), closedir);
    if (entries == nullptr) {
        return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno, Attempt::kPath);
    }
    errno = 0;
    while (const dirent* entry = readdir(entries.get())) {
        struct stat status;
        if (MatchesWildcards(entry->d_name, pattern) &&
            fstatat(dirfd(entries.get()), entry->d_name, &status, 0) == 0) {
            Describe(entry->d_name, status, data);
            return 0;
        }
        errno = 0;
    }
    return ErrorFromErrno(errno != 0 ? errno : ENOENT, Attempt::kPath);
}

// A directory named with a separator at its end is no name to look for.
DWORD Find(KernelPath& path, WIN32_FIND_DATAA* data) {
    char* separator = std::strrchr(path.text, '/');
    char* name = separator != nullptr ? separator + 1 : path.text;
    if (*name == '\0') return ERROR_FILE_NOT_FOUND;
    if (!HasWildcards(name)) return FindName(path, name, data);
    if (separator == nullptr) return FindMatch(".", name, data);
    if (separator == path.text) return FindMatch("/", name, data);
    *separator = '\0';
    return FindMatch(path.text, name, data);
}

}  // namespace

BOOL CreateDirectoryA(const char* name, void*) {
    constexpr mode_t kMode = 0777;
    KernelPath path;
    if (const DWORD error = TranslatePath(name, path); error != 0) return EndCall(error);
    if (mkdir(path.text, kMode) != 0) {
        return EndCall(PathError(path, errno, Attempt::kDirectoryCreation));
    }
    return EndCall(0);
}

DWORD GetFileAttributesA(const char* name) {
    KernelPath path;
    struct stat status;
    DWORD error = TranslatePath(name, path);
    if (error == 0 && stat(path.text, &status) != 0) error = PathError(path, errno);
    SetLastError(error);
    return error == 0 ? Attributes(status) : INVALID_FILE_ATTRIBUTES;
}

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* data) {
    KernelPath path;
    DWORD error = TranslatePath(pattern, path);
    if (error == 0) error = Find(path, data);
    SetLastError(error);
    return error == 0 ? &searchHandle : INVALID_HANDLE_VALUE;
}

BOOL FindClose(HANDLE search) {
    return EndCall(search == &searchHandle ? 0 : ERROR_INVALID_HANDLE);
}

}  // namespace veldt::platform
