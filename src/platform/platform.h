// Everything that the library asks of the operating system, under the operating system's own
// names and with its values. On Windows these are the system's own; elsewhere this file says what
// the layer in posix/ keeps of each, which is just what the library relies on.
#pragma once

#if defined(_WIN32)
#include "platform/windows/system.h"
#else

#include <veldt20/host.h>

#include <cstddef>
#include <cstdint>

#include "platform/posix/locks.h"

namespace veldt::platform {

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = unsigned int;
using SIZE_T = std::size_t;
using HANDLE = void*;
using HGLOBAL = void*;
using HINSTANCE = HINSTANCE__*;
using WCHAR = unsigned short;
using BSTR = WCHAR*;
using FARPROC = int (*)();

// Address space (address_space.cpp) ------------------------------------------------------------

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_DECOMMIT = 0x4000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD PAGE_NOACCESS = 0x01;
inline constexpr DWORD PAGE_READWRITE = 0x04;

struct MEMORY_BASIC_INFORMATION {
    void* BaseAddress;
    SIZE_T RegionSize;  ///< bytes committed from BaseAddress on, without a gap
};

/// With MEM_RESERVE and no address: `size` bytes, a multiple of 64 KB, on a 64 KB boundary; with
/// MEM_COMMIT in the same call also usable up to `size`, rounded to 4096, or not got at all. With
/// MEM_COMMIT and an address inside a reservation: makes those bytes, in 4096-byte steps,
/// readable and writable; fresh ones are not promised to be zero. The range begins no further up
/// than what is committed reaches. Null on failure, also for a range that leaves the reservation.
void* VirtualAlloc(void* address, SIZE_T size, DWORD type, DWORD protection);

/// Reserves whole 64 KB units for `size` bytes, and commits those bytes, in 4096-byte steps, at
/// their low end, all in one call. Null on failure, with nothing reserved.
void* VirtualAllocUnits(SIZE_T size);

/// MEM_DECOMMIT takes the memory of the range, the last of what is committed, and keeps the
/// reservation; MEM_RELEASE, with the base and size 0, gives the whole reservation back. 0 on
/// failure.
BOOL VirtualFree(void* address, SIZE_T size, DWORD type);

/// Asked for the base of a reservation only. Gives the bytes written to `info`, 0 on failure.
SIZE_T VirtualQuery(const void* address, MEMORY_BASIC_INFORMATION* info, SIZE_T length);

/// Gives the system the memory that is kept for the next reservations.
void GiveBackIdleMemory();

/// Gives the system all address space back, unless there still is a reservation. Tells of each part
/// that was in use before it goes.
void GiveBackAddressSpace(void (*goes)(char* from, std::size_t size));

// Locks and threads: CRITICAL_SECTION, InitializeCriticalSection, EnterCriticalSection,
// TryEnterCriticalSection, LeaveCriticalSection, DeleteCriticalSection, GetCurrentThreadId,
// OnlyThread -- (posix/locks.h)

// Pointer tests (pointer_tests.cpp) ------------------------------------------------------------

/// Non-zero if any of the bytes can't be written. Never faults.
BOOL IsBadWritePtr(void* pointer, SIZE_T size);
/// Non-zero if nothing can be called there; any other value may be called as far as can be told.
BOOL IsBadCodePtr(FARPROC procedure);

// Messages (message_box.cpp) -------------------------------------------------------------------

inline constexpr UINT MB_OKCANCEL = 0x1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
inline constexpr UINT MB_ICONHAND = 0x10;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;
inline constexpr UINT MB_SYSTEMMODAL = 0x1000;
inline constexpr UINT MB_TASKMODAL = 0x2000;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;

BOOL MessageBeep(UINT type);
/// What the host's message box answers; 0, no box shown, where the host installed none.
int MessageBoxA(void* owner, const char* text, const char* caption, UINT style);

// Global memory (global_memory.cpp) ------------------------------------------------------------

inline constexpr UINT GMEM_MOVEABLE = 0x2;
inline constexpr UINT GMEM_ZEROINIT = 0x40;
inline constexpr UINT GMEM_SHARE = 0x2000;

/// Moveable blocks only: an opaque name with a lock count. Every call takes constant time but for
/// the bytes it moves or clears, and refuses a stale, null or invented name without a fault. A
/// block of no bytes has a name but can't be locked.
HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
/// The same name; null if there is no room, and then the block is as it was. A locked block never
/// moves: it finds room where it is or fails.
HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T size, UINT flags);
void* GlobalLock(HGLOBAL block);
/// Whether the block is still locked. 0 with a last error of 0 says that it is locked no more.
BOOL GlobalUnlock(HGLOBAL block);
/// Null on success, the name itself on failure.
HGLOBAL GlobalFree(HGLOBAL block);
SIZE_T GlobalSize(HGLOBAL block);

// Text (text.cpp, string_resources.cpp, system_strings.cpp) ------------------------------------

inline constexpr UINT CP_ACP = 0;

/// Code page 0, flags 0. A length of -1 reads through the terminator; a null output asks for the
/// length only. 0 on failure.
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* source, int sourceLength,
                        char* target, int targetSize, const char* defaultChar, BOOL* usedDefault);
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int sourceLength,
                        WCHAR* target, int targetSize);
BOOL IsDBCSLeadByte(BYTE byte);

/// Copies at most size - 1 characters and a zero byte; the characters copied, 0 for no such
/// resource.
int LoadStringA(HINSTANCE module, UINT id, char* buffer, int size);

/// 16-bit text with its byte length in the four bytes before it and a terminator behind it.
/// `source` may be null: then the characters stay unset. Null when memory runs out.
BSTR SysAllocStringLen(const WCHAR* source, UINT length);
void SysFreeString(BSTR string);

// Files (file_opening.cpp, file_transfer.cpp, directories.cpp, paths.cpp, share_locks.cpp) --------

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr std::size_t MAX_PATH = 260;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    char cFileName[MAX_PATH];
    char cAlternateFileName[14];
};

// Paths are in the system's form, with backslashes; a drive letter is where the host mounted it,
// and an unmounted one is a path that is not found. A failure leaves the system's error number for
// GetLastError, a success leaves 0. Nothing waits: what has no positions, such as a pipe, can't be
// opened, and a device that is not ready says so. A handle that is stale, null or invented is
// refused without a fault.

/// OPEN_EXISTING or CREATE_NEW. A handle opened with GENERIC_READ alone and FILE_SHARE_READ goes
/// with others of its kind; every other handle has its file to itself while it is open, between
/// objects and between processes. Devices are shared by all. Attributes and flags change nothing.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD attributes, HANDLE pattern);
/// Gives 1 for every handle that was open. The last error is not 0 then if data written earlier did
/// not reach the disk.
BOOL CloseHandle(HANDLE file);
/// Short only at the end of the file, or with an error.
BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, void* overlapped);
/// Short only with an error, as on a full disk.
BOOL WriteFile(HANDLE file, const void* buffer, DWORD count, DWORD* done, void* overlapped);
/// FILE_BEGIN only. A null `distanceHigh` takes the sign of the low half.
DWORD SetFilePointer(HANDLE file, LONG distanceLow, LONG* distanceHigh, DWORD method);
DWORD GetFileSize(HANDLE file, DWORD* high);
BOOL SetEndOfFile(HANDLE file);
/// Refused while anybody has the file open.
BOOL DeleteFileA(const char* path);
BOOL CreateDirectoryA(const char* path, void* security);
DWORD GetFileAttributesA(const char* path);
/// Wildcards in the last name only. Fills the attributes, the size and the name (its first 259
/// bytes); times stay 0.
HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* data);
BOOL FindClose(HANDLE search);
/// Null `buffer` only: a path in \tmp of drive C that is most likely unused, in a buffer of the
/// thread's own, good until the next call.
char* tmpnam(char* buffer);

// The last error (errors.cpp), one a thread ----------------------------------------------------

inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_BAD_UNIT = 20;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_BAD_NETPATH = 53;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_SEM_TIMEOUT = 121;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_SEEK_ON_DEVICE = 132;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_DISCARDED = 157;
inline constexpr DWORD ERROR_NOT_LOCKED = 158;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_NOACCESS = 998;
inline constexpr DWORD ERROR_FILE_INVALID = 1006;
inline constexpr DWORD ERROR_IO_DEVICE = 1117;
inline constexpr DWORD ERROR_TOO_MANY_LINKS = 1142;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;

DWORD GetLastError();
void SetLastError(DWORD error);

}  // namespace veldt::platform

#endif
