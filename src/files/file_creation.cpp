// XFile: new files, at a path or temporary.
#include <veldt20/files.h>

#include "files/kinds.h"
#include "platform/platform.h"

using namespace veldt::platform;
using namespace veldt::files;

int XFile::Create(int, int) {
    return spec.GetNativeFileSpec().IsEmpty() ? CreateTemporary() : CreateAtPath();
}

int XFile::CreateAtPath() {
    const DWORD attribute =
        kind == kTemporaryFile ? FILE_ATTRIBUTE_TEMPORARY : FILE_ATTRIBUTE_NORMAL;
    const HANDLE created = CreateFileA(PathText(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                       CREATE_NEW, attribute, nullptr);
    if (created != INVALID_HANDLE_VALUE) CloseHandle(created);
    return TakeLastError();
}

// A fresh name can be taken by somebody else before the file is made; then another is tried, and
// the object lets go of the taken one first, for that file isn't its own.
int XFile::CreateTemporary() {
    constexpr int kAttempts = 16;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        SetupTemporaryFile();
        kind = kTemporaryFile;
        if (CreateAtPath() != 0) return 1;
        kind = kOrdinaryFile;
        spec.GetNativeFileSpec().Empty();
        if (error != ErrorExists) break;
    }
    return 0;
}

void XFile::SetupTemporaryFile() {
    spec.SetNativeFileSpec(XCString(veldt::platform::tmpnam(nullptr)));
}
