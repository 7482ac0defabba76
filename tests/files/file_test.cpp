#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "files/failures.h"

namespace veldt::tests {

namespace {

constexpr XFile::Permission kPermissions[] = {
    XFile::PermissionRead, XFile::PermissionWrite, XFile::PermissionReadWrite,
    XFile::PermissionReadWriteExclusive, XFile::PermissionReadWriteShared};

class File : public testing::Test {
  protected:
    File() {
        scratch_.Fill("a", std::string(120, 'c'));
        ClearPendingError();
    }

    const Scratch scratch_;
    XFile file_ = FileAt(scratch_.Path("a"));
    char mark_ = 'x';
    std::int32_t low_ = 1, high_ = 2;
};

// "-" stands for null.
std::string Part(const char* path, char* (XFile::*query)(char*) const) {
    const XFile file = FileAt(path);
    char buffer[64];
    char* given = (file.*query)(buffer);
    EXPECT_TRUE(given == nullptr || given == buffer);
    const std::unique_ptr<char, void (*)(void*)> block((file.*query)(nullptr), operator delete);
    EXPECT_STREQ(given, block.get());
    return given != nullptr ? given : "-";
}

}  // namespace

TEST_F(File, StartsClosedAndRefusesWhatNeedsAnOpenFile) {
    EXPECT_EQ(file_.IsOpen() + file_.IsDirectory() + file_.IsTemporary() - file_.IsFile(), -1);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
    EXPECT_EQ(file_.SetType(7) + file_.SetCreator(7) + file_.GetType() + file_.GetCreator(), 0);
    ExpectFailure(file_, file_.Read(&mark_, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Write(&mark_, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.GetEOF(&low_, &high_), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.SetEOF(0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Rename("b"), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Close(), XFile::ErrorNotOpen);
    EXPECT_EQ(low_ + high_, 3);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
}

TEST_F(File, IsCreatedOnceAndLeftClosed) {
    XFile fresh = FileAt(scratch_.Path("b"));
    EXPECT_EQ(fresh.Exists(), 0);
    ClearPendingError();
    EXPECT_EQ(fresh.Create(), 1);
    EXPECT_EQ(fresh.Exists() - fresh.IsOpen(), 1);
    EXPECT_EQ(std::filesystem::file_size(scratch_.Host("b")), 0u);
    ExpectFailure(file_, file_.Create(), XFile::ErrorExists);
    EXPECT_EQ(scratch_.Content("a").size(), 120u);
    EXPECT_EQ(FileAt(scratch_.Path("*")).Exists(), 0);
    ClearPendingError();

    XFile directory = FileAt(scratch_.Path("d"));
    EXPECT_EQ(directory.CreateDirectoryA(), 1);
    EXPECT_EQ(directory.IsDirectory() + directory.Exists() - directory.IsFile(), 2);
    ExpectFailure(directory, directory.CreateDirectoryA(), XFile::ErrorExists);
}

TEST_F(File, SaysWhyItCannotBeOpened) {
    const std::pair<std::string, XFile::Error> cases[] = {
        {scratch_.Path("missing"), XFile::ErrorNotFound},
        {scratch_.Path("missing\\a"), XFile::ErrorBadPath},
        {scratch_.Path("a\\b"), XFile::ErrorBadPath},
        // A drive that isn't there; Wine says that the file isn't.
        {"Q:\\a", UnderWine() ? XFile::ErrorNotFound : XFile::ErrorBadPath},
        {"", XFile::ErrorBadPath},
        {scratch_.Path(""), XFile::ErrorAccess},
    };
    for (const auto& [path, error] : cases) {
        SCOPED_TRACE(path);
        XFile file = FileAt(path);
        for (const XFile::Permission permission : kPermissions) {
            ExpectFailure(file, file.Open(permission), error);
            EXPECT_EQ(file.IsOpen(), 0);
        }
    }
    XFile file = FileAt(scratch_.Path("missing\\d"));
    ExpectFailure(file, file.CreateDirectoryA(), XFile::ErrorBadPath);
    ExpectFailure(file, file.Create(), XFile::ErrorBadPath);
    ExpectFailure(file, file.Delete(), XFile::ErrorBadPath);
}

TEST_F(File, KeepsToItsPermissionAndTheFileToItself) {
    XFile other = FileAt(scratch_.Path("a"));
    for (const XFile::Permission permission : kPermissions) {
        SCOPED_TRACE(permission);
        const bool reads = permission != XFile::PermissionWrite;
        const bool writes = permission != XFile::PermissionRead;
        const auto expect = [&](bool allowed, std::uint32_t done, bool errorIsKnown = true) {
            EXPECT_EQ(done, allowed);
            const XFile::Error error = allowed ? XFile::ErrorNone : XFile::ErrorAccess;
            EXPECT_TRUE(file_.GetError() == error || !errorIsKnown);
            ClearPendingError();
        };
        ASSERT_EQ(file_.Open(permission), 1);
        expect(reads, file_.Read(&mark_, 1, 0, 0));
        expect(writes, file_.Write("c", 1, 0, 0));
        // Wine calls it a bad argument where the system itself says that access is denied.
        expect(writes, static_cast<std::uint32_t>(file_.SetEOF(120, 0)), !UnderWine());
        for (const XFile::Permission second : kPermissions) {
            ExpectFailure(other, other.Open(second), XFile::ErrorAccess);
        }
        ExpectFailure(other, other.Delete(), XFile::ErrorAccess);
        ExpectFailure(file_, file_.Delete(), XFile::ErrorIsOpen);
        ExpectFailure(file_, file_.CreateDirectoryA(), XFile::ErrorIsOpen);
        EXPECT_EQ(file_.Close(), 1);
        ExpectFailure(file_, file_.Close(), XFile::ErrorNotOpen);
        EXPECT_EQ(scratch_.Content("a"), std::string(120, 'c'));
    }
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    EXPECT_EQ(file_.Rename("b"), 1);
    EXPECT_EQ(file_.IsOpen(), 0);
    EXPECT_EQ(file_.Delete(), 1) << "a renamed file keeps its name";
    ExpectFailure(file_, file_.Delete(), XFile::ErrorNotFound);
}

TEST_F(File, CopiesHoldOneHandle) {
    XFile copy = FileAt(scratch_.Path("A"));
    EXPECT_EQ(file_ == copy, 0);
    EXPECT_EQ(file_.Create(), 0);
    ClearPendingError();
    copy = file_;
    EXPECT_EQ(copy != file_, 0);
    EXPECT_EQ(copy.GetError(), XFile::ErrorExists);
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    copy = file_;
    EXPECT_EQ(copy.Read(&mark_, 1, 0, 0), 1u);
    EXPECT_EQ(mark_, 'c');
    EXPECT_EQ(file_.Close(), 1);
    ExpectFailure(copy, copy.GetEOF(&low_, &high_), XFile::ErrorOther);
    EXPECT_EQ(low_ + high_, 3);
    ExpectFailure(copy, copy.Close(), XFile::ErrorOther);
    EXPECT_EQ(copy.IsOpen(), 1);
}

// It has a path that nobody chose, and lasts until it is deleted.
TEST_F(File, WithoutAPathIsTemporary) {
    XFile one = FileAt(""), two = FileAt("");
    ASSERT_EQ(one.Create() + two.Create(), 2);
    file_ = one;
    EXPECT_EQ(file_.IsTemporary() + file_.IsFile(), 2);
    EXPECT_EQ(one == two, 0);
    ASSERT_EQ(one.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(one.Close(), 1);
    EXPECT_EQ(one.GetPlatformSpec()->Exists() + two.Exists(), 2);
    EXPECT_EQ(one.Delete() + two.Delete(), 2);
    EXPECT_EQ(one.Exists() + two.Exists(), 0);
}

TEST_F(File, TakesItsPathApart) {
    const struct {
        const char *path, *name, *basename, *extension, *directory;
    } cases[] = {
        {"C:\\dir\\file.tar.gz", "file.tar.gz", "file.tar", "gz", "C:\\dir"},
        {"C:\\a.b\\c", "c", "c", "b\\c", "C:\\a.b"},
        {"C:\\dir\\", "-", "-", "-", "C:\\dir"},
        {"C:\\.profile", ".profile", "", "profile", "C:"},
        {"\\file.", "file.", "file", "-", ""},
        {"file", "file", "file", "-", "-"},
        {"", "", "", "-", "-"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Part(row.path, &XFile::GetPathname), row.path);
        EXPECT_EQ(Part(row.path, &XFile::GetName), row.name);
        EXPECT_EQ(Part(row.path, &XFile::GetBasename), row.basename);
        EXPECT_EQ(Part(row.path, &XFile::GetExtension), row.extension);
        EXPECT_EQ(Part(row.path, &XFile::GetPath), row.directory);
    }
    std::vector<char> buffer(5001);
    const std::string longName(5000, 'n');
    EXPECT_EQ(FileAt("C:\\" + longName + ".txt").GetBasename(buffer.data()), longName);
}

}  // namespace veldt::tests
