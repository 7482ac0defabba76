// XFile: its life as an object, and what it does with the file at its path.
#include <veldt20/files.h>

#include "files/kinds.h"
#include "files/platform_errors.h"

using namespace veldt::platform;
using namespace veldt::files;

XFile::XFile(XFileSpec* const path)
    : openState(0), kind(kOrdinaryFile), error(ErrorNone), handle(nullptr) {
    spec = *path;
}

XFile::~XFile() = default;

// The path comes first: it alone can run out of memory, and then nothing has changed.
XFile& XFile::operator=(const XFile& source) {
    if (this == &source) return *this;
    spec = source.spec;
    openState = source.openState;
    kind = source.kind;
    error = source.error;
    handle = source.handle;
    return *this;
}

int XFile::operator==(const XFile& other) const {
    return spec.GetNativeFileSpec() == other.spec.GetNativeFileSpec();
}

int XFile::operator!=(const XFile& other) const {
    return !(*this == other);
}

const char* XFile::PathText() const {
    return spec.GetNativeFileSpec();
}

// Every operation that reaches the platform ends here. The last error alone decides, not what the
// platform's call gave.
int XFile::TakeLastError() {
    error = MapPlatformError(GetLastError());
    return error == ErrorNone;
}

int XFile::Refuse(Error reason) {
    error = reason;
    return 0;
}

int XFile::CreateDirectoryA() {
    if (openState != 0) return Refuse(ErrorIsOpen);
    if (veldt::platform::CreateDirectoryA(PathText(), nullptr) != 0) kind = kDirectory;
    return TakeLastError();
}

int XFile::Open(Permission permission, int) {
    struct Mode {
        DWORD access;
        DWORD share;
    };
    static constexpr Mode kModes[] = {
        {GENERIC_READ, 0},
        {GENERIC_WRITE, 0},
        {GENERIC_READ | GENERIC_WRITE, 0},
        {GENERIC_READ | GENERIC_WRITE, 0},
        {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ},
    };
    const auto number = static_cast<DWORD>(permission);
    const Mode mode = number <= PermissionReadWriteShared ? kModes[number] : Mode{number, number};
    openState = 1;
    handle = CreateFileA(PathText(), mode.access, mode.share, nullptr, OPEN_EXISTING,
                         FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) openState = 0;
    return TakeLastError();
}

int XFile::Close() {
    if (openState == 0) return Refuse(ErrorNotOpen);
    if (CloseHandle(handle) != 0) openState = 0;
    return TakeLastError();
}

int XFile::Rename(const char*) {
    if (openState == 0) return Refuse(ErrorNotOpen);
    if (Close() != 0) openState = 0;
    return TakeLastError();
}

int XFile::Delete() {
    if (openState != 0) return Refuse(ErrorIsOpen);
    DeleteFileA(PathText());
    return TakeLastError();
}

int XFile::Exists() const {
    return GetFileAttributesA(PathText()) != INVALID_FILE_ATTRIBUTES;
}

XFile::Error XFile::GetError() const {
    return error;
}
void XFile::ClearError() const {
    error = ErrorNone;
}
int XFile::IsOpen() const {
    return openState != 0;
}
int XFile::IsDirectory() const {
    return kind == kDirectory;
}
int XFile::IsFile() const {
    return kind != kDirectory;
}
int XFile::IsTemporary() const {
    return kind == kTemporaryFile;
}
const XFileSpec* XFile::GetPlatformSpec() const {
    return &spec;
}
int XFile::GetType() const {
    return 0;
}
int XFile::GetCreator() const {
    return 0;
}
int XFile::SetType(int) {
    return 0;
}
int XFile::SetCreator(int) {
    return 0;
}
