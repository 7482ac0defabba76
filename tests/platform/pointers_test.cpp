#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <string>

#include "platform/platform.h"

namespace {

using namespace veldt::platform;

constexpr SIZE_T kPage = 4096;

TEST(PointerTests, TellWhatCanBeWrittenWithoutWriting) {
    // Writable, then read-only, then without access, then unmapped.
    auto* pages = static_cast<char*>(
        mmap(nullptr, 4 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(pages, MAP_FAILED);
    std::memset(pages, 0x5A, 2 * kPage);
    mprotect(pages + kPage, kPage, PROT_READ);
    mprotect(pages + 2 * kPage, kPage, PROT_NONE);
    munmap(pages + 3 * kPage, kPage);

    for (const SIZE_T at : {SIZE_T{0}, SIZE_T{1}, kPage - 1}) {
        EXPECT_EQ(IsBadWritePtr(pages + at, kPage - at), 0) << at;
    }
    EXPECT_NE(IsBadWritePtr(pages + 1, kPage), 0);
    for (SIZE_T page = 1; page < 4; ++page) EXPECT_NE(IsBadWritePtr(pages + page * kPage, 1), 0);
    EXPECT_EQ(std::string(pages, 2 * kPage), std::string(2 * kPage, 0x5A));
    munmap(pages, 3 * kPage);

    for (const std::uintptr_t wild : {std::uintptr_t{0}, std::uintptr_t{1}, ~std::uintptr_t{0}}) {
        EXPECT_NE(IsBadWritePtr(reinterpret_cast<void*>(wild), 1), 0) << wild;
    }
    EXPECT_NE(IsBadWritePtr(&pages, ~SIZE_T{0}), 0) << "the range wraps round";
    EXPECT_EQ(IsBadWritePtr(nullptr, 0), 0);
    EXPECT_NE(IsBadCodePtr(nullptr), 0);
    EXPECT_EQ(IsBadCodePtr([] { return 0; }), 0);
}

}  // namespace
