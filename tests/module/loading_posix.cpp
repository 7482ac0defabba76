#include <dlfcn.h>

#include <fstream>

#include "module/loading.h"

namespace veldt::tests {

void* Load(const char* path) {
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

void Unload(void* module) {
    dlclose(module);
}

void* Symbol(void* module, const char* name) {
    return dlsym(module, name);
}

std::size_t AddressesInUse() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages;
}

}  // namespace veldt::tests
