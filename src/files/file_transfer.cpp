// XFile: bytes at absolute positions, and the file's size.
#include <veldt20/files.h>

#include "files/platform_errors.h"

using namespace veldt::platform;
using namespace veldt::files;

namespace {

// The position comes back in halves, and the low half of a good one can look like the failure
// value; the last error tells the two apart.
bool MoveTo(HANDLE handle, std::int32_t offsetLow, std::int32_t offsetHigh) {
    LONG high = offsetHigh;
    const DWORD low = SetFilePointer(handle, offsetLow, &high, FILE_BEGIN);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != 0) return false;
    return low == static_cast<DWORD>(offsetLow) && high == offsetHigh;
}

}  // namespace

std::uint32_t XFile::Read(void* buffer, std::uint32_t count, std::int32_t offsetLow,
                          std::int32_t offsetHigh) {
    if (openState != 1) {
        error = ErrorNotOpen;
        return 0;
    }
    DWORD done = 0;
    if (!MoveTo(handle, offsetLow, offsetHigh)) {
        TakeLastError();
        return done;
    }
    ReadFile(handle, buffer, count, &done, nullptr);
    if (TakeLastError() != 0 && done < count) error = ErrorEndOfFile;
    return done;
}

std::uint32_t XFile::Write(const void* buffer, std::uint32_t count, std::int32_t offsetLow,
                           std::int32_t offsetHigh) {
    if (openState != 1) {
        error = ErrorNotOpen;
        return 0;
    }
    DWORD done = 0;
    if (MoveTo(handle, offsetLow, offsetHigh)) WriteFile(handle, buffer, count, &done, nullptr);
    TakeLastError();
    return done;
}

int XFile::GetEOF(std::int32_t* low, std::int32_t* high) {
    if (openState == 0) return Refuse(ErrorNotOpen);
    DWORD sizeHigh = 0;
    const DWORD sizeLow = GetFileSize(handle, &sizeHigh);
    if (TakeLastError() == 0) return 0;
    *low = static_cast<std::int32_t>(sizeLow);
    *high = static_cast<std::int32_t>(sizeHigh);
    return 1;
}

int XFile::SetEOF(std::int32_t low, std::int32_t high) {
    if (openState == 0) return Refuse(ErrorNotOpen);
    if (MoveTo(handle, low, high)) SetEndOfFile(handle);
    return TakeLastError();
}
