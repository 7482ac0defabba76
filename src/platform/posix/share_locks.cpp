#include "platform/posix/share_locks.h"

#include <sys/file.h>
#include <unistd.h>

#include <mutex>

#include "platform/posix/descriptors.h"

namespace veldt::platform {

namespace {

enum class LockResult { kHeld, kRefused, kNoLocks };

// The lock belongs to the open file, not to the process: two openings in one process meet as
// two in different processes do.
LockResult TryLock(int descriptor, int kind) {
    if (Uninterrupted([&] { return flock(descriptor, kind | LOCK_NB); }) == 0) {
        return LockResult::kHeld;
    }
    return errno == EWOULDBLOCK ? LockResult::kRefused : LockResult::kNoLocks;
}

// The open files of file systems that know no locks. Here only the handles of this process are
// kept apart.
std::mutex listLock;
OpenFile* listed = nullptr;

bool Clashes(dev_t device, ino_t inode, bool readersOnly) {
    for (const OpenFile* other = listed; other != nullptr; other = other->next) {
        const bool same = other->device == device && other->inode == inode;
        if (same && !(readersOnly && other->readersOnly)) return true;
    }
    return false;
}

void Unlist(OpenFile& file) {
    const std::lock_guard guard(listLock);
    OpenFile** link = &listed;
    while (*link != &file) link = &(*link)->next;
    *link = file.next;
    file.listed = false;
}

DWORD List(OpenFile& file) {
    const std::lock_guard guard(listLock);
    if (Clashes(file.device, file.inode, file.readersOnly)) return ERROR_SHARING_VIOLATION;
    file.next = listed;
    listed = &file;
    file.listed = true;
    return 0;
}

}  // namespace

DWORD TakeShare(OpenFile& file) {
    file.owner = getpid();
    LockResult result = TryLock(file.descriptor, file.readersOnly ? LOCK_SH : LOCK_EX);
    file.locked = result == LockResult::kHeld;
    if (result == LockResult::kRefused) return ERROR_SHARING_VIOLATION;
    if (result == LockResult::kHeld) return 0;

    // Some network file systems give a handle that can't write no exclusive lock. The shared one
    // keeps writers out at least.
    if (!file.readersOnly) result = TryLock(file.descriptor, LOCK_SH);
    file.locked = result == LockResult::kHeld;
    return result == LockResult::kRefused ? ERROR_SHARING_VIOLATION : List(file);
}

void GiveUpShare(OpenFile& file) {
    if (file.listed) Unlist(file);
    // A child that was forked meanwhile has the open file too and would keep its lock alive.
    if (file.locked && file.owner == getpid()) flock(file.descriptor, LOCK_UN);
    file.locked = false;
}

DWORD TakeShareForDeletion(int descriptor, dev_t device, ino_t inode) {
    const LockResult result = TryLock(descriptor, LOCK_EX);
    if (result == LockResult::kHeld) return 0;
    if (result == LockResult::kRefused) return ERROR_SHARING_VIOLATION;
    const std::lock_guard guard(listLock);
    return Clashes(device, inode, false) ? ERROR_SHARING_VIOLATION : 0;
}

}  // namespace veldt::platform
