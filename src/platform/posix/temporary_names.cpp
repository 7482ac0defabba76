// Fresh names for temporary files.
#include <sys/random.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "platform/platform.h"

namespace veldt::platform {

namespace {

// Only has to differ from call to call and be hard to guess; whoever creates the file learns if
// the name was taken.
std::uint64_t RandomBits() {
    std::uint64_t bits;
    if (getrandom(&bits, sizeof bits, GRND_NONBLOCK) == sizeof bits) return bits;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15 + static_cast<unsigned>(getpid());
}

}  // namespace

char* tmpnam(char*) {
    static constexpr char kDirectory[] = "C:\\tmp\\veldt-";
    static constexpr char kDigits[] = "abcdefghijklmnopqrstuvwxyz234567";
    constexpr std::size_t kDigitCount = 12;
    static thread_local char path[sizeof kDirectory + kDigitCount];
    std::memcpy(path, kDirectory, sizeof kDirectory);
    std::uint64_t bits = RandomBits();
    for (char* digit = path + sizeof kDirectory - 1; digit != path + sizeof path - 1; ++digit) {
        *digit = kDigits[bits % 32];
        bits /= 32;
    }
    return path;
}

}  // namespace veldt::platform
