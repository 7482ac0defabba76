// The bodies of XCString's short functions, for compilers to put in the place of calls. What they
// take for granted of a buffer is what the class promises, and one thing more: only the shared
// empty buffer has no room for a character. A body stands ahead of the first that uses it, as it
// has to where the module is a DLL.
#pragma once

#include <veldt20/strings_xcstring.h>

#if defined(VELDT20_IN_PLACE)

#include <cstddef>
#include <cstring>

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wgnu-inline-cpp-without-extern"
#endif

VELDT20_IN_PLACE XCStringData* XCString::GetData() const {
    return reinterpret_cast<XCStringData*>(characters_) - 1;
}

VELDT20_IN_PLACE XCString::operator const char*() const {
    return characters_;
}
VELDT20_IN_PLACE int XCString::GetLength() const {
    return GetData()->length;
}
VELDT20_IN_PLACE int XCString::GetAllocLength() const {
    return GetData()->allocLength;
}
VELDT20_IN_PLACE int XCString::IsEmpty() const {
    return GetData()->length == 0;
}
VELDT20_IN_PLACE char XCString::operator[](int index) const {
    return characters_[index];
}
VELDT20_IN_PLACE char XCString::GetAt(int index) const {
    return characters_[index];
}

VELDT20_IN_PLACE int XCString::SafeStrlen(const char* text) {
    if (text == nullptr) return 0;
    // A text too long for the class stays too long for it, whatever its length modulo 2^32.
    constexpr int kTooLong = 0x7FFFFFFF;
    const std::size_t length = std::strlen(text);
    return length < kTooLong ? static_cast<int>(length) : kTooLong;
}

VELDT20_IN_PLACE XCString::XCString(const XCString& source) : characters_(source.characters_) {
    XCStringData* data = GetData();
    if (data->refCount >= 0) {
        ++data->refCount;
    } else if (data->allocLength != 0) {
        // The owner of a lock may have written on past the length that was last set.
        source.AllocCopy(*this, SafeStrlen(source.characters_), 0, 0);
    }
}

VELDT20_IN_PLACE XCString::~XCString() {
    XCStringData* data = GetData();
    if (data->refCount > 1) {
        --data->refCount;
    } else if (data->allocLength != 0) {
        Release(data);
    }
}

namespace veldt::strings {

/// Most texts differ at once, and then no length matters.
inline int DifferenceOfFirst(const char* a, const char* b) {
    return static_cast<signed char>(*a) - static_cast<signed char>(*b);
}

/// Of the sign that Compare gives; a length in hand spares looking for the terminator.
inline int DifferenceOf(const XCString& a, const XCString& b) {
    if (const int difference = DifferenceOfFirst(a, b)) return difference;
    return DifferenceOf(a, b, a.GetLength() < b.GetLength() ? a.GetLength() : b.GetLength());
}

/// The same for a text without a length.
inline int DifferenceOf(const XCString& a, const char* b) {
    if (const int difference = DifferenceOfFirst(a, b)) return difference;
    const std::size_t length = std::strlen(b);
    const bool isShorter = length < static_cast<std::size_t>(a.GetLength());
    return DifferenceOf(a, b, isShorter ? static_cast<int>(length) : a.GetLength());
}

/// Whether Compare gives 0; the text ends where no byte of it has been 0.
inline bool Agree(const XCString& a, const char* b) {
    const char* const text = a;
    const std::size_t length = std::strlen(b);
    if (length <= static_cast<std::size_t>(a.GetLength())) {
        return text[length] == 0 && std::memcmp(text, b, length) == 0;
    }
    // The owner of a lock may have written on past the length that was last set.
    return text[a.GetLength()] != 0 && std::strcmp(text, b) == 0;
}

}  // namespace veldt::strings

VELDT20_IN_PLACE int XCString::Find(char character) const {
    const char* const found = std::strchr(characters_, character);
    return found != nullptr ? static_cast<int>(found - characters_) : -1;
}

VELDT20_IN_PLACE int XCString::Compare(const char* text) const {
    const int difference = veldt::strings::DifferenceOf(*this, text);
    return (difference > 0) - (difference < 0);
}

VELDT20_IN_PLACE void XCString::SetAt(int index, char character) {
    if (GetData()->refCount > 1) CopyBeforeWrite();
    characters_[index] = character;
}

VELDT20_IN_PLACE const XCString& XCString::operator=(const char* source) {
    AssignCopy(SafeStrlen(source), source);
    return *this;
}

VELDT20_IN_PLACE void XCString::ConcatInPlace(int length, const char* source) {
    if (length == 0) return;
    XCStringData* data = GetData();
    const int before = data->length;
    if (data->refCount <= 1 && length <= data->allocLength - before) {
        char* const end = characters_ + before;
        std::memmove(end, source, static_cast<std::size_t>(length));
        end[length] = 0;
        data->length = before + length;
    } else {
        // `source` may lie in the old buffer, which therefore lives on until the new one is
        // complete.
        ConcatCopy(before, characters_, length, source);
        Release(data);
    }
}

VELDT20_IN_PLACE const XCString& XCString::operator+=(const XCString& source) {
    ConcatInPlace(source.GetLength(), source.characters_);
    return *this;
}

VELDT20_IN_PLACE const XCString& XCString::operator+=(char character) {
    XCStringData* data = GetData();
    const int length = data->length;
    if (data->refCount <= 1 && length < data->allocLength) {
        characters_[length] = character;
        characters_[length + 1] = 0;
        data->length = length + 1;
    } else {
        const char text = character;  // the parameter itself stays in its register
        ConcatInPlace(1, &text);
    }
    return *this;
}

VELDT20_IN_PLACE const XCString& XCString::operator+=(const char* source) {
    ConcatInPlace(SafeStrlen(source), source);
    return *this;
}

VELDT20_IN_PLACE int operator==(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) == 0;
}
VELDT20_IN_PLACE int operator==(const XCString& a, const char* b) {
    return veldt::strings::Agree(a, b);
}
VELDT20_IN_PLACE int operator==(const char* a, const XCString& b) {
    return b == a;
}
VELDT20_IN_PLACE int operator!=(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) != 0;
}
VELDT20_IN_PLACE int operator!=(const XCString& a, const char* b) {
    return !veldt::strings::Agree(a, b);
}
VELDT20_IN_PLACE int operator!=(const char* a, const XCString& b) {
    return b != a;
}
VELDT20_IN_PLACE int operator<(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) < 0;
}
VELDT20_IN_PLACE int operator<(const XCString& a, const char* b) {
    return veldt::strings::DifferenceOf(a, b) < 0;
}
VELDT20_IN_PLACE int operator<(const char* a, const XCString& b) {
    return veldt::strings::DifferenceOf(b, a) > 0;
}
VELDT20_IN_PLACE int operator>(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) > 0;
}
VELDT20_IN_PLACE int operator>(const XCString& a, const char* b) {
    return veldt::strings::DifferenceOf(a, b) > 0;
}
VELDT20_IN_PLACE int operator>(const char* a, const XCString& b) {
    return veldt::strings::DifferenceOf(b, a) < 0;
}
VELDT20_IN_PLACE int operator<=(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) <= 0;
}
VELDT20_IN_PLACE int operator<=(const XCString& a, const char* b) {
    return veldt::strings::DifferenceOf(a, b) <= 0;
}
VELDT20_IN_PLACE int operator<=(const char* a, const XCString& b) {
    return veldt::strings::DifferenceOf(b, a) >= 0;
}
VELDT20_IN_PLACE int operator>=(const XCString& a, const XCString& b) {
    return veldt::strings::DifferenceOf(a, b) >= 0;
}
VELDT20_IN_PLACE int operator>=(const XCString& a, const char* b) {
    return veldt::strings::DifferenceOf(a, b) >= 0;
}
VELDT20_IN_PLACE int operator>=(const char* a, const XCString& b) {
    return veldt::strings::DifferenceOf(b, a) <= 0;
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif
#endif
