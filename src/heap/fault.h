// What a check of the heap's invariants found.
#pragma once

namespace veldt::heap {

/// An invariant that does not hold, and the record or block at which it does not.
struct HeapFault {
    const char* what = nullptr;  ///< null: everything holds
    const void* where = nullptr;

    explicit operator bool() const { return what != nullptr; }
};

}  // namespace veldt::heap
