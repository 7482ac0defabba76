// XString: reading, setting, comparing.
#include <veldt20/strings_xstring.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "strings/ascii.h"

static_assert(sizeof(XStr<1>) == 3 && sizeof(XStr<255>) == 257);
static_assert(std::is_standard_layout_v<XStr<255>> && std::is_trivially_copyable_v<XStr<255>>);

XString::XString() {
    Truncate(0);
}

char* XString::GetCStr() {
    return reinterpret_cast<char*>(GetPStr() + 1);
}

const char* XString::GetCStr() const {
    return reinterpret_cast<const char*>(GetPStr() + 1);
}

unsigned char* XString::GetPStr() {
    return reinterpret_cast<unsigned char*>(this);
}

const unsigned char* XString::GetPStr() const {
    return reinterpret_cast<const unsigned char*>(this);
}

int XString::GetLength() const {
    return GetPStr()[0];
}

int XString::IsEmpty() const {
    return GetPStr()[0] == 0;
}

void XString::FixCStr() {
    DoSetLength(static_cast<int>(std::strlen(GetCStr())));
}

void XString::FixCStr(int length) {
    DoSetLength(length);
}

void XString::FixPStr() {
    DoSetNull(GetLength());
}

void XString::Truncate(int length) {
    DoSetLength(length);
    DoSetNull(length);
}

void XString::DoSetLength(int length) {
    GetPStr()[0] = static_cast<unsigned char>(length);
}

void XString::DoSetNull(int length) {
    GetPStr()[1 + length] = 0;
}

int XString::Compare(const XString& other, int exact) const {
    return DoCompare(other.GetPStr() + 1, other.GetLength(), exact);
}

int XString::DoCompare(const unsigned char* source, int length, int exact) const {
    const int own = GetLength();
    const int result = DoLenStrCompare(source, std::min(own, length), exact);
    return result != 0 ? result : (own > length) - (own < length);
}

int XString::DoLenStrCompare(const unsigned char* source, int length, int exact) const {
    if (length <= 0) return 0;
    const unsigned char* own = GetPStr() + 1;
    if (exact != 0) {
        const int order = std::memcmp(own, source, static_cast<std::size_t>(length));
        return (order > 0) - (order < 0);
    }
    for (int i = 0; i < length; ++i) {
        const int a = veldt::strings::AsciiLower(own[i]);
        const int b = veldt::strings::AsciiLower(source[i]);
        if (a != b) return a < b ? -1 : 1;
    }
    return 0;
}

namespace {

int CompareText(const XString& a, const char* b) {
    return a.DoCompare(reinterpret_cast<const unsigned char*>(b), static_cast<int>(std::strlen(b)),
                       1);
}

}  // namespace

int operator==(const XString& a, const XString& b) {
    return a.Compare(b, 1) == 0;
}
int operator==(const XString& a, const char* b) {
    return CompareText(a, b) == 0;
}
int operator==(const char* a, const XString& b) {
    return CompareText(b, a) == 0;
}
int operator!=(const XString& a, const XString& b) {
    return a.Compare(b, 1) != 0;
}
int operator!=(const XString& a, const char* b) {
    return CompareText(a, b) != 0;
}
int operator!=(const char* a, const XString& b) {
    return CompareText(b, a) != 0;
}
int operator<(const XString& a, const XString& b) {
    return a.Compare(b, 1) < 0;
}
int operator<(const XString& a, const char* b) {
    return CompareText(a, b) < 0;
}
int operator<(const char* a, const XString& b) {
    return CompareText(b, a) > 0;
}
int operator>(const XString& a, const XString& b) {
    return a.Compare(b, 1) > 0;
}
int operator>(const XString& a, const char* b) {
    return CompareText(a, b) > 0;
}
int operator>(const char* a, const XString& b) {
    return CompareText(b, a) < 0;
}
int operator<=(const XString& a, const XString& b) {
    return a.Compare(b, 1) <= 0;
}
int operator<=(const XString& a, const char* b) {
    return CompareText(a, b) <= 0;
}
int operator<=(const char* a, const XString& b) {
    return CompareText(b, a) >= 0;
}
int operator>=(const XString& a, const XString& b) {
    return a.Compare(b, 1) >= 0;
}
int operator>=(const XString& a, const char* b) {
    return CompareText(a, b) >= 0;
}
int operator>=(const char* a, const XString& b) {
    return CompareText(b, a) <= 0;
}
