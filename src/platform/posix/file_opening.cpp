// Opening, creating, closing and deleting files.
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/descriptors.h"
#include "platform/posix/paths.h"
#include "platform/posix/share_locks.h"

namespace veldt::platform {

namespace {

// How often an opening or a deletion begins anew because the name came to stand for another file
// in between. Each time somebody else got on, so more than a few mean a file in heavy use.
constexpr int kRounds = 64;

// Nothing waits, neither in the opening nor later; and no terminal becomes the process's own.
constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

int AccessFlags(DWORD access) {
    if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
    return (access & GENERIC_READ) == 0 ? O_WRONLY : O_RDWR;
}

// Whether positions mean anything in it. A pipe or a socket has none, and a directory is read by
// other means.
bool HasPositions(const struct stat& status) {
    return S_ISREG(status.st_mode) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

bool SameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Fills the slot of a descriptor that has no share yet.
DWORD MakeOpenFile(int descriptor, DWORD access, DWORD share, const struct stat& status,
                   OpenFile*& file) {
    file = SlotOf(descriptor);
    if (file == nullptr) return ERROR_TOO_MANY_OPEN_FILES;
    file->descriptor = descriptor;
    file->access = access;
    file->position = 0;
    file->device = status.st_dev;
    file->inode = status.st_ino;
    file->readersOnly = (access & GENERIC_WRITE) == 0 && (share & FILE_SHARE_READ) != 0;
    file->locked = false;
    file->listed = false;
    return 0;
}

// Before the descriptor closes: after that its number, and the slot with it, can be another
// thread's.
void Vacate(OpenFile& file) {
    GiveUpShare(file);
    file.handle.store(0, std::memory_order_release);
}

// What a round gives, in place of an error number, when it came to nothing because the name now
// stands for another file.
constexpr DWORD kAgain = 0xFFFFFFFF;

template <class Round>
DWORD Repeat(Round round) {
    for (int left = kRounds; left > 0; --left) {
        if (const DWORD error = round(); error != kAgain) return error;
    }
    return ERROR_SHARING_VIOLATION;
}

// One round of opening. The type is looked at before the opening, which alone would wake whoever
// waits at a pipe's other end, and after it, since the name may have changed hands.
DWORD TryOpen(const KernelPath& path, DWORD access, DWORD share, OpenFile*& file) {
    struct stat named;
    if (stat(path.text, &named) != 0) return PathError(path, errno);
    if (!HasPositions(named)) return ERROR_ACCESS_DENIED;
    Descriptor opened(
        Uninterrupted([&] { return open(path.text, AccessFlags(access) | kAlways); }));
    if (opened.Number() == -1) return PathError(path, errno);
    struct stat status;
    if (fstat(opened.Number(), &status) != 0 || !SameFile(named, status)) return kAgain;

    DWORD error = MakeOpenFile(opened.Number(), access, share, status, file);
    if (error != 0) return error;
    if (S_ISREG(status.st_mode)) error = TakeShare(*file);
    // A deletion may have come between the opening and the share: then the file has no name any
    // more, or the name another file.
    if (error == 0 && (stat(path.text, &named) != 0 || !SameFile(named, status))) error = kAgain;
    if (error != 0) {
        Vacate(*file);
        return error;
    }
    opened.Release();
    return 0;
}

DWORD Unlink(const KernelPath& path) {
    return unlink(path.text) == 0 ? 0 : PathError(path, errno);
}

// A new file can be opened by somebody else before its creator has locked it. The creation still
// stands, and of several who try just one succeeds; so the creator does without the lock then.
DWORD CreateNew(const KernelPath& path, DWORD access, DWORD share, OpenFile*& file) {
    constexpr mode_t kMode = 0666;
    const int flags = AccessFlags(access) | kAlways | O_CREAT | O_EXCL;
    Descriptor created(Uninterrupted([&] { return open(path.text, flags, kMode); }));
    if (created.Number() == -1) return PathError(path, errno);
    struct stat status;
    DWORD error = fstat(created.Number(), &status) == 0 ? 0 : PathError(path, errno);
    if (error == 0) error = MakeOpenFile(created.Number(), access, share, status, file);
    if (error != 0) {
        // A creation that failed leaves no file behind.
        Unlink(path);
        return error;
    }
    TakeShare(*file);
    created.Release();
    return 0;
}

// Whoever may neither read nor write a file can't learn whether it is open somewhere.
int OpenToLock(const KernelPath& path) {
    const int flags = kAlways | O_NOFOLLOW;
    const int readable = Uninterrupted([&] { return open(path.text, O_RDONLY | flags); });
    if (readable != -1 || errno != EACCES) return readable;
    return Uninterrupted([&] { return open(path.text, O_WRONLY | flags); });
}

// One round of deleting. While the lock is held nobody can get a handle of the file, and whoever
// opened it in between finds the name gone.
DWORD TryDelete(const KernelPath& path) {
    struct stat named;
    if (lstat(path.text, &named) != 0) return PathError(path, errno);
    if (!S_ISREG(named.st_mode)) return Unlink(path);
    const Descriptor opened(OpenToLock(path));
    if (opened.Number() == -1) {
        // The name became a symbolic link or vanished just now.
        return errno == ELOOP || errno == ENOENT ? kAgain : PathError(path, errno);
    }
    const DWORD error = TakeShareForDeletion(opened.Number(), named.st_dev, named.st_ino);
    if (error != 0) return error;
    struct stat status;
    if (fstat(opened.Number(), &status) != 0 || lstat(path.text, &named) != 0 ||
        !SameFile(named, status)) {
        return kAgain;
    }
    return Unlink(path);
}

DWORD OpenOrCreate(const char* name, DWORD access, DWORD share, DWORD disposition,
                   OpenFile*& file) {
    if ((access & (GENERIC_READ | GENERIC_WRITE)) == 0) return ERROR_INVALID_PARAMETER;
    KernelPath path;
    if (const DWORD error = TranslatePath(name, path); error != 0) return error;
    switch (disposition) {
        case CREATE_NEW:
            return CreateNew(path, access, share, file);
        case OPEN_EXISTING:
            return Repeat([&] { return TryOpen(path, access, share, file); });
        default:
            return ERROR_INVALID_PARAMETER;
    }
}

}  // namespace

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void*, DWORD disposition, DWORD,
                   HANDLE) {
    OpenFile* file = nullptr;
    const DWORD error = OpenOrCreate(path, access, share, disposition, file);
    SetLastError(error);
    if (error != 0 || file == nullptr) return INVALID_HANDLE_VALUE;
    return PublishFile(*file);
}

BOOL CloseHandle(HANDLE handle) {
    OpenFile* file = FindFile(handle);
    if (file == nullptr) return EndCall(ERROR_INVALID_HANDLE);
    const int descriptor = file->descriptor;
    Vacate(*file);
    // Closing ends the descriptor whatever it reports; EINTR alone means nothing went wrong.
    const bool failed = close(descriptor) != 0 && errno != EINTR;
    SetLastError(failed ? ErrorFromErrno(errno, Attempt::kWriting) : 0);
    return 1;
}

BOOL DeleteFileA(const char* name) {
    KernelPath path;
    if (const DWORD error = TranslatePath(name, path); error != 0) return EndCall(error);
    return EndCall(Repeat([&] { return TryDelete(path); }));
}

}  // namespace veldt::platform
