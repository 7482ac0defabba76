#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "files/failures.h"
#include "files/platform_errors.h"
#include "support/refusing_new.h"

namespace veldt::tests {

namespace {

constexpr XFile::Permission kPermissions[] = {
    XFile::PermissionRead, XFile::PermissionWrite, XFile::PermissionReadWrite,
    XFile::PermissionReadWriteExclusive, XFile::PermissionReadWriteShared};

class File : public testing::Test {
  protected:
    File() { scratch_.Fill("a", std::string(120, 'c')); }

    const Scratch scratch_;
    XFile file_ = FileAt(scratch_.Path("a"));
    char mark_ = 'x';
};

// "-" stands for null.
std::string Part(const char* path, char* (XFile::*query)(char*) const) {
    const XFile file = FileAt(path);
    char buffer[64];
    const char* given = (file.*query)(buffer);
    const long before = LiveBlocks();
    const std::unique_ptr<char, void (*)(void*)> block((file.*query)(nullptr), operator delete);
    EXPECT_EQ(LiveBlocks() - before, given != nullptr);
    EXPECT_STREQ(given, block.get());
    return given != nullptr ? given : "-";
}

}  // namespace

TEST_F(File, StartsClosedAndRefusesWhatNeedsAnOpenFile) {
    EXPECT_EQ(file_.IsOpen() + file_.IsDirectory() + file_.IsTemporary() - file_.IsFile(), -1);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
    EXPECT_EQ(file_.SetType(7) + file_.SetCreator(7) + file_.GetType() + file_.GetCreator(), 0);
    std::int32_t low = 1, high = 2;
    ExpectFailure(file_, file_.Read(&mark_, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Write(&mark_, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.GetEOF(&low, &high), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.SetEOF(0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Rename("b"), XFile::ErrorNotOpen);
    ExpectFailure(file_, file_.Close(), XFile::ErrorNotOpen);
    EXPECT_EQ(low + high, 3);
    EXPECT_EQ(scratch_.Content("a").size(), 120u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
}

TEST_F(File, IsCreatedOnceAndLeftClosed) {
    XFile fresh = FileAt(scratch_.Path("b"));
    EXPECT_EQ(fresh.Exists(), 0);
    EXPECT_EQ(fresh.Create(), 1);
    EXPECT_EQ(fresh.Exists() - fresh.IsOpen(), 1);
    EXPECT_EQ(std::filesystem::file_size(scratch_.Host("b")), 0u);
    ExpectFailure(file_, file_.Create(), XFile::ErrorExists);
    EXPECT_EQ(scratch_.Content("a").size(), 120u);
    EXPECT_EQ(FileAt(scratch_.Path("*")).Exists(), 0);
    platform::SetLastError(0);

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

TEST_F(File, NothingIsDoneBelowZero) {
    ASSERT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
    for (const std::int32_t low : {0, -1, 7}) {
        ExpectFailure(file_, file_.Read(&mark_, 1, low, -1), XFile::ErrorOther);
        ExpectFailure(file_, file_.Write(&mark_, 1, low, -1), XFile::ErrorOther);
        ExpectFailure(file_, file_.SetEOF(low, -1), XFile::ErrorOther);
    }
    EXPECT_EQ(mark_, 'x');
    EXPECT_EQ(file_.Close(), 1);
    EXPECT_EQ(scratch_.Content("a"), std::string(120, 'c'));
}

TEST_F(File, KeepsToItsPermissionAndTheFileToItself) {
    XFile other = FileAt(scratch_.Path("a"));
    for (const XFile::Permission permission : kPermissions) {
        const bool reads = permission != XFile::PermissionWrite;
        const bool writes = permission != XFile::PermissionRead;
        const auto expect = [&](bool allowed, std::uint32_t done, bool errorIsKnown = true) {
            EXPECT_EQ(done, allowed);
            const XFile::Error error = allowed ? XFile::ErrorNone : XFile::ErrorAccess;
            EXPECT_TRUE(file_.GetError() == error || !errorIsKnown);
            platform::SetLastError(0);
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
    copy = file_;
    EXPECT_EQ(copy != file_, 0);
    EXPECT_EQ(copy.GetError(), XFile::ErrorExists);
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    copy = file_;
    EXPECT_EQ(copy.Read(&mark_, 1, 0, 0), 1u);
    EXPECT_EQ(mark_, 'c');
    EXPECT_EQ(file_.Close(), 1);
    std::int32_t low = 1, high = 2;
    ExpectFailure(copy, copy.GetEOF(&low, &high), XFile::ErrorOther);
    EXPECT_EQ(low + high, 3);
    ExpectFailure(copy, copy.Close(), XFile::ErrorOther);
    EXPECT_EQ(copy.IsOpen(), 1);
}

// It has a path that nobody chose, and lasts until it is deleted.
TEST_F(File, WithoutAPathIsTemporary) {
    XFile one = FileAt("");
    XFile two = FileAt("");
    ASSERT_EQ(one.Create() + two.Create(), 2);
    file_ = one;
    EXPECT_EQ(file_.IsTemporary(), 1);
    EXPECT_EQ(one == two, 0);
    ASSERT_EQ(one.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(one.Close(), 1);
    EXPECT_EQ(one.Exists() + two.Exists(), 2);
    EXPECT_EQ(one.Delete() + two.Delete(), 2);
    EXPECT_EQ(one.Exists() + two.Exists(), 0);
    platform::SetLastError(42);
    EXPECT_EQ(XFileSpec().Exists(), 0);
    EXPECT_EQ(platform::GetLastError(), 42u) << "an empty path was looked for";
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

TEST_F(File, RefusedMemoryLeavesTheObjectAsItWas) {
    for (auto query : {&XFile::GetPathname, &XFile::GetName, &XFile::GetPath}) {
        const RefusedNew refusal(1);
        EXPECT_THROW((file_.*query)(nullptr), std::bad_alloc);
    }
    XFile temporary = FileAt("");
    const RefusedNew refusal(1);
    EXPECT_THROW(temporary.Create(), std::bad_alloc);
    EXPECT_EQ(temporary.IsTemporary(), 0);
}

// Whichever request for memory is refused, the path and a result of before stay whole.
TEST_F(File, RefusedMemoryLeavesAPathWhole) {
    bool happened = true;
    for (long nth = 1; happened; ++nth) {
        XFileSpec spec(XCString("C:\\dir\\file.tar.gz"));
        XCString name("before");
        XCString path("before");
        {
            const RefusedNew refusal(nth);
            try {
                spec.GetName(name);
                spec.GetPath(path, 1);
                spec.GetExtension(name);
                spec.Append("!");
            } catch (const std::bad_alloc&) {
            }
            happened = refusal.Happened();
        }
        EXPECT_TRUE(name == "before" || name == "file.tar.gz" || name == "tar.gz");
        EXPECT_TRUE(path == "before" || path == "/C:/dir/file.tar.gz");
        EXPECT_EQ(std::string(spec.GetNativeFileSpec()).back(), happened ? 'z' : '!');
    }
}

TEST_F(File, MapsThePlatformsErrors) {
    const std::pair<platform::DWORD, int> cases[] = {
        {0, 0},   {2, 7},  {3, 3},  {5, 2},  {19, 2}, {20, 3},  {21, 13},  {29, 12},
        {30, 11}, {32, 2}, {33, 2}, {38, 1}, {80, 8}, {183, 8}, {112, 14}, {0xFFFFFFFF, 14}};
    for (const auto& [number, error] : cases) {
        EXPECT_EQ(files::MapPlatformError(number), error) << number;
    }
}

}  // namespace veldt::tests
