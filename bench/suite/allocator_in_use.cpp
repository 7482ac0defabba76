#include "suite/allocator_in_use.h"

#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <malloc.h>

#include <cstddef>

namespace veldt::bench {

namespace {

/// The preloaded allocator's function of this name, null if it isn't that allocator.
template <class Function>
Function* Find(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

using MiVersion = int();
using MiCollect = void(bool);
using Mallctl = int(const char*, void*, std::size_t*, void*, std::size_t);
using TcVersion = const char*(int*, int*, const char**);
using TcRelease = void();

std::string JemallocVersion(Mallctl* mallctl) {
    const char* version = "";
    std::size_t size = sizeof version;
    mallctl("version", &version, &size, nullptr, 0);
    const std::string whole = version;
    return whole.substr(0, whole.find('-'));
}

std::string TcmallocVersion(TcVersion* version) {
    int major = 0;
    int minor = 0;
    const char* patch = "";
    version(&major, &minor, &patch);
    return std::to_string(major) + "." + std::to_string(minor) + patch;
}

}  // namespace

std::string AllocatorInUse() {
    if (auto* version = Find<MiVersion>("mi_version")) {
        const int v = version();
        return "mimalloc " + std::to_string(v / 100) + "." + std::to_string(v / 10 % 10) + "." +
               std::to_string(v % 10);
    }
    if (auto* mallctl = Find<Mallctl>("mallctl")) return "jemalloc " + JemallocVersion(mallctl);
    if (auto* version = Find<TcVersion>("tc_version")) {
        return "tcmalloc " + TcmallocVersion(version);
    }
    return std::string("C library ") + gnu_get_libc_version();
}

void GiveBack() {
    if (auto* collect = Find<MiCollect>("mi_collect")) {
        collect(true);
    } else if (auto* mallctl = Find<Mallctl>("mallctl")) {
        mallctl("thread.tcache.flush", nullptr, nullptr, nullptr, 0);
        mallctl("arena.4096.purge", nullptr, nullptr, nullptr, 0);  // 4096 stands for all arenas
    } else if (auto* release = Find<TcRelease>("MallocExtension_ReleaseFreeMemory")) {
        release();
    } else {
        malloc_trim(0);
    }
}

}  // namespace veldt::bench
