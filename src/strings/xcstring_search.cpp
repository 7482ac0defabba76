// XCString: finding, taking parts, comparing.
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstring>

#include "strings/ascii.h"
#include "strings/counted_buffer.h"
#include "strings/mismatch.h"

namespace strings = veldt::strings;

int XCString::Find(char character) const {
    const char* found = std::strchr(characters_, character);
    return found != nullptr ? static_cast<int>(found - characters_) : -1;
}

int XCString::Find(const char* text) const {
    const char* found = std::strstr(characters_, text);
    return found != nullptr ? static_cast<int>(found - characters_) : -1;
}

XCString XCString::Left(int count) const {
    XCString part;
    AllocCopy(part, std::clamp(count, 0, GetData()->length), 0, 0);
    return part;
}

XCString XCString::Right(int count) const {
    const int length = GetData()->length;
    const int kept = std::clamp(count, 0, length);
    XCString part;
    AllocCopy(part, kept, length - kept, 0);
    return part;
}

XCString XCString::SpanExcluding(const char* set) const {
    return Left(static_cast<int>(std::strcspn(characters_, set)));
}

int XCString::Compare(const char* text) const {
    // Both bytes at the shorter length can be read: the end of this text or of the other stands
    // there.
    const std::size_t shorter =
        std::min(std::strlen(text), static_cast<std::size_t>(GetData()->length));
    const std::size_t i = strings::Mismatch(characters_, text, shorter);
    const int difference =
        static_cast<signed char>(characters_[i]) - static_cast<signed char>(text[i]);
    return (difference > 0) - (difference < 0);
}

int XCString::CompareNoCase(const char* text) const {
    const char* own = characters_;
    for (;; ++own, ++text) {
        const int a = strings::AsciiLower(static_cast<signed char>(*own));
        const int b = strings::AsciiLower(static_cast<signed char>(*text));
        if (a != b || a == 0) return a - b;
    }
}

int operator==(const XCString& a, const XCString& b) {
    return a.Compare(b) == 0;
}
int operator==(const XCString& a, const char* b) {
    return a.Compare(b) == 0;
}
int operator==(const char* a, const XCString& b) {
    return b.Compare(a) == 0;
}
int operator!=(const XCString& a, const XCString& b) {
    return a.Compare(b) != 0;
}
int operator!=(const XCString& a, const char* b) {
    return a.Compare(b) != 0;
}
int operator!=(const char* a, const XCString& b) {
    return b.Compare(a) != 0;
}
int operator<(const XCString& a, const XCString& b) {
    return a.Compare(b) < 0;
}
int operator<(const XCString& a, const char* b) {
    return a.Compare(b) < 0;
}
int operator<(const char* a, const XCString& b) {
    return b.Compare(a) > 0;
}
int operator>(const XCString& a, const XCString& b) {
    return a.Compare(b) > 0;
}
int operator>(const XCString& a, const char* b) {
    return a.Compare(b) > 0;
}
int operator>(const char* a, const XCString& b) {
    return b.Compare(a) < 0;
}
int operator<=(const XCString& a, const XCString& b) {
    return a.Compare(b) <= 0;
}
int operator<=(const XCString& a, const char* b) {
    return a.Compare(b) <= 0;
}
int operator<=(const char* a, const XCString& b) {
    return b.Compare(a) >= 0;
}
int operator>=(const XCString& a, const XCString& b) {
    return a.Compare(b) >= 0;
}
int operator>=(const XCString& a, const char* b) {
    return a.Compare(b) >= 0;
}
int operator>=(const char* a, const XCString& b) {
    return b.Compare(a) <= 0;
}
