// The operating system's own calls, brought into the namespace that the library takes them from.
#pragma once

#define WIN32_LEAN_AND_MEAN
// The compiler's standard headers may have said so already.
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Two calls of <oleauto.h>, which itself brings in much and takes names such as `byte`.
extern "C" {
__declspec(dllimport) WCHAR* WINAPI SysAllocStringLen(const WCHAR* source, UINT length);
__declspec(dllimport) void WINAPI SysFreeString(WCHAR* string);
}

namespace veldt::platform {

using BSTR = WCHAR*;

using ::BOOL;
using ::BYTE;
using ::CRITICAL_SECTION;
using ::DWORD;
using ::FARPROC;
using ::FILETIME;
using ::HANDLE;
using ::HGLOBAL;
using ::HINSTANCE;
using ::LONG;
using ::MEMORY_BASIC_INFORMATION;
using ::SIZE_T;
using ::UINT;
using ::WCHAR;
using ::WIN32_FIND_DATAA;
using ::WORD;

using ::CloseHandle;
using ::CreateDirectoryA;
using ::CreateFileA;
using ::DeleteCriticalSection;
using ::DeleteFileA;
using ::EnterCriticalSection;
using ::FindClose;
using ::FindFirstFileA;
using ::GetCurrentThreadId;
using ::GetFileAttributesA;
using ::GetFileSize;
using ::GetLastError;
using ::GlobalAlloc;
using ::GlobalFree;
using ::GlobalLock;
using ::GlobalReAlloc;
using ::GlobalSize;
using ::GlobalUnlock;
using ::InitializeCriticalSection;
using ::IsBadCodePtr;
using ::IsBadWritePtr;
using ::IsDBCSLeadByte;
using ::LeaveCriticalSection;
using ::LoadStringA;
using ::MessageBeep;
using ::MessageBoxA;
using ::MultiByteToWideChar;
using ::ReadFile;
using ::SetEndOfFile;
using ::SetFilePointer;
using ::SetLastError;
using ::SysAllocStringLen;
using ::SysFreeString;
using ::tmpnam;
using ::TryEnterCriticalSection;
using ::VirtualAlloc;
using ::VirtualFree;
using ::VirtualQuery;
using ::WideCharToMultiByte;
using ::WriteFile;

/// Whole 64 KB units, of which the first `size` bytes are committed; null if the system refuses.
inline void* VirtualAllocUnits(SIZE_T size) {
    constexpr SIZE_T kUnit = 65536;
    void* base =
        VirtualAlloc(nullptr, (size + kUnit - 1) & ~(kUnit - 1), MEM_RESERVE, PAGE_NOACCESS);
    if (base != nullptr && VirtualAlloc(base, size, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        VirtualFree(base, 0, MEM_RELEASE);
        return nullptr;
    }
    return base;
}

/// Nothing here tells how many threads the process has.
inline bool OnlyThread() {
    return false;
}

/// The system keeps nothing of what has been given back.
inline void GiveBackIdleMemory() {}
inline void GiveBackAddressSpace(void (*)(char* from, std::size_t size)) {}

}  // namespace veldt::platform
