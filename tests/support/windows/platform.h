// What a program on the exported headers alone needs of the platform.
#pragma once

#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

// A last error that other code left on this thread would count as the next file operation's own.
inline void ClearPendingError() {
    SetLastError(0);
}
