// Share modes: which handles of one file may be open at a time.
//
// A handle that only reads and lets others read goes with others of its kind; every other handle
// has the file to itself. The rule holds between all handles of this library, in one process and
// in several, and a name of the file more (a hard link) makes no difference. Other programs see it
// as an advisory lock of the whole file. The kernel drops the lock of a process that dies, once no
// child that was forked meanwhile has the open file either.
#pragma once

#include "platform/posix/open_files.h"

namespace veldt::platform {

/// Takes the file's share for `file`, whose descriptor, device, inode and readersOnly are set. 0,
/// or ERROR_SHARING_VIOLATION. Never waits.
DWORD TakeShare(OpenFile& file);

/// Before the descriptor closes. In a child forked while the file was open, the share stays with
/// the parent.
void GiveUpShare(OpenFile& file);

/// As TakeShare, for the moment of a deletion: ends when the descriptor is closed.
DWORD TakeShareForDeletion(int descriptor, dev_t device, ino_t inode);

}  // namespace veldt::platform
