// usage: unload MODULE
//
// What comes and goes with a module that a program loads and unloads again and again: all address
// space, unless a pool is left whose blocks the program may still read. An address sanitizer keeps
// memory of its own for each load; there it counts that nothing of what came is closed to others.
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "module/loading.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace {

using namespace veldt::tests;

#if defined(__SANITIZE_ADDRESS__)

bool IsGone(const char* address, std::size_t, std::size_t) {
    return __asan_address_is_poisoned(address) == 0;
}

#else

bool IsGone(const char*, std::size_t before, std::size_t after) {
    return before == after;
}

#endif

/// Loads the module, makes blocks of every kind, and unloads it. Gives the first of the blocks,
/// which is worth something if the pool was left.
char* Use(const char* path, bool leavePool) {
    auto* module = Load(path);
    if (module == nullptr) return nullptr;
    const auto init = reinterpret_cast<int (*)()>(Symbol(module, "_Z16XMemInitInstancev"));
    const auto exit = reinterpret_cast<void (*)()>(Symbol(module, "_Z16XMemExitInstancev"));
    const auto make = reinterpret_cast<char* (*)(int)>(Symbol(module, "_Z8_XNewPtri"));
    char* first = nullptr;
    if (init() == 1) {
        first = make(10);
        std::strcpy(first, "not lost");
        for (const int size : {10, 1000, 100'000}) {
            make(size);
        }
    }
    if (!leavePool) exit();
    Unload(module);
    return first;
}

}  // namespace

int main(int, char** arguments) {
    const char* const path = arguments[1];
    // The first times the system's loader keeps something of its own.
    std::size_t before = 0;
    const char* gone = nullptr;
    for (int i = 0; i < 20; ++i) {
        if (i == 4) before = AddressesInUse();
        gone = Use(path, false);
        if (gone == nullptr) {
            std::printf("%s can't be loaded and used\n", path);
            return 1;
        }
    }
    const std::size_t after = AddressesInUse();
    const bool isGone = IsGone(gone, before, after);
    const char* const left = Use(path, true);
    const bool kept = std::strcmp(left, "not lost") == 0;
    std::printf("in use after 4 times: %zu, after 20: %zu; a block left behind reads '%s'\n",
                before, after, left);
    return isGone && kept ? 0 : 1;
}
