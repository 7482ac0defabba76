// Conversions between length-prefixed strings, terminated texts and XCString.
#include <veldt20/strings_pascal.h>
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "strings/pascal_form.h"

namespace strings = veldt::strings;

char* PStr2CStr(const unsigned char* from, char* to, std::int16_t limit) {
    if (from == nullptr || to == nullptr) return nullptr;
    const auto length = static_cast<std::size_t>(std::clamp<int>(limit, 0, from[0]));
    return strings::StoreTerminated(to, from + 1, length);
}

unsigned char* CStr2PStr(const char* from, unsigned char* to, std::int16_t limit) {
    if (from == nullptr || to == nullptr) return nullptr;
    const auto most = static_cast<std::size_t>(std::max<int>(limit, 0));
    return strings::StorePascal(to, from, std::min(std::strlen(from), most));
}

char* _PtoCstr(unsigned char* from, char* to) {
    if (from == nullptr) return nullptr;
    char* target = to != nullptr ? to : reinterpret_cast<char*>(from);
    return strings::StoreTerminated(target, from + 1, from[0]);
}

char* _CtoPstr(char* from, unsigned char* to) {
    if (from == nullptr) return nullptr;
    unsigned char* target = to != nullptr ? to : reinterpret_cast<unsigned char*>(from);
    return reinterpret_cast<char*>(strings::StorePascal(target, from, std::strlen(from) & 0xFF));
}

void XCStringToPStr(const XCString& from, unsigned char* to, int size) {
    const int length = std::min(from.GetLength(), size - 1);
    strings::StorePascal(to, static_cast<const char*>(from), static_cast<std::size_t>(length));
}
