// XCString: finding, taking parts, comparing.
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstring>

#include "strings/ascii.h"
#include "strings/counted_buffer.h"
#include "strings/find_text.h"
#include "strings/mismatch.h"

namespace strings = veldt::strings;

namespace {

/// From this length on the C library's search is worth its preparations, and its time has a bound.
constexpr std::size_t kLongSought = 64;

int IndexOf(const char* text, const char* found) {
    return found != nullptr ? static_cast<int>(found - text) : -1;
}

bool HoldsZero(const char* begin, const char* end) {
    return begin != end && std::memchr(begin, 0, static_cast<std::size_t>(end - begin)) != nullptr;
}

/// The lesser of the lengths of a counted and a terminated text. The bytes there can be read: they
/// are the end of the one text, and the end of or a byte within the other.
std::size_t ShorterLength(int length, const char* text) {
    return std::min(std::strlen(text), static_cast<std::size_t>(length));
}

int SignedDifference(char a, char b) {
    return static_cast<signed char>(a) - static_cast<signed char>(b);
}

int Sign(int number) {
    return (number > 0) - (number < 0);
}

/// Both texts end at their first zero byte.
bool Equal(const XCString& a, const char* b) {
    return std::strcmp(a, b) == 0;
}

/// What Compare gives; a length in hand spares looking for the terminator.
int Order(const XCString& a, const XCString& b) {
    const char* const left = a;
    const char* const right = b;
    const auto shorter = static_cast<std::size_t>(std::min(a.GetLength(), b.GetLength()));
    const std::size_t i = strings::Mismatch(left, right, shorter);
    if (left[i] == right[i] || HoldsZero(left, left + i)) return 0;
    return Sign(SignedDifference(left[i], right[i]));
}

}  // namespace

int XCString::Find(char character) const {
    return IndexOf(characters_, std::strchr(characters_, character));
}

int XCString::Find(const char* text) const {
    const std::size_t sought = std::strlen(text);
    const auto length = static_cast<std::size_t>(GetData()->length);
    if (sought == 0) return 0;
    if (sought > kLongSought) return IndexOf(characters_, std::strstr(characters_, text));
    const char* found = strings::FindText(characters_, length, text, sought);
    // What stands behind a zero byte is no part of this text.
    if (found == nullptr || HoldsZero(characters_, found)) return -1;
    return IndexOf(characters_, found);
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
    // Most texts differ at once, and then neither length matters.
    if (*characters_ != *text) return Sign(SignedDifference(*characters_, *text));
    const std::size_t i =
        strings::Mismatch(characters_, text, ShorterLength(GetData()->length, text));
    return Sign(SignedDifference(characters_[i], text[i]));
}

int XCString::CompareNoCase(const char* text) const {
    const std::size_t i =
        strings::MismatchNoCase(characters_, text, ShorterLength(GetData()->length, text));
    return SignedDifference(strings::AsciiLower(characters_[i]), strings::AsciiLower(text[i]));
}

int operator==(const XCString& a, const XCString& b) {
    return Order(a, b) == 0;
}
int operator==(const XCString& a, const char* b) {
    return Equal(a, b);
}
int operator==(const char* a, const XCString& b) {
    return Equal(b, a);
}
int operator!=(const XCString& a, const XCString& b) {
    return Order(a, b) != 0;
}
int operator!=(const XCString& a, const char* b) {
    return !Equal(a, b);
}
int operator!=(const char* a, const XCString& b) {
    return !Equal(b, a);
}
int operator<(const XCString& a, const XCString& b) {
    return Order(a, b) < 0;
}
int operator<(const XCString& a, const char* b) {
    return a.Compare(b) < 0;
}
int operator<(const char* a, const XCString& b) {
    return b.Compare(a) > 0;
}
int operator>(const XCString& a, const XCString& b) {
    return Order(a, b) > 0;
}
int operator>(const XCString& a, const char* b) {
    return a.Compare(b) > 0;
}
int operator>(const char* a, const XCString& b) {
    return b.Compare(a) < 0;
}
int operator<=(const XCString& a, const XCString& b) {
    return Order(a, b) <= 0;
}
int operator<=(const XCString& a, const char* b) {
    return a.Compare(b) <= 0;
}
int operator<=(const char* a, const XCString& b) {
    return b.Compare(a) >= 0;
}
int operator>=(const XCString& a, const XCString& b) {
    return Order(a, b) >= 0;
}
int operator>=(const XCString& a, const char* b) {
    return a.Compare(b) >= 0;
}
int operator>=(const char* a, const XCString& b) {
    return b.Compare(a) <= 0;
}
