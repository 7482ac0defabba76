#include "module/loading.h"
#include "platform.h"

namespace veldt::tests {

void* Load(const char* path) {
    return LoadLibraryA(path);
}

void Unload(void* module) {
    FreeLibrary(static_cast<HMODULE>(module));
}

void* Symbol(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

std::size_t AddressesInUse() {
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION part;
    for (const char* at = nullptr; VirtualQuery(at, &part, sizeof part) != 0;
         at += part.RegionSize) {
        bytes += part.State != MEM_FREE ? part.RegionSize : 0;
    }
    return bytes;
}

}  // namespace veldt::tests
