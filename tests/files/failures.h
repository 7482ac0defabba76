// How the tests on files look at what failed.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

#include "files/scratch.h"
#include "platform.h"

namespace veldt::tests {

/// Wine reports a few failures by other numbers than the system that it stands in for.
inline bool UnderWine() {
    return std::getenv("WINEPREFIX") != nullptr;
}

/// Expects that an operation gave 0 and left `error`. Then takes back that and the platform's last
/// error, which could count as the next operation's own.
template <class Result>
void ExpectFailure(const XFile& file, Result result, XFile::Error error) {
    EXPECT_EQ(result, Result{0});
    EXPECT_EQ(file.GetError(), error);
    file.ClearError();
    ClearPendingError();
}

}  // namespace veldt::tests
