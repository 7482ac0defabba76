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

/// How far a search must look: the owner of a lock may have written on past the length that was
/// last set.
std::size_t LengthOf(const char* characters, int length) {
    return characters[length] == 0 ? static_cast<std::size_t>(length) : std::strlen(characters);
}

int SignedDifference(char a, char b) {
    return static_cast<signed char>(a) - static_cast<signed char>(b);
}

/// The same for two texts that agree as far as their lengths reach, where one goes on past that.
[[gnu::noinline, gnu::cold]] int DifferenceBeyond(const char* a, const char* b) {
    for (; *a == *b && *a != 0; ++a) ++b;
    return SignedDifference(*a, *b);
}

}  // namespace

int XCString::Find(const char* text) const {
    const std::size_t sought = std::strlen(text);
    if (sought == 0) return 0;
    if (sought > kLongSought) return IndexOf(characters_, std::strstr(characters_, text));
    const std::size_t length = LengthOf(characters_, GetData()->length);
    return IndexOf(characters_,
                   strings::FindText<strings::Ends::kAtZero>(characters_, length, text, sought));
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

int veldt::strings::DifferenceOf(const char* a, const char* b, int shorter) {
    return AtFirstStop<SameText>(
        a, b, static_cast<std::size_t>(shorter), [](const char* x, const char* y, std::size_t i) {
            const int difference = SignedDifference(x[i], y[i]);
            return difference != 0 || x[i] == 0 ? difference : DifferenceBeyond(x + i, y + i);
        });
}

int XCString::CompareNoCase(const char* text) const {
    // The bytes at the shorter length can be read: they end the one text, and end or lie within the
    // other.
    const std::size_t shorter =
        std::min(std::strlen(text), LengthOf(characters_, GetData()->length));
    const std::size_t i = strings::FirstStop<strings::SameTextNoCase>(characters_, text, shorter);
    return SignedDifference(strings::AsciiLower(characters_[i]), strings::AsciiLower(text[i]));
}
