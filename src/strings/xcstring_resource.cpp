// XCString: texts from string resources.
#include <veldt20/strings_xcstring.h>

#include <cstddef>
#include <cstring>
#include <memory>

#include "platform/platform.h"

namespace {

/// The buffer for a first try, and what each further one is larger by.
constexpr int kStep = 256;

/// The platform cuts a text that doesn't fit without a word, so a full buffer may hold a part.
bool IsWhole(int count, int size) {
    return size - count > 1;
}

}  // namespace

int XCString::LoadStringA(HINSTANCE__* module, unsigned int id) {
    char first[kStep];
    int count = LoadStringA(module, id, first, kStep);
    if (IsWhole(count, kStep)) {
        *this = first;
        return count > 0;
    }
    // A buffer of its own, so that running out of memory at a later size leaves this text alone.
    std::unique_ptr<char[]> text;
    int size = kStep;
    while (!IsWhole(count, size)) {
        size += kStep;
        text.reset(new char[static_cast<std::size_t>(size)]);
        count = LoadStringA(module, id, text.get(), size);
    }
    std::memcpy(GetBuffer(size - 1), text.get(), std::strlen(text.get()) + 1);
    ReleaseBuffer(-1);
    return count > 0;
}

int XCString::LoadStringA(HINSTANCE__* module, unsigned int id, char* buffer, int size) {
    const int count = veldt::platform::LoadStringA(module, id, buffer, size);
    if (count <= 0) buffer[0] = 0;
    return count;
}
