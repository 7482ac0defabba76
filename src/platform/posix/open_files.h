// What stands behind the file handles.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>

#include "platform/platform.h"

namespace veldt::platform {

/// One open file. Each lives in a slot that its descriptor chooses and that is never freed, so a
/// handle of a file that is closed by now can be looked up without a fault.
struct OpenFile {
    std::atomic<std::uintptr_t> handle;  ///< the value given out for it, 0 while nothing is open
    std::uintptr_t generation;           ///< how often the slot was used
    int descriptor;
    DWORD access;
    std::int64_t position;

    // How it keeps others out (share_locks.h).
    dev_t device;
    ino_t inode;
    pid_t owner;       ///< the process that opened it; a forked child has it as well
    bool readersOnly;  ///< reads, and lets others read
    bool locked;       ///< the kernel holds a lock on it
    bool listed;       ///< it stands in this process's own list
    OpenFile* next;
};

/// The slot of `descriptor`, which the caller has just been given by the kernel. Null when memory
/// runs out or the number is too large for a handle.
OpenFile* SlotOf(int descriptor);

/// Makes the file reachable; gives its handle, which no other file has had for a long time.
HANDLE PublishFile(OpenFile& file);

/// Null for a handle that is stale, null or invented.
OpenFile* FindFile(HANDLE handle);

}  // namespace veldt::platform
