// XString: searching and changing the text.
#include <veldt20/strings_xstring.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "strings/pascal_form.h"

namespace {

using veldt::strings::kMaxPascalLength;

void Move(unsigned char* to, const unsigned char* from, int count) {
    if (count > 0) std::memmove(to, from, static_cast<std::size_t>(count));
}

}  // namespace

int XString::IndexOfChar(unsigned char c) const {
    if (c == 0) return -1;
    const char* found = std::strchr(GetCStr(), c);
    return found != nullptr ? static_cast<int>(found - GetCStr()) : -1;
}

int XString::RightIndexOfChar(unsigned char c) const {
    const unsigned char* own = GetPStr() + 1;
    int index = GetLength() - 1;
    while (index >= 0 && own[index] != c) --index;
    return index;
}

void XString::ReplaceChar(unsigned char oldCharacter, unsigned char newCharacter) {
    for (unsigned char* p = GetPStr() + 1; *p != 0; ++p) {
        if (*p == oldCharacter) *p = newCharacter;
    }
}

int XString::StripChar(unsigned char c) {
    const int index = IndexOfChar(c);
    if (index < 0) return 0;
    const int length = GetLength();
    unsigned char* found = GetPStr() + 1 + index;
    Move(found, found + 1, length - index);
    DoSetLength(length - 1);
    return 1;
}

int XString::StripChars(const XString& set) {
    // Read before the first write, so that a string can be stripped of its own characters.
    bool inSet[kMaxPascalLength + 1] = {};
    for (const char* p = set.GetCStr(); *p != 0; ++p) inSet[static_cast<unsigned char>(*p)] = true;
    unsigned char* own = GetPStr() + 1;
    const int length = GetLength();
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        if (!inSet[own[i]]) own[kept++] = own[i];
    }
    if (kept != length) Truncate(kept);
    return 0;
}

int XString::TruncateAtChar(unsigned char c) {
    const int index = IndexOfChar(c);
    if (index < 0) return 0;
    Truncate(index);
    return 1;
}

void XString::DoStrCopy(const unsigned char* source, int length, int capacity) {
    const int count = std::min(length, capacity);
    Move(GetPStr() + 1, source, count);
    Truncate(count);
}

void XString::DoStrAppend(const unsigned char* source, int length, int capacity) {
    const int own = GetLength();
    // The sum could overflow where the room can't.
    const int count = std::min(length, capacity - own);
    Move(GetPStr() + 1 + own, source, count);
    Truncate(own + count);
}

void XString::DoCharArrayCopy(const unsigned char* source, int length, int capacity) {
    const int most = std::max(std::min(length, capacity), 0);
    const void* end = most > 0 ? std::memchr(source, 0, static_cast<std::size_t>(most)) : nullptr;
    const auto count =
        end != nullptr ? static_cast<int>(static_cast<const unsigned char*>(end) - source) : most;
    Move(GetPStr() + 1, source, count);
    Truncate(count);
}

void XString::DoReplaceAtChar(unsigned char c, const unsigned char* source, int length,
                              int capacity) {
    const int index = IndexOfChar(c);
    if (index < 0) return;
    const int own = GetLength();
    const int count = std::min(length, std::min(capacity, kMaxPascalLength) - own + 1);
    // The source may lie in the text that moves first.
    unsigned char replacement[kMaxPascalLength];
    Move(replacement, source, count);
    unsigned char* found = GetPStr() + 1 + index;
    Move(found + count, found + 1, own - index - 1);
    Move(found, replacement, count);
    Truncate(own - 1 + count);
}
