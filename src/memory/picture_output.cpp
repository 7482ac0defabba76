#include "memory/picture_output.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace veldt::memory {

void PictureOutput::Print(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start has just filled it.
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    Put(text, std::min<std::size_t>(static_cast<std::size_t>(length), sizeof text - 1));
}

void PictureOutput::PutEscaped(const char* text) {
    for (; *text != '\0'; ++text) {
        switch (*text) {
            case '&':
                Print("&amp;");
                break;
            case '<':
                Print("&lt;");
                break;
            case '>':
                Print("&gt;");
                break;
            default:
                Put(text, 1);
        }
    }
}

void PictureOutput::Strip(int x, int y, int width, int height, Tint tint) {
    constexpr const char* kColours[kTints] = {"#b8c0c8", "#eceff2", "#3b7dd8", "#e0782f",
                                              "#3f9e78"};
    Print("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"%s\"/>\n", x, y, width, height,
          kColours[tint]);
}

bool PictureOutput::Flush() {
    if (used_ > 0 && !refused_) {
        refused_ = writer_(buffer_, static_cast<std::uint32_t>(used_), context_) == 0;
    }
    used_ = 0;
    return !refused_;
}

void PictureOutput::Put(const char* text, std::size_t length) {
    if (used_ + length > sizeof buffer_) {
        Flush();
    }
    std::memcpy(buffer_ + used_, text, length);
    used_ += length;
}

}  // namespace veldt::memory
