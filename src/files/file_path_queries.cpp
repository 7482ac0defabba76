// XFile: the parts of its path, byte by byte.
#include <veldt20/files.h>

#include <cstring>
#include <new>

namespace {

// A part of the path in the caller's buffer, or in a block of its own.
char* Deliver(char* buffer, const char* part, std::size_t length) {
    if (buffer == nullptr) buffer = static_cast<char*>(::operator new(length + 1));
    std::memcpy(buffer, part, length);
    buffer[length] = '\0';
    return buffer;
}

char* Deliver(char* buffer, const char* part) {
    return Deliver(buffer, part, std::strlen(part));
}

// Null if the path ends with a backslash.
const char* NameIn(const char* path) {
    const char* backslash = std::strrchr(path, '\\');
    if (backslash == nullptr) return path;
    return backslash[1] != '\0' ? backslash + 1 : nullptr;
}

}  // namespace

char* XFile::GetPathname(char* buffer) const {
    return Deliver(buffer, PathText());
}

char* XFile::GetName(char* buffer) const {
    const char* name = NameIn(PathText());
    return name != nullptr ? Deliver(buffer, name) : nullptr;
}

char* XFile::GetBasename(char* buffer) const {
    const char* name = NameIn(PathText());
    if (name == nullptr) return nullptr;
    const char* dot = std::strrchr(name, '.');
    if (dot == nullptr) return Deliver(buffer, name);
    return Deliver(buffer, name, static_cast<std::size_t>(dot - name));
}

char* XFile::GetExtension(char* buffer) const {
    const char* dot = std::strrchr(PathText(), '.');
    return dot != nullptr && dot[1] != '\0' ? Deliver(buffer, dot + 1) : nullptr;
}

char* XFile::GetPath(char* buffer) const {
    const char* path = PathText();
    const char* backslash = std::strrchr(path, '\\');
    if (backslash == nullptr) return nullptr;
    return Deliver(buffer, path, static_cast<std::size_t>(backslash - path));
}
