// XCString: direct access to the buffer.
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstring>

#include "strings/counted_buffer.h"

namespace strings = veldt::strings;

char* XCString::GetBuffer(int minimum) {
    XCStringData* data = GetData();
    if (data->refCount <= 1 && minimum <= data->allocLength) return characters_;
    XCStringData* roomy = strings::NewBuffer(std::max(minimum, data->length));
    std::memcpy(strings::CharactersOf(roomy), characters_, static_cast<std::size_t>(data->length));
    strings::SetLength(roomy, data->length);
    characters_ = strings::CharactersOf(roomy);
    Release(data);
    return characters_;
}

void XCString::ReleaseBuffer(int length) {
    CopyBeforeWrite();
    strings::SetLength(GetData(), length == -1 ? SafeStrlen(characters_) : length);
}

char* XCString::GetBufferSetLength(int length) {
    GetBuffer(length);
    strings::SetLength(GetData(), length);
    return characters_;
}

void XCString::FreeExtra() {
    XCStringData* data = GetData();
    if (data->length == data->allocLength) return;
    AllocBuffer(data->length);
    if (data->length != 0) {
        std::memcpy(characters_, strings::CharactersOf(data),
                    static_cast<std::size_t>(data->length));
    }
    Release(data);
}

char* XCString::LockBuffer() {
    GetBuffer(0);
    if (!strings::IsEmptyBuffer(GetData())) GetData()->refCount = strings::kNotShared;
    return characters_;
}

void XCString::UnlockBuffer() {
    if (!strings::IsEmptyBuffer(GetData())) GetData()->refCount = 1;
}
