#include <gtest/gtest.h>
#include <veldt20/files.h>

#include "files/scratch.h"
#include "platform.h"

namespace {

using veldt::tests::FileAt;

class Files : public testing::Test {
  protected:
    Files() { ClearPendingError(); }

    const veldt::tests::Scratch scratch_;
};

TEST_F(Files, PathsAreTakenApart) {
    XFileSpec other(XCString("C:\\dir\\file.tar.gz")), spec;
    spec = other;
    const XFile file(&spec);
    char buffer[32];
    EXPECT_STREQ(file.GetPathname(buffer), "C:\\dir\\file.tar.gz");
    EXPECT_STREQ(file.GetName(buffer), "file.tar.gz");
    EXPECT_STREQ(file.GetBasename(buffer), "file.tar");
    EXPECT_STREQ(file.GetExtension(buffer), "gz");
    EXPECT_STREQ(file.GetPath(buffer), "C:\\dir");
}

TEST_F(Files, BytesGoOutAndComeBack) {
    XFile file = FileAt(scratch_.Path("file"));
    ASSERT_EQ(file.Create() + file.Open(XFile::PermissionReadWrite), 2);
    EXPECT_EQ(file.IsOpen(), 1);
    EXPECT_EQ(file.Write("content", 7, 0, 0), 7u);
    char back[8] = {};
    EXPECT_EQ(file.Read(back, 8, 0, 0), 7u);
    EXPECT_STREQ(back, "content");
    EXPECT_EQ(file.GetError(), XFile::ErrorEndOfFile);
    file.ClearError();
    EXPECT_EQ(file.GetError(), XFile::ErrorNone);
    EXPECT_EQ(file.SetEOF(3, 0), 1);
    std::int32_t low = 0;
    std::int32_t high = -1;
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low + high, 3);
    file.Rename("other");
    EXPECT_EQ(file.IsOpen(), 0);
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    EXPECT_EQ(file.Close() + file.Delete(), 2);
    EXPECT_EQ(file.Exists(), 0);
}

TEST_F(Files, ObjectsTellWhatTheyAre) {
    const XFile directory = FileAt(scratch_.Path("directory"));
    XFile same = FileAt("");
    EXPECT_EQ(same != directory, 1);
    same = directory;
    EXPECT_EQ(same == directory, 1);
    ASSERT_EQ(same.CreateDirectoryA(), 1);
    EXPECT_EQ(same.IsDirectory() - same.IsFile() - same.IsTemporary(), 1);
    EXPECT_EQ(same.GetPlatformSpec()->Exists(), 1);
    EXPECT_EQ(same.GetType() | same.GetCreator(), 0);
    EXPECT_EQ(same.SetType(1) | same.SetCreator(1), 0);
}

}  // namespace
