#include "files/platform_errors.h"

namespace veldt::files {

XFile::Error MapPlatformError(platform::DWORD error) {
    using namespace platform;
    switch (error) {
        case 0:
            return XFile::ErrorNone;
        case ERROR_FILE_NOT_FOUND:
            return XFile::ErrorNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_UNIT:
            return XFile::ErrorBadPath;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return XFile::ErrorAccess;
        case ERROR_NOT_READY:
            return XFile::ErrorNotReady;
        case ERROR_WRITE_FAULT:
            return XFile::ErrorWriteFault;
        case ERROR_READ_FAULT:
            return XFile::ErrorReadFault;
        case ERROR_HANDLE_EOF:
            return XFile::ErrorEndOfFile;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return XFile::ErrorExists;
        default:
            return XFile::ErrorOther;
    }
}

}  // namespace veldt::files
