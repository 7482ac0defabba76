// Where paths in the system's form lead, and what matches a pattern.
#include "platform/posix/paths.h"

#include <gtest/gtest.h>
#include <veldt20/host.h>

#include <filesystem>
#include <string>

#include "files/scratch.h"
#include "platform/posix/wildcards.h"

namespace veldt::tests {

using namespace platform;

namespace {

// Leaves the drives and the code page as they are at a program's start.
class Paths : public testing::Test {
  protected:
    ~Paths() override {
        XHostMountDrive('c', "/");
        XHostMountDrive('d', nullptr);
        XHostSetCodePage(1252);
    }

    // The kernel's path, or the number of the error.
    static std::string Translated(const std::string& path) {
        KernelPath out;
        const DWORD error = TranslatePath(path.c_str(), out);
        return error == 0 ? out.text : std::to_string(error);
    }
};

}  // namespace

TEST_F(Paths, LeadWhereTheDriveIsMounted) {
    EXPECT_EQ(XHostMountDrive('d', "/mnt/data/"), 1);
    const std::pair<std::string, std::string> cases[] = {
        {"C:\\", "/"},
        {"c:\\dir\\file.txt", "/dir/file.txt"},
        {"C:dir", "/dir"},
        {"\\dir\\\\file\\", "/dir/file/"},
        {"dir/file", "dir/file"},
        {"..\\up", "../up"},
        {"D:\\a b", "/mnt/data/a b"},
        {"D:\\..\\..\\a\\.\\..\\..\\b", "/mnt/data/././a/./.././b"},
        {"\\\\?\\D:\\a", "/mnt/data/a"},
        {"\\\\host\\share\\a", "53"},
        {"E:\\a", "3"},
        {"", "3"},
        {"D:\\" + std::string(5000, 'n'), "206"},
    };
    for (const auto& [path, kernel] : cases) EXPECT_EQ(Translated(path), kernel);
    for (std::size_t length = sizeof(KernelPath) - 32; length <= sizeof(KernelPath); ++length) {
        const std::string name(length, 'n');
        KernelPath out;
        const bool fits = TranslatePath(("C:\\" + name).c_str(), out) == 0;
        ASSERT_EQ(fits, length + 2 <= sizeof out.text) << length;
        ASSERT_TRUE(!fits || out.text == "/" + name);
    }
    EXPECT_EQ(XHostMountDrive('1', "/"), 0);
    EXPECT_EQ(XHostMountDrive('C', "/mnt"), 1);
    EXPECT_EQ(Translated("\\a"), "/mnt/a");
    EXPECT_EQ(XHostMountDrive('d', nullptr), 1);
    EXPECT_EQ(Translated("D:\\a"), "3");
}

// An empty directory and a relative one are taken from the current directory, at each use.
TEST_F(Paths, RelativeMountsFollowTheCurrentDirectory) {
    const Scratch scratch;
    scratch.Fill("a", "");
    XHostMountDrive('d', "");
    EXPECT_EQ(GetFileAttributesA("D:\\a"), INVALID_FILE_ATTRIBUTES);
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(scratch.Host(""));
    for (const char* path : {"D:\\a", "a", "D:\\..\\a"}) {
        EXPECT_EQ(GetFileAttributesA(path), FILE_ATTRIBUTE_NORMAL);
    }
    EXPECT_EQ(GetFileAttributesA("none"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    std::filesystem::current_path(home);
}

// In code page 932 the second byte of a character can be 0x5C, which is the backslash.
TEST_F(Paths, TrailBytesAreNoSeparators) {
    ASSERT_EQ(XHostSetCodePage(932), 1);
    EXPECT_EQ(Translated("C:\\\x83\\\\a"), "/\x83\\/a");
    XCString out;
    XFileSpec(XCString("C:\\dir\\\x83\\a")).GetName(out);
    EXPECT_STREQ(out, "\x83\\a");
    XFileSpec(XCString("C:\\\x83\\a\\b")).GetPosixStylePath(out);
    EXPECT_STREQ(out, "/C:/\x83\\a/b");
    EXPECT_TRUE(MatchesWildcards("\x83\\.a", "?.a"));
}

TEST_F(Paths, PatternsMatchNames) {
    const std::pair<const char*, const char*> matches[] = {
        {"*", "a"},          {"*.*", "a"},     {"*.*", "a.b.c"}, {"a*", "a"},
        {"*a*b*", "xaxxbx"}, {"*ab", "aab"},   {"a?c", "abc"},   {"*ab*", "aacab"},
        {"a.*", "a"},        {"abc??", "abc"}, {"*.txt", ".txt"}};
    for (const auto& [pattern, name] : matches) {
        EXPECT_TRUE(MatchesWildcards(name, pattern)) << pattern << " and " << name;
    }
    const std::pair<const char*, const char*> misfits[] = {
        {"a?c", "ac"}, {"a.*", "ab"}, {"*.txt", "a.txt2"}, {"A*", "a"}, {"a*b*c*d", "abcabcabe"}};
    for (const auto& [pattern, name] : misfits) {
        EXPECT_FALSE(MatchesWildcards(name, pattern)) << pattern << " and " << name;
    }
}

}  // namespace veldt::tests
