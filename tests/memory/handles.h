// Handles as strings, and an instance around each test that ends with the heap in order.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <string>
#include <string_view>

namespace veldt::tests {

inline char** NewHandle(std::string_view bytes) {
    char** h = _XNewHandle(static_cast<std::int32_t>(bytes.size()));
    bytes.copy(*h, bytes.size());
    return h;
}

inline std::string BytesOf(char** h) {
    return std::string(*h, static_cast<std::size_t>(XGetHandleSize(h)));
}

inline std::uint32_t LiveHandles() {
    XHeapStatistics statistics;
    XHeapGetStatistics(&statistics);
    return statistics.slotsInUse;
}

/// Leaves kMemFull in the register, to see what a call makes of it.
inline void SpoilMemError() {
    _XNewPtr(-1);
}

class WithInstance : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(XMemInitInstance(), 1); }
    void TearDown() override {
        char wrong[200] = "";
        EXPECT_EQ(XHeapCheck(wrong, sizeof wrong), 1) << wrong;
        XMemExitInstance();
    }
};

}  // namespace veldt::tests
