// Conversion between the ANSI code page and 16-bit text.
#include <veldt20/host.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <mutex>

#include "platform/platform.h"
#include "platform/posix/code_page.h"
#include "platform/posix/utf8.h"

namespace veldt::platform {
namespace {

/// The page in force; null is the default one, which is built at its first use.
constinit std::atomic<const CodePage*> currentPage = nullptr;

const CodePage& Current() {
    const CodePage* page = currentPage.load(std::memory_order_acquire);
    return page != nullptr ? *page : DefaultCodePage();
}

/// Where converted text goes: counts it, and stores it where there is a target.
template <typename Unit>
class Output {
  public:
    Output(Unit* target, int size)
        : target_(size == 0 ? nullptr : target), room_(static_cast<std::size_t>(size)) {}

    void Put(Unit unit) {
        if (target_ != nullptr && count_ < room_) target_[count_] = unit;
        ++count_;
    }

    template <typename Source>
    void PutAscii(const Source* source, std::size_t length) {
        if (target_ != nullptr && count_ + length <= room_) {
            for (std::size_t i = 0; i < length; ++i) {
                target_[count_ + i] = static_cast<Unit>(source[i]);
            }
        }
        count_ += length;
    }

    /// The units of the whole result, or 0 if it had no room.
    int Result() const {
        const bool fits = target_ == nullptr || count_ <= room_;
        return fits && count_ <= std::numeric_limits<int>::max() ? static_cast<int>(count_) : 0;
    }

  private:
    Unit* target_;
    std::size_t room_;
    std::uint64_t count_ = 0;
};

/// How many units at the start are ASCII, found out a word at a time.
template <typename Unit>
std::size_t AsciiRun(const Unit* text, std::size_t length) {
    constexpr std::uint64_t kMask = sizeof(Unit) == 1 ? 0x8080808080808080u : 0xFF80FF80FF80FF80u;
    constexpr std::size_t kUnitsPerWord = sizeof(std::uint64_t) / sizeof(Unit);
    std::size_t i = 0;
    for (; length - i >= kUnitsPerWord; i += kUnitsPerWord) {
        std::uint64_t word;
        std::memcpy(&word, text + i, sizeof(word));
        if ((word & kMask) != 0) break;
    }
    while (i < length && text[i] < 0x80) ++i;
    return i;
}

/// The default character is a byte, or two with a lead byte first.
struct Default {
    const char* bytes;
    bool used;
};

void PutBytes(Output<char>& out, unsigned code) {
    if (code > 0xFF) out.Put(static_cast<char>(code >> 8));
    out.Put(static_cast<char>(code));
}

void PutDefault(const CodePage& page, Output<char>& out, Default& fallback) {
    out.Put(fallback.bytes[0]);
    if (page.isLead[static_cast<unsigned char>(fallback.bytes[0])] && fallback.bytes[1] != 0) {
        out.Put(fallback.bytes[1]);
    }
    fallback.used = true;
}

int ToBytes(const CodePage& page, const WCHAR* source, std::size_t length, Output<char> out,
            Default& fallback) {
    for (std::size_t i = 0; i < length;) {
        const std::size_t ascii = AsciiRun(source + i, length - i);
        out.PutAscii(source + i, ascii);
        for (i += ascii; i < length && source[i] >= 0x80; ++i) {
            if (const unsigned code = page.bytes[source[i]]) {
                PutBytes(out, code);
            } else {
                PutDefault(page, out, fallback);
            }
        }
    }
    return out.Result();
}

int ToUtf8(const WCHAR* source, std::size_t length, Output<char> out) {
    for (std::size_t i = 0; i < length;) {
        const std::size_t ascii = AsciiRun(source + i, length - i);
        out.PutAscii(source + i, ascii);
        i += ascii;
        if (i == length) break;
        const Utf16Character character = ReadUtf16(source + i, length - i);
        char bytes[4];
        const int count = WriteUtf8(character.code, bytes);
        for (int k = 0; k < count; ++k) out.Put(bytes[k]);
        i += character.units;
    }
    return out.Result();
}

int ToWide(const CodePage& page, const unsigned char* source, std::size_t length,
           Output<WCHAR> out) {
    for (std::size_t i = 0; i < length;) {
        const std::size_t ascii = AsciiRun(source + i, length - i);
        out.PutAscii(source + i, ascii);
        for (i += ascii; i < length && source[i] >= 0x80; ++i) {
            if (!page.isLead[source[i]]) {
                out.Put(page.single[source[i]]);
            } else if (i + 1 == length || source[i + 1] == 0) {
                out.Put(page.undefinedWide);
            } else {
                const WCHAR wide =
                    page.pairs[static_cast<std::size_t>(source[i] << 8 | source[i + 1])];
                out.Put(wide != 0 ? wide : page.undefinedWide);
                ++i;
            }
        }
    }
    return out.Result();
}

int Utf8ToWide(const CodePage& page, const unsigned char* source, std::size_t length,
               Output<WCHAR> out) {
    for (std::size_t i = 0; i < length;) {
        const std::size_t ascii = AsciiRun(source + i, length - i);
        out.PutAscii(source + i, ascii);
        i += ascii;
        if (i == length) break;
        const Utf8Character character = ReadUtf8(source + i, length - i);
        if (!character.valid) {
            out.Put(page.undefinedWide);
        } else if (character.code < 0x10000) {
            out.Put(static_cast<WCHAR>(character.code));
        } else {
            out.Put(static_cast<WCHAR>(0xD7C0 + (character.code >> 10)));
            out.Put(static_cast<WCHAR>(0xDC00 | (character.code & 0x3FF)));
        }
        i += character.bytes;
    }
    return out.Result();
}

/// The units to read, with -1 for all of a terminated text and its terminator; 0 for a bad request.
template <typename Unit>
std::size_t SourceLength(const Unit* source, int length) {
    if (source == nullptr || length < -1) return 0;
    if (length != -1) return static_cast<std::size_t>(length);
    const Unit* end = source;
    while (*end != 0) ++end;
    return static_cast<std::size_t>(end - source) + 1;
}

}  // namespace

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* source, int sourceLength,
                        char* target, int targetSize, const char* defaultChar, BOOL* usedDefault) {
    const std::size_t length = SourceLength(source, sourceLength);
    if (codePage != CP_ACP || flags != 0 || length == 0 || targetSize < 0) return 0;
    const CodePage& page = Current();
    const Output<char> out(target, targetSize);
    if (page.number == kUtf8) return ToUtf8(source, length, out);
    Default fallback = {defaultChar != nullptr ? defaultChar : "?", false};
    const int count = ToBytes(page, source, length, out, fallback);
    if (usedDefault != nullptr) *usedDefault = fallback.used;
    return count;
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* source, int sourceLength,
                        WCHAR* target, int targetSize) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(source);
    const std::size_t length = SourceLength(bytes, sourceLength);
    if (codePage != CP_ACP || flags != 0 || length == 0 || targetSize < 0) return 0;
    const CodePage& page = Current();
    const Output<WCHAR> out(target, targetSize);
    return page.number == kUtf8 ? Utf8ToWide(page, bytes, length, out)
                                : ToWide(page, bytes, length, out);
}

BOOL IsDBCSLeadByte(BYTE byte) {
    return Current().isLead[byte];
}

}  // namespace veldt::platform

int XHostSetCodePage(unsigned int codePage) {
    using namespace veldt::platform;
    // Pages that were in force once stay, since another thread may be reading one.
    static constinit std::mutex mutex;
    static constinit const CodePage* pages[kKnownPageCount] = {};
    const std::lock_guard lock(mutex);
    for (const CodePage*& page : pages) {
        if (page == nullptr) page = NewCodePage(codePage).release();
        if (page == nullptr) return 0;
        if (page->number == codePage) {
            currentPage.store(page, std::memory_order_release);
            return 1;
        }
    }
    return 0;
}
