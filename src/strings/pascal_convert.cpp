// Conversions between length-prefixed strings, terminated texts and XCString.
#include <veldt20/strings_pascal.h>
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

// Where a conversion runs in place the length byte lies among the characters, so that it is read
// before they move and written after.

char* PStr2CStr(const unsigned char* from, char* to, std::int16_t limit) {
    if (from == nullptr || to == nullptr) return nullptr;
    const auto length = static_cast<std::size_t>(std::clamp<int>(limit, 0, from[0]));
    std::memmove(to, from + 1, length);
    to[length] = 0;
    return to;
}

unsigned char* CStr2PStr(const char* from, unsigned char* to, std::int16_t limit) {
    if (from == nullptr || to == nullptr) return nullptr;
    const auto most = static_cast<std::size_t>(std::max<int>(limit, 0));
    const std::size_t length = std::min(std::strlen(from), most);
    std::memmove(to + 1, from, length);
    to[0] = static_cast<unsigned char>(length);
    return to;
}

char* _PtoCstr(unsigned char* from, char* to) {
    if (from == nullptr) return nullptr;
    char* target = to != nullptr ? to : reinterpret_cast<char*>(from);
    const std::size_t length = from[0];
    std::memmove(target, from + 1, length);
    target[length] = 0;
    return target;
}

char* _CtoPstr(char* from, unsigned char* to) {
    if (from == nullptr) return nullptr;
    unsigned char* target = to != nullptr ? to : reinterpret_cast<unsigned char*>(from);
    const std::size_t length = std::strlen(from) & 0xFF;
    std::memmove(target + 1, from, length);
    target[0] = static_cast<unsigned char>(length);
    return reinterpret_cast<char*>(target);
}

void XCStringToPStr(const XCString& from, unsigned char* to, int size) {
    const int length = std::min(from.GetLength(), size - 1);
    to[0] = static_cast<unsigned char>(length);
    std::memcpy(to + 1, static_cast<const char*>(from), static_cast<std::size_t>(length));
}
