// A test program that compiles refusing_new.cpp has a global operator new that can be told to
// refuse, and that counts what is live. For tests on one thread.
#pragma once

namespace veldt::tests {

/// While one of these lives, the `nth` request of operator new from its start on, counted from 1,
/// finds no memory. Assertions allocate: keep them out of its scope.
class RefusedNew {
  public:
    explicit RefusedNew(long nth);
    ~RefusedNew();
    RefusedNew(const RefusedNew&) = delete;
    RefusedNew& operator=(const RefusedNew&) = delete;

    /// Whether the request has come.
    bool Happened() const;
};

/// Blocks obtained from operator new and not yet given back.
long LiveBlocks();

}  // namespace veldt::tests
