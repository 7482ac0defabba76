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

/// Kept out of line, so that the common copy saves no registers for it.
[[gnu::noinline]] void AssignText(XCString& target, const char* text) {
    target = text;
}

}  // namespace

}  // namespace veldt::strings

namespace strings = veldt::strings;

const XCString& XGetEmptyString() {
    return reinterpret_cast<const XCString&>(strings::emptyString);
}

XCString::XCString() : characters_(strings::emptyBuffer.characters) {}

XCString::XCString(const XCString& source) : characters_(source.characters_) {
    XCStringData* data = GetData();
    if (data->refCount >= 0) {
        ++data->refCount;
        return;
    }
    Init();
    // The owner of a lock may have written on past the length that was last set.
    if (!strings::IsEmptyBuffer(data)) strings::AssignText(*this, source.characters_);
}

XCString::XCString(const char* source, int count) {
    if (count == -1) count = SafeStrlen(source);
    AllocBuffer(count);
    if (count != 0) std::memcpy(characters_, source, static_cast<std::size_t>(count));
}

XCString::~XCString() {
    strings::ReleaseBufferOf(GetData());
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

const XCString& XCString::operator=(const char* source) {
    AssignCopy(SafeStrlen(source), source);
    return *this;
}

const XCString& XCString::operator=(const unsigned char* source) {
    AssignCopy(source[0], reinterpret_cast<const char*>(source + 1));
    return *this;
}

const XCString& XCString::operator+=(const XCString& source) {
    ConcatInPlace(source.GetData()->length, source.characters_);
    return *this;
}

const XCString& XCString::operator+=(char character) {
    XCStringData* data = GetData();
    const std::int32_t length = data->length;
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

const XCString& XCString::operator+=(const char* source) {
    ConcatInPlace(SafeStrlen(source), source);
    return *this;
}

const XCString& XCString::operator+=(const unsigned char* source) {
    ConcatInPlace(source[0], reinterpret_cast<const char*>(source + 1));
    return *this;
}

void XCString::Init() {
    characters_ = strings::emptyBuffer.characters;
}

XCStringData* XCString::GetData() const {
    return strings::DataOf(characters_);
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

// Out of line, like what calls it: appending in place is the common case, and short.
[[gnu::noinline]] void XCString::ConcatCopy(int length1, const char* source1, int length2,
                                            const char* source2) {
    const std::int64_t total = std::int64_t{length1} + length2;
    if (total == 0) return;
    char* target = strings::CharactersOf(strings::NewBuffer(total));
    if (length1 != 0) std::memcpy(target, source1, static_cast<std::size_t>(length1));
    if (length2 != 0) std::memcpy(target + length1, source2, static_cast<std::size_t>(length2));
    characters_ = target;
}

[[gnu::noinline]] void XCString::ConcatInPlace(int length, const char* source) {
    if (length == 0) return;
    XCStringData* data = GetData();
    const std::int32_t before = data->length;
    if (data->refCount <= 1 && length <= data->allocLength - before) {
        // There is room for a character, so that this isn't the shared empty buffer.
        char* end = characters_ + before;
        strings::MoveText(end, source, static_cast<std::size_t>(length));
        end[length] = 0;
        data->length = before + length;
        return;
    }
    // `source` may lie in the old buffer, which therefore lives on until the new one is complete.
    ConcatCopy(before, characters_, length, source);
    Release(data);
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

int XCString::SafeStrlen(const char* text) {
    if (text == nullptr) return 0;
    // A text too long for the class stays too long for it, whatever its length modulo 2^32.
    return static_cast<int>(std::min<std::size_t>(std::strlen(text), strings::kMaxLength + 1));
}
