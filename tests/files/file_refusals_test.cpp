// What shows only from inside: memory that is refused, and the platform's error numbers.
#include <gtest/gtest.h>

#include <string>

#include "files/platform_errors.h"
#include "files/scratch.h"
#include "support/refusing_new.h"

namespace veldt::tests {

// Whichever request for memory is refused, the caller learns of it, and the path and a result of
// before stay whole, and no block is lost.
TEST(FileRefusals, OfMemoryLeaveAPathWhole) {
    bool happened = true;
    const long before = LiveBlocks();
    for (long nth = 1; happened; ++nth) {
        XFileSpec spec(XCString("C:\\dir\\file.tar.gz"));
        const XFile file(&spec);
        XCString name("before"), path("before");
        bool threw = false;
        {
            const RefusedNew refusal(nth);
            try {
                spec.GetName(name);
                spec.GetPath(path, 1);
                spec.GetExtension(name);
                operator delete(file.GetBasename(nullptr));
                operator delete(file.GetExtension(nullptr));
                spec.Append("!");
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            happened = refusal.Happened();
        }
        EXPECT_EQ(threw, happened);
        EXPECT_TRUE(name == "before" || name == "file.tar.gz" || name == "tar.gz");
        EXPECT_TRUE(path == "before" || path == "/C:/dir/file.tar.gz");
        EXPECT_EQ(std::string(spec.GetNativeFileSpec()).back(), happened ? 'z' : '!');
    }
    EXPECT_EQ(LiveBlocks(), before);
}

TEST(FileRefusals, OfThePlatformAreMapped) {
    const std::pair<platform::DWORD, int> cases[] = {
        {0, 0},   {2, 7},  {3, 3},  {5, 2},  {19, 2}, {20, 3},  {21, 13},  {29, 12},
        {30, 11}, {32, 2}, {33, 2}, {38, 1}, {80, 8}, {183, 8}, {112, 14}, {0xFFFFFFFF, 14}};
    for (const auto& [number, error] : cases) {
        EXPECT_EQ(files::MapPlatformError(number), error) << number;
    }
    platform::SetLastError(42);
    EXPECT_EQ(XFileSpec().Exists(), 0);
    EXPECT_EQ(platform::GetLastError(), 42u) << "an empty path was looked for";
}

}  // namespace veldt::tests
