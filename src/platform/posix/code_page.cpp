#include "platform/posix/code_page.h"

#include <iconv.h>

#include <cstddef>
#include <cstdio>
#include <new>

namespace veldt::platform {
namespace {

struct ByteRange {
    int first;
    int last;
};

struct KnownPage {
    unsigned number;
    /// The system reads undefined bytes from 0xA0 up as private characters, numbered on from here
    /// in the order of the bytes, so that they come back unchanged.
    unsigned short firstPrivate;
    ByteRange leads[2];
};

constexpr ByteRange kNoLeads = {0, -1};
constexpr KnownPage kKnownPages[kKnownPageCount] = {
    {874, 0xF8C1, {kNoLeads, kNoLeads}},     {932, 0xF8F0, {{0x81, 0x9F}, {0xE0, 0xFC}}},
    {936, 0xF8F5, {{0x81, 0xFE}, kNoLeads}}, {949, 0xF8F7, {{0x81, 0xFE}, kNoLeads}},
    {950, 0xF8F8, {{0x81, 0xFE}, kNoLeads}}, {1250, 0, {kNoLeads, kNoLeads}},
    {1251, 0, {kNoLeads, kNoLeads}},         {1252, 0, {kNoLeads, kNoLeads}},
    {1253, 0xF8F9, {kNoLeads, kNoLeads}},    {1254, 0, {kNoLeads, kNoLeads}},
    {1255, 0xF88D, {kNoLeads, kNoLeads}},    {1256, 0, {kNoLeads, kNoLeads}},
    {1257, 0xF8FC, {kNoLeads, kNoLeads}},    {1258, 0, {kNoLeads, kNoLeads}},
    {kUtf8, 0, {kNoLeads, kNoLeads}},
};

/// 0x80 to 0x9F of page 1252; from 0xA0 on its bytes are the first 256 characters.
constexpr unsigned short k1252Wide[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

/// One direction of iconv, asked for one character at a time.
class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (IsOpen()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    /// The bytes written to `target`, of at least 16; 0 if `source` isn't one whole character.
    std::size_t Convert(const unsigned char* source, std::size_t length, unsigned char* target) {
        char* in = const_cast<char*>(reinterpret_cast<const char*>(source));
        char* out = reinterpret_cast<char*>(target);
        std::size_t room = 16;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &in, &length, &out, &room) == static_cast<std::size_t>(-1)) return 0;
        // Pages with combining marks hold a letter back until they know what follows it.
        iconv(handle_, nullptr, nullptr, &out, &room);
        return 16 - room;
    }

  private:
    iconv_t handle_;
};

/// What a sequence of bytes stands for, if that is one 16-bit unit; otherwise 0.
unsigned short Decode(Converter& toWide, const unsigned char* bytes, std::size_t length) {
    unsigned char wide[16];
    if (toWide.Convert(bytes, length, wide) != 2) return 0;
    return static_cast<unsigned short>(wide[0] | wide[1] << 8);
}

void ReadSingles(CodePage& page, Converter& toWide, unsigned short nextPrivate) {
    for (int i = 0; i < 256; ++i) {
        if (page.isLead[i]) continue;
        const auto byte = static_cast<unsigned char>(i);
        unsigned short wide = i < 0x80 ? byte : Decode(toWide, &byte, 1);
        // The one undefined byte that the system reads as a public character.
        if (wide == 0 && page.number == 1255 && i == 0xCA) wide = 0x05BA;
        if (wide == 0 && i >= 0x80) wide = i < 0xA0 ? byte : nextPrivate++;
        page.single[i] = wide;
        page.bytes[wide] = byte;
    }
}

void ReadPairs(CodePage& page, Converter& toWide) {
    for (unsigned lead = 0x80; lead < 256; ++lead) {
        if (!page.isLead[lead]) continue;
        for (unsigned trail = 0x40; trail < 0xFF; ++trail) {
            const unsigned char bytes[] = {static_cast<unsigned char>(lead),
                                           static_cast<unsigned char>(trail)};
            const unsigned short wide = Decode(toWide, bytes, 2);
            page.pairs[lead << 8 | trail] = wide;
            if (wide != 0) page.bytes[wide] = static_cast<unsigned short>(lead << 8 | trail);
        }
    }
}

/// Where several pairs stand for one character, or a character without a pair of its own has one
/// that serves, the way back is iconv's to choose.
void ReadWayBack(CodePage& page, Converter& toBytes) {
    for (unsigned unit = 0x80; unit < 0x10000; ++unit) {
        const unsigned char wide[] = {static_cast<unsigned char>(unit),
                                      static_cast<unsigned char>(unit >> 8)};
        unsigned char bytes[16];
        const std::size_t count = toBytes.Convert(wide, 2, bytes);
        if (count == 1 && !page.isLead[bytes[0]]) page.bytes[unit] = bytes[0];
        if (count == 2 && page.isLead[bytes[0]]) {
            page.bytes[unit] = static_cast<unsigned short>(bytes[0] << 8 | bytes[1]);
        }
    }
}

bool ReadPage(CodePage& page, const KnownPage& known) {
    char name[16];
    std::snprintf(name, sizeof(name), "CP%u", known.number);
    Converter toWide("UTF-16LE", name);
    Converter toBytes(name, "UTF-16LE");
    if (!toWide.IsOpen() || !toBytes.IsOpen()) return false;
    for (const ByteRange& range : known.leads) {
        for (int byte = range.first; byte <= range.last; ++byte) page.isLead[byte] = true;
    }
    ReadSingles(page, toWide, known.firstPrivate);
    if (known.leads[0].last < 0) return true;
    page.pairs.reset(new (std::nothrow) unsigned short[65536]());
    if (page.pairs == nullptr) return false;
    ReadPairs(page, toWide);
    ReadWayBack(page, toBytes);
    return true;
}

/// Page 1252 in memory of its own, so that a process which never names a page can't run out of any.
struct Page1252 : CodePage {
    Page1252() : CodePage() {
        number = 1252;
        undefinedWide = '?';
        for (unsigned i = 0; i < 256; ++i) {
            const unsigned wide = i >= 0x80 && i < 0xA0 ? k1252Wide[i - 0x80] : i;
            single[i] = static_cast<unsigned short>(wide);
            bytes[wide] = static_cast<unsigned short>(i);
        }
    }
};

}  // namespace

const CodePage& DefaultCodePage() {
    static const Page1252 page;
    return page;
}

std::unique_ptr<CodePage> NewCodePage(unsigned number) {
    for (const KnownPage& known : kKnownPages) {
        if (known.number != number) continue;
        std::unique_ptr<CodePage> page(new (std::nothrow) CodePage());
        if (page == nullptr) return nullptr;
        page->number = number;
        page->undefinedWide = number == 932 ? 0x30FB : number == kUtf8 ? 0xFFFD : '?';
        if (number != kUtf8 && !ReadPage(*page, known)) return nullptr;
        return page;
    }
    return nullptr;
}

}  // namespace veldt::platform
