// A test program that compiles system_calls.cpp has its own versions of the kernel's file calls,
// which do as the test says and then go on to the real ones.
#pragma once

#include <deque>
#include <functional>

namespace veldt::tests {

/// What the next calls meet, in turn; after the last, they are left alone. A number above 0 is the
/// errno value that the call fails with, one below 0 the most bytes that it moves.
struct ScriptedCalls {
    std::deque<int> reads, writes, truncations, openings, locks;
    std::function<void()> beforeLock;  ///< runs once
};

extern ScriptedCalls scripted;

}  // namespace veldt::tests
