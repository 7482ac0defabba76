#include <gtest/gtest.h>
#include <veldt20/files.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>

#include "platform.h"

namespace {

class Files : public testing::Test {
  protected:
    Files() {
        do {
            directory_ = std::filesystem::temp_directory_path() /
                         ("veldt20-module-" + std::to_string(std::random_device{}()));
        } while (!std::filesystem::create_directory(directory_));
        ClearPendingError();
    }
    ~Files() override {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }

    XFileSpec Spec(const char* name) const {
        std::string path = (directory_ / name).string();
        std::replace(path.begin(), path.end(), '/', '\\');
        if (path[0] == '\\') path.insert(0, "C:");
        return XFileSpec(XCString(path.c_str()));
    }

  private:
    std::filesystem::path directory_;
};

TEST_F(Files, PathsAreTakenApart) {
    XFileSpec spec(XCString("C:\\dir\\"));
    spec.Append("file.txt");
    XFileSpec copy(spec);
    XFileSpec other;
    other = copy;
    XCString part;
    const XFileSpec& fixed = other;
    EXPECT_STREQ(fixed.GetNativeFileSpec(), "C:\\dir\\file.txt");
    fixed.GetPath(part, 0);
    EXPECT_STREQ(part, "C:\\dir\\file.txt");
    fixed.GetPosixStylePath(part);
    EXPECT_STREQ(part, "/C:/dir/file.txt");
    fixed.GetName(part);
    EXPECT_STREQ(part, "file.txt");
    XStr<255> name;
    fixed.GetName(name);
    EXPECT_STREQ(name.GetCStr(), "file.txt");
    XFileSpec::GetExtension(part, part);
    EXPECT_STREQ(part, "txt");
    fixed.GetExtension(part);
    EXPECT_STREQ(part, "txt");
    other.SetNativeFileSpec(XCString("Q:\\no\\such"));
    EXPECT_STREQ(other.GetNativeFileSpec(), "Q:\\no\\such");
    EXPECT_EQ(other.Exists(), 0);

    XFileSpec path(XCString("C:\\dir\\file.tar.gz"));
    const XFile file(&path);
    char buffer[32];
    EXPECT_STREQ(file.GetPathname(buffer), "C:\\dir\\file.tar.gz");
    EXPECT_STREQ(file.GetName(buffer), "file.tar.gz");
    EXPECT_STREQ(file.GetBasename(buffer), "file.tar");
    EXPECT_STREQ(file.GetExtension(buffer), "gz");
    EXPECT_STREQ(file.GetPath(buffer), "C:\\dir");
}

TEST_F(Files, BytesGoOutAndComeBack) {
    XFileSpec spec = Spec("file");
    XFile file(&spec);
    ASSERT_EQ(file.Create(), 1);
    EXPECT_EQ(file.Exists(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(file.IsOpen(), 1);
    EXPECT_EQ(file.Write("content", 7, 0, 0), 7u);
    char back[8] = {};
    EXPECT_EQ(file.Read(back, 7, 0, 0), 7u);
    EXPECT_STREQ(back, "content");
    EXPECT_EQ(file.Read(back, 7, 3, 0), 4u);
    EXPECT_EQ(file.GetError(), XFile::ErrorEndOfFile);
    file.ClearError();
    EXPECT_EQ(file.GetError(), XFile::ErrorNone);
    EXPECT_EQ(file.SetEOF(3, 0), 1);
    std::int32_t low = 0;
    std::int32_t high = -1;
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, 3);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(file.Delete(), 1);
    EXPECT_EQ(file.Exists(), 0);
}

TEST_F(Files, ObjectsTellWhatTheyAre) {
    XFileSpec spec = Spec("directory");
    XFile directory(&spec);
    ASSERT_EQ(directory.CreateDirectoryA(), 1);
    EXPECT_EQ(directory.IsDirectory(), 1);
    EXPECT_EQ(directory.IsFile(), 0);
    EXPECT_EQ(directory.IsTemporary(), 0);
    XFileSpec nowhere;
    XFile same(&nowhere);
    EXPECT_EQ(same != directory, 1);
    same = directory;
    EXPECT_EQ(same == directory, 1);
    EXPECT_STREQ(same.GetPlatformSpec()->GetNativeFileSpec(), spec.GetNativeFileSpec());
    EXPECT_EQ(same.GetType() | same.GetCreator(), 0);
    EXPECT_EQ(same.SetType(1) | same.SetCreator(1), 0);
    spec = Spec("file");
    XFile file(&spec);
    ASSERT_EQ(file.Create(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    file.Rename("other");
    EXPECT_EQ(file.IsOpen(), 0);
}

}  // namespace
