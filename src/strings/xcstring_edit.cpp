// XCString: changes within the text.
#include <veldt20/strings_xcstring.h>

#include <cstring>

#include "platform/platform.h"
#include "strings/ascii.h"
#include "strings/counted_buffer.h"

namespace strings = veldt::strings;

void XCString::Empty() {
    if (GetData()->refCount >= 0) {
        Release();
    } else {
        AssignCopy(0, "");
    }
}

void XCString::ReplaceChar(char oldCharacter, char newCharacter) {
    CopyBeforeWrite();
    for (char* p = characters_; *p != 0; ++p) {
        const auto code = static_cast<unsigned char>(*p);
        // No code page has a lead byte in ASCII, so that plain text costs no call.
        if (code >= 0x80 && veldt::platform::IsDBCSLeadByte(code)) {
            ++p;
            if (*p == 0) return;
        } else if (*p == oldCharacter) {
            *p = newCharacter;
        }
    }
}

void XCString::MakeLower() {
    const char* capital = characters_;
    while (*capital != 0 && strings::AsciiLower(*capital) == *capital) ++capital;
    if (*capital == 0) return;
    const auto index = capital - characters_;
    CopyBeforeWrite();
    for (char* p = characters_ + index; *p != 0; ++p) *p = strings::AsciiLower(*p);
}

void XCString::TrimLeft() {
    const int length = GetData()->length;
    int skipped = 0;
    while (skipped < length && strings::IsAsciiSpace(characters_[skipped])) ++skipped;
    if (skipped == 0) return;
    CopyBeforeWrite();
    const int rest = length - skipped;
    std::memmove(characters_, characters_ + skipped, static_cast<std::size_t>(rest));
    strings::SetLength(GetData(), rest);
}

void XCString::TrimRight() {
    int length = GetData()->length;
    while (length > 0 && strings::IsAsciiSpace(characters_[length - 1])) --length;
    if (length == GetData()->length) return;
    CopyBeforeWrite();
    strings::SetLength(GetData(), length);
}
