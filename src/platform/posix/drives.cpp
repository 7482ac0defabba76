// Which directory each drive letter stands for.
#include <veldt20/host.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/posix/paths.h"

namespace veldt::platform {

namespace {

// The kernel's root, written without its separator like every other directory here.
constexpr char kRoot[] = "";

std::mutex drivesLock;
// Null where nothing is mounted; everything but kRoot comes from malloc.
const char* drives[26] = {nullptr, nullptr, kRoot};

int DriveIndex(char letter) {
    if (letter >= 'a' && letter <= 'z') return letter - 'a';
    if (letter >= 'A' && letter <= 'Z') return letter - 'A';
    return -1;
}

// A copy without separators at its end. An empty text is the current directory: kept empty it
// would read as the root.
char* CopyDirectory(const char* directory) {
    if (*directory == '\0') directory = ".";
    std::size_t length = std::strlen(directory);
    while (length > 0 && directory[length - 1] == '/') --length;
    char* copy = static_cast<char*>(std::malloc(length + 1));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, directory, length);
    copy[length] = '\0';
    return copy;
}

}  // namespace

bool DriveDirectory(char letter, char* buffer, std::size_t size, std::size_t& length) {
    const int index = DriveIndex(letter);
    if (index < 0) return false;
    const std::lock_guard guard(drivesLock);
    if (drives[index] == nullptr) return false;
    length = strnlen(drives[index], size);
    std::memcpy(buffer, drives[index], length);
    return true;
}

}  // namespace veldt::platform

int XHostMountDrive(char letter, const char* directory) {
    using namespace veldt::platform;
    const int index = DriveIndex(letter);
    if (index < 0) return 0;
    char* copy = nullptr;
    if (directory != nullptr) {
        copy = CopyDirectory(directory);
        if (copy == nullptr) return 0;
    }
    const std::lock_guard guard(drivesLock);
    if (drives[index] != kRoot) std::free(const_cast<char*>(drives[index]));
    drives[index] = copy;
    return 1;
}
