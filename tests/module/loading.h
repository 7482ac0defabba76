// A module that comes and goes, and the addresses that it takes.
#pragma once

#include <cstddef>

namespace veldt::tests {

/// Null if it can't be loaded.
void* Load(const char* path);
void Unload(void* module);
void* Symbol(void* module, const char* name);

/// How much of this process's address space is not free, in a unit of the system's.
std::size_t AddressesInUse();

}  // namespace veldt::tests
