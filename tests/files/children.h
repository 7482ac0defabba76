// Work in a process of its own, for what only shows between processes or would outlast a test.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace veldt::tests {

/// Starts a child that does `work` and gives its number. The child's exit status is 1 if an
/// expectation failed in it.
template <class Work>
pid_t StartChild(Work work) {
    const pid_t child = fork();
    if (child != 0) return child;
    work();
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
}

/// Waits for a child to end; its exit status, or -1 if a signal ended it.
inline int EndOf(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace veldt::tests
