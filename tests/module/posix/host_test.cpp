#include <gtest/gtest.h>
#include <veldt20/files.h>
#include <veldt20/host.h>
#include <veldt20/strings.h>

namespace {

int Answer(const char*, const char*, unsigned int) {
    return 2;
}

TEST(Host, TellsTheLibraryAboutItsSurroundings) {
    EXPECT_EQ(XHostSetCodePage(1), 0);
    EXPECT_EQ(XHostSetCodePage(65001), 1);
    unsigned short wide[] = {0x20AC, 0};
    EXPECT_STREQ(XCString(wide), "\xE2\x82\xAC");
    EXPECT_EQ(XHostSetCodePage(1252), 1);
    EXPECT_STREQ(XCString(wide), "\x80");
    // A backslash is the second half of a character in one page, and ends a name in the other.
    const XFileSpec spec(XCString("\\a\x83\\b"));
    XCString name;
    spec.GetName(name);
    EXPECT_STREQ(name, "b");
    EXPECT_EQ(XHostSetCodePage(932), 1);
    spec.GetName(name);
    EXPECT_STREQ(name, "a\x83\\b");
    EXPECT_EQ(XHostSetCodePage(1252), 1);

    XFileSpec drive(XCString("Q:\\"));
    drive.Append("tmp");
    EXPECT_EQ(drive.Exists(), 0);
    EXPECT_EQ(XHostMountDrive('q', "/"), 1);
    EXPECT_EQ(drive.Exists(), 1);
    EXPECT_EQ(XHostMountDrive('q', nullptr), 1);
    EXPECT_EQ(drive.Exists(), 0);

    EXPECT_EQ(XHostSetString(nullptr, 7, "seven"), 1);
    XCString text;
    EXPECT_EQ(text.LoadStringA(nullptr, 7), 1);
    EXPECT_STREQ(text, "seven");
    EXPECT_EQ(XHostSetString(nullptr, 7, nullptr), 1);
    EXPECT_EQ(text.LoadStringA(nullptr, 7), 0);

    XHostSetMessageBox(Answer);
    XHostSetMessageBox(nullptr);
}

}  // namespace
