// The allocator that serves malloc in this process: which one was preloaded is known only at run
// time, and so are the calls of its own that it offers.
#pragma once

#include <string>

namespace veldt::bench {

/// Its name and version, such as "mimalloc 2.0.9" or "C library 2.36".
std::string AllocatorInUse();

/// Has it give what it can back to the system, in its own way.
void GiveBack();

}  // namespace veldt::bench
