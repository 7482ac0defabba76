// The buffers of XCString: one block from `operator new` each, an XCStringData with its characters
// directly behind it, exactly as large as was asked for.
#pragma once

#include <veldt20/strings_xcstring.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace veldt::strings {

/// The buffer of every empty string that owns none. It is never freed and never written.
struct EmptyBuffer {
    XCStringData data;
    char characters[1];
};
static_assert(offsetof(EmptyBuffer, characters) == sizeof(XCStringData));
static_assert(sizeof(XCStringData) == 12);

extern EmptyBuffer emptyBuffer;

/// refCount of a buffer that no second string may use.
inline constexpr std::int32_t kNotShared = -1;

/// The terminator and a signed 32-bit length have to fit behind it.
inline constexpr std::int64_t kMaxLength = 0x7FFFFFFE;

inline char* CharactersOf(XCStringData* data) {
    return reinterpret_cast<char*>(data) + sizeof(XCStringData);
}

inline XCStringData* DataOf(char* characters) {
    return reinterpret_cast<XCStringData*>(characters - sizeof(XCStringData));
}

inline bool IsEmptyBuffer(const XCStringData* data) {
    return data == &emptyBuffer.data;
}

inline bool IsLocked(const XCStringData* data) {
    return data->refCount < 0 && !IsEmptyBuffer(data);
}

/// A buffer with one owner, `length` characters unset and terminated; for 0 the shared empty one.
/// Throws std::bad_alloc.
inline XCStringData* NewBuffer(std::int64_t length) {
    if (length == 0) return &emptyBuffer.data;
    if (length < 0 || length > kMaxLength) throw std::bad_alloc();
    const auto size = sizeof(XCStringData) + static_cast<std::size_t>(length) + 1;
    const auto count = static_cast<std::int32_t>(length);
    auto* data = ::new (::operator new(size)) XCStringData{1, count, count};
    CharactersOf(data)[length] = 0;
    return data;
}

inline void ReleaseBufferOf(XCStringData* data) {
    if (!IsEmptyBuffer(data) && --data->refCount <= 0) ::operator delete(data);
}

/// Sets length and terminator. The shared empty buffer holds both already, and other threads read
/// it.
inline void SetLength(XCStringData* data, std::int32_t length) {
    if (IsEmptyBuffer(data)) return;
    data->length = length;
    CharactersOf(data)[length] = 0;
}

}  // namespace veldt::strings
