// What stands in the way on a POSIX file system: each gives its error, and nothing waits.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "files/children.h"
#include "files/failures.h"
#include "platform/platform.h"

namespace veldt::tests {

namespace {

constexpr int kNotAllowed = 77;

/// Expects each opening to fail, and if `forAll` whatever else a path is good for.
void ExpectRefusal(const std::string& path, XFile::Error error, platform::DWORD number,
                   bool forAll = false) {
    SCOPED_TRACE(path.substr(0, 100));
    XFile file = FileAt(path);
    for (const XFile::Permission permission :
         {XFile::PermissionRead, XFile::PermissionWrite, XFile::PermissionReadWrite}) {
        EXPECT_EQ(file.Open(permission), 0);
        EXPECT_EQ(platform::GetLastError(), number);
        EXPECT_EQ(file.GetError(), error);
    }
    if (!forAll) return;
    ExpectFailure(file, file.Create(), error);
    ExpectFailure(file, file.Delete(), error);
    ExpectFailure(file, file.CreateDirectoryA(), error);
    EXPECT_EQ(file.Exists(), 0);
}

// A test that waits for somebody at the other end is ended by a signal.
class Obstacles : public testing::Test {
  protected:
    Obstacles() { alarm(20); }
    ~Obstacles() override { alarm(0); }

    const Scratch scratch_;
};

}  // namespace

TEST_F(Obstacles, PathsThatLeadToNoFile) {
    ASSERT_EQ(mkfifo(scratch_.Host("pipe").c_str(), 0600), 0);
    ASSERT_EQ(mknod(scratch_.Host("socket").c_str(), S_IFSOCK | 0600, 0), 0);
    std::filesystem::create_symlink("missing", scratch_.Host("dangling"));
    std::filesystem::create_symlink("loop", scratch_.Host("loop"));
    std::string path = "C:";
    while (path.size() < 5000) path += "\\directory";
    for (const char* name : {"pipe", "socket", ""}) {
        ExpectRefusal(scratch_.Path(name), XFile::ErrorAccess, 5);
    }
    ExpectRefusal(scratch_.Path("dangling"), XFile::ErrorNotFound, 2);
    ExpectRefusal(scratch_.Path("loop"), XFile::ErrorOther, 1921);
    ExpectRefusal(scratch_.Path(std::string(256, 'n')), XFile::ErrorOther, 206, true);
    ExpectRefusal(path, XFile::ErrorOther, 206, true);

    XFile directory = FileAt(scratch_.Path(""));
    ExpectFailure(directory, directory.Delete(), XFile::ErrorAccess);
    EXPECT_EQ(FileAt(scratch_.Path("pipe")).Delete(), 1);
    XFile file = FileAt(scratch_.Path("dangling"));
    EXPECT_EQ(file.Exists(), 0);
    EXPECT_EQ(XFileSpec(XCString(scratch_.Path("dang*").c_str())).Exists(), 0);
    ExpectFailure(file, file.Create(), XFile::ErrorExists);
    EXPECT_EQ(file.Delete(), 1);
    EXPECT_EQ(file.Create(), 1);
}

TEST_F(Obstacles, DevicesAreOpenToAllAndHaveNoPositions) {
    char mark;
    XFile terminal = FileAt("C:\\dev\\ptmx"), other = FileAt("C:\\dev\\ptmx");
    ASSERT_EQ(terminal.Open(XFile::PermissionReadWrite), 1);
    ASSERT_EQ(other.Open(XFile::PermissionReadWrite), 1);
    ExpectFailure(terminal, terminal.Read(&mark, 1, 0, 0), XFile::ErrorOther);
    EXPECT_EQ(terminal.Close() + other.Close(), 2);
}

// Root may do everything, so the child gives up being root first.
TEST_F(Obstacles, FilesAndDirectoriesWithoutPermission) {
    scratch_.Fill("a", "content");
    scratch_.Fill("readable", "");
    std::filesystem::create_directory(scratch_.Host("d"));
    for (const char* name : {"a", "d"}) ASSERT_EQ(chmod(scratch_.Host(name).c_str(), 0), 0);
    ASSERT_EQ(chmod(scratch_.Host("").c_str(), 0555), 0);
    const int status = EndOf(StartChild([&] {
        constexpr uid_t kNobody = 65534;
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(kNotAllowed);
        ExpectRefusal(scratch_.Path("d\\b"), XFile::ErrorAccess, 5, true);
        ExpectRefusal(scratch_.Path("a"), XFile::ErrorAccess, 5);
        for (const char* name : {"a", "readable"}) {
            XFile file = FileAt(scratch_.Path(name));
            ExpectFailure(file, file.Delete(), XFile::ErrorAccess);
        }
    }));
    for (const char* name : {"", "d"}) ASSERT_EQ(chmod(scratch_.Host(name).c_str(), 0700), 0);
    if (status == kNotAllowed) GTEST_SKIP() << "run by a root that cannot become anybody else";
    EXPECT_EQ(status, 0);
}

}  // namespace veldt::tests
