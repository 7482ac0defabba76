// XCString: from and to 16-bit text, by the process's ANSI code page.
#include <veldt20/strings_xcstring.h>

#include <cstddef>
#include <memory>

#include "platform/platform.h"

namespace {

// The system's constants are macros on one target, which no qualified name survives.
using namespace veldt::platform;

/// Converts terminated text; with a null target gives the bytes needed, terminator counted.
int ConvertToBytes(const unsigned short* source, char* target, int size) {
    return WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<const WCHAR*>(source), -1, target, size,
                               nullptr, nullptr);
}

int ConvertToWide(const char* source, int length, unsigned short* target, int size) {
    return MultiByteToWideChar(CP_ACP, 0, source, length, reinterpret_cast<WCHAR*>(target), size);
}

}  // namespace

XCString::XCString(unsigned short* source) {
    Init();
    const int size = ConvertToBytes(source, nullptr, 0);
    if (size <= 1) return;
    AllocBuffer(size - 1);
    ConvertToBytes(source, characters_, size);
}

const XCString& XCString::operator=(unsigned short* source) {
    const int size = ConvertToBytes(source, nullptr, 0);
    if (size <= 1) {
        AssignCopy(0, "");
        return *this;
    }
    // The source may be this very text seen as 16-bit, so it is read whole before the first write.
    const std::unique_ptr<char[]> text(new char[static_cast<std::size_t>(size)]);
    ConvertToBytes(source, text.get(), size);
    AssignCopy(size - 1, text.get());
    return *this;
}

unsigned short* XCString::AllocSysString() const {
    const int length = GetData()->length;
    const int size = length == 0 ? 0 : ConvertToWide(characters_, length, nullptr, 0);
    auto* string =
        reinterpret_cast<unsigned short*>(SysAllocStringLen(nullptr, static_cast<UINT>(size)));
    if (string != nullptr && size != 0) ConvertToWide(characters_, length, string, size);
    return string;
}

void XSysFreeString(unsigned short* string) {
    SysFreeString(reinterpret_cast<BSTR>(string));
}
