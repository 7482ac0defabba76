// XCString: construction, assignment, appending, and the workers on which they stand.
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstring>

#include "strings/counted_buffer.h"

namespace veldt::strings {

constinit EmptyBuffer emptyBuffer = {{kNotShared, 0, 0}, {0}};

namespace {

// What XGetEmptyString refers to. An XCString is one pointer; as one, it needs no code at load.
constinit char* const emptyString = emptyBuffer.characters;
static_assert(sizeof(XCString) == sizeof(emptyString));

}  // namespace

}  // namespace veldt::strings

namespace strings = veldt::strings;

const XCString& XGetEmptyString() {
    return reinterpret_cast<const XCString&>(strings::emptyString);
}

XCString::XCString() : characters_(strings::emptyBuffer.characters) {}

XCString::XCString(const char* source, int count) {
    if (count == -1) count = SafeStrlen(source);
    AllocBuffer(count);
    if (count != 0) std::memcpy(characters_, source, static_cast<std::size_t>(count));
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a string is on its own characters.
const XCString& XCString::operator=(const XCString& source) {
    if (characters_ == source.characters_) return *this;
    XCStringData* shared = source.GetData();
    if (shared->refCount < 0 || strings::IsLocked(GetData())) {
        AssignCopy(shared->length, source.characters_);
    } else {
        strings::ReleaseBufferOf(GetData());
        characters_ = source.characters_;
        ++shared->refCount;
    }
    return *this;
}

const XCString& XCString::operator=(char character) {
    AssignCopy(1, &character);
    return *this;
}

const XCString& XCString::operator=(const unsigned char* source) {
    AssignCopy(source[0], reinterpret_cast<const char*>(source + 1));
    return *this;
}

const XCString& XCString::operator+=(const unsigned char* source) {
    ConcatInPlace(source[0], reinterpret_cast<const char*>(source + 1));
    return *this;
}

void XCString::Init() {
    characters_ = strings::emptyBuffer.characters;
}

void XCString::AllocBuffer(int length) {
    characters_ = strings::CharactersOf(strings::NewBuffer(length));
}

void XCString::AllocCopy(XCString& target, int copyLength, int copyIndex, int extraLength) const {
    XCStringData* data = strings::NewBuffer(std::int64_t{copyLength} + extraLength);
    target.characters_ = strings::CharactersOf(data);
    if (copyLength != 0) {
        std::memcpy(target.characters_, characters_ + copyIndex,
                    static_cast<std::size_t>(copyLength));
    }
}

void XCString::AssignCopy(int length, const char* source) {
    AllocBeforeWrite(length);
    if (length != 0) std::memmove(characters_, source, static_cast<std::size_t>(length));
    strings::SetLength(GetData(), length);
}

void XCString::ConcatCopy(int length1, const char* source1, int length2, const char* source2) {
    const std::int64_t total = std::int64_t{length1} + length2;
    if (total == 0) return;
    char* target = strings::CharactersOf(strings::NewBuffer(total));
    if (length1 != 0) std::memcpy(target, source1, static_cast<std::size_t>(length1));
    if (length2 != 0) std::memcpy(target + length1, source2, static_cast<std::size_t>(length2));
    characters_ = target;
}

void XCString::CopyBeforeWrite() {
    XCStringData* shared = GetData();
    if (shared->refCount <= 1) return;
    XCStringData* copy = strings::NewBuffer(shared->length);
    std::memcpy(strings::CharactersOf(copy), characters_, static_cast<std::size_t>(shared->length));
    characters_ = strings::CharactersOf(copy);
    strings::ReleaseBufferOf(shared);
}

void XCString::AllocBeforeWrite(int length) {
    XCStringData* data = GetData();
    if (data->refCount <= 1 && length <= data->allocLength) return;
    AllocBuffer(length);
    strings::ReleaseBufferOf(data);
}

void XCString::Release() {
    XCStringData* data = GetData();
    Init();
    strings::ReleaseBufferOf(data);
}

void XCString::Release(XCStringData* data) {
    strings::ReleaseBufferOf(data);
}
