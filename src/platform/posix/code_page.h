// An ANSI code page as two tables: what its bytes stand for, and which bytes stand for a character.
//
// The tables are read off iconv once, when the host first names the page, so that a conversion
// needs no state, no lock and no system call. The default page, 1252, needs no iconv at all.
#pragma once

#include <memory>

namespace veldt::platform {

inline constexpr unsigned kUtf8 = 65001;
/// How many numbers NewCodePage knows.
inline constexpr unsigned kKnownPageCount = 15;

/// Never changes once built. For UTF-8, whose characters come by rule, the tables stay empty.
struct CodePage {
    unsigned number;
    /// What stands for a sequence of bytes that the page doesn't define.
    unsigned short undefinedWide;
    /// Which bytes begin a character of two.
    bool isLead[256];
    /// By byte: what it stands for alone. Not used for lead bytes.
    unsigned short single[256];
    /// By lead byte times 256 plus trail byte: what the two stand for, 0 for nothing. Null in a
    /// page of single bytes.
    std::unique_ptr<unsigned short[]> pairs;
    /// By 16-bit unit: its byte, or its lead byte times 256 plus its trail byte; 0 for none.
    unsigned short bytes[65536];
};

/// 1252, which every process starts with.
const CodePage& DefaultCodePage();

/// Builds a page from iconv. Null if the number isn't one of those in host.h, if the system's
/// iconv lacks it, or if there is no memory.
std::unique_ptr<CodePage> NewCodePage(unsigned number);

}  // namespace veldt::platform
