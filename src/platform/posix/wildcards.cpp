#include "platform/posix/wildcards.h"

#include <cstring>

#include "platform/platform.h"

namespace veldt::platform {

namespace {

const char* NextCharacter(const char* text) {
    const bool lead = IsDBCSLeadByte(static_cast<BYTE>(*text)) != 0;
    return text + (lead && text[1] != '\0' ? 2 : 1);
}

// Whether what is left of a pattern fits the end of a name.
bool FitsNothing(const char* pattern) {
    pattern += std::strspn(pattern, "*?");
    return *pattern == '\0' || std::strcmp(pattern, ".*") == 0;
}

}  // namespace

bool HasWildcards(const char* text) {
    return std::strpbrk(text, "*?") != nullptr;
}

bool MatchesWildcards(const char* name, const char* pattern) {
    // Behind the latest star, and how far the name was taken by it: where to go on after a misfit.
    const char* starPattern = nullptr;
    const char* starName = nullptr;
    while (*name != '\0') {
        if (*pattern == '*') {
            starPattern = ++pattern;
            starName = name;
        } else if (*pattern == '?') {
            ++pattern;
            name = NextCharacter(name);
        } else if (*pattern == *name) {
            ++pattern;
            ++name;
        } else if (starPattern != nullptr) {
            pattern = starPattern;
            name = starName = NextCharacter(starName);
        } else {
            return false;
        }
    }
    return FitsNothing(pattern);
}

}  // namespace veldt::platform
