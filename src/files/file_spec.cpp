// XFileSpec: a path, and its parts.
#include <veldt20/files.h>

#include "platform/platform.h"

using namespace veldt::platform;

// Results are made before `out` is touched, which may be the path itself.

XFileSpec::XFileSpec() = default;
XFileSpec::XFileSpec(const XCString& path) {
    nativeFileSpec = path;
}
XFileSpec::XFileSpec(const XFileSpec& source) = default;
XFileSpec::~XFileSpec() = default;

XFileSpec& XFileSpec::operator=(const XFileSpec& source) {
    nativeFileSpec = source.nativeFileSpec;
    return *this;
}

XCString& XFileSpec::GetNativeFileSpec() {
    return nativeFileSpec;
}
const XCString& XFileSpec::GetNativeFileSpec() const {
    return nativeFileSpec;
}
void XFileSpec::SetNativeFileSpec(const XCString& path) {
    nativeFileSpec = path;
}
void XFileSpec::Append(const char* text) {
    nativeFileSpec += text;
}

int XFileSpec::Exists() const {
    if (nativeFileSpec.IsEmpty()) return 0;
    WIN32_FIND_DATAA unread;
    const HANDLE search = FindFirstFileA(nativeFileSpec, &unread);
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
        return 1;
    }
    // A search doesn't report every directory: a drive's root has no name to be found by.
    const DWORD attributes = GetFileAttributesA(nativeFileSpec);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void XFileSpec::GetPath(XCString& out, int posix) const {
    if (posix == 0) {
        out = nativeFileSpec;
        return;
    }
    XCString path;
    path.GetBuffer(nativeFileSpec.GetLength() + 1);
    path = '/';
    path += nativeFileSpec;
    path.ReplaceChar('\\', '/');
    out = path;
}

void XFileSpec::GetPosixStylePath(XCString& out) const {
    GetPath(out, 1);
}

void XFileSpec::GetName(XCString& out, int) const {
    const char* path = nativeFileSpec;
    const int length = nativeFileSpec.GetLength();
    int separator = -1;
    for (int i = 0; i < length - 1; ++i) {
        if (IsDBCSLeadByte(static_cast<BYTE>(path[i])) != 0) {
            ++i;
        } else if (path[i] == '\\') {
            separator = i;
        }
    }
    const XCString name =
        separator < 0 ? XCString() : XCString(path + separator + 1, length - separator - 1);
    out = name;
}

void XFileSpec::GetName(XStr<255>& out, int unused) const {
    XCString name;
    GetName(name, unused);
    const char* text = name;
    out.Assign(text, name.GetLength());
}

void XFileSpec::GetExtension(XCString& out) const {
    XCString name;
    GetName(name, 0);
    GetExtension(name, out);
}

void XFileSpec::GetExtension(XCString& name, XCString& out) {
    const char* text = name;
    const int length = name.GetLength();
    // Kept in 16 bits, which takes a first dot beyond 32,767 for another place or for none.
    std::int16_t dot = -1;
    for (int i = length - 1; i >= 0; --i) {
        if (text[i] == '.') dot = static_cast<std::int16_t>(i);
    }
    const bool none = dot <= 0 || dot == length - 1;
    const XCString extension = none ? XCString() : XCString(text + dot + 1, length - dot - 1);
    out = extension;
}
