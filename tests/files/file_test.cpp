#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "files/platform_errors.h"
#include "files/scratch.h"
#include "support/refusing_new.h"

namespace veldt::tests {

namespace {

constexpr XFile::Permission kPermissions[] = {
    XFile::PermissionRead, XFile::PermissionWrite, XFile::PermissionReadWrite,
    XFile::PermissionReadWriteExclusive, XFile::PermissionReadWriteShared};

// "-" stands for null.
std::string Part(const char* path, char* (XFile::*query)(char*) const) {
    const XFile file = FileAt(path);
    char buffer[64];
    const char* given = (file.*query)(buffer);
    const long before = LiveBlocks();
    std::unique_ptr<char, void (*)(void*)> block((file.*query)(nullptr), operator delete);
    EXPECT_EQ(LiveBlocks() - before, given != nullptr);
    EXPECT_EQ(given == nullptr, block == nullptr);
    if (given == nullptr || block == nullptr) return "-";
    EXPECT_EQ(given, buffer);
    EXPECT_STREQ(given, block.get());
    return given;
}

}  // namespace

TEST(File, StartsClosedAndRefusesWhatNeedsAnOpenFile) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    XFile file = FileAt(scratch.Path("a"));
    EXPECT_EQ(file.IsOpen(), 0);
    EXPECT_EQ(file.IsDirectory(), 0);
    EXPECT_EQ(file.IsFile(), 1);
    EXPECT_EQ(file.IsTemporary(), 0);
    EXPECT_EQ(file.GetError(), XFile::ErrorNone);
    EXPECT_EQ(file.SetType(7) + file.SetCreator(7) + file.GetType() + file.GetCreator(), 0);

    char mark = 'x';
    std::int32_t low = 1;
    std::int32_t high = 2;
    ExpectFailure(file, file.Read(&mark, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file, file.Write(&mark, 1, 0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file, file.GetEOF(&low, &high), XFile::ErrorNotOpen);
    EXPECT_EQ(low + high, 3);
    ExpectFailure(file, file.SetEOF(0, 0), XFile::ErrorNotOpen);
    ExpectFailure(file, file.Rename("b"), XFile::ErrorNotOpen);
    ExpectFailure(file, file.Close(), XFile::ErrorNotOpen);
    EXPECT_EQ(scratch.Content("a"), "content");
    static_cast<const XFile&>(file).ClearError();
    EXPECT_EQ(file.GetError(), XFile::ErrorNone);
}

TEST(File, IsCreatedOnceAndLeftClosed) {
    const Scratch scratch;
    XFile file = FileAt(scratch.Path("a"));
    EXPECT_EQ(file.Exists(), 0);
    EXPECT_EQ(file.Create(), 1);
    EXPECT_EQ(file.IsOpen(), 0);
    EXPECT_EQ(file.Exists(), 1);
    EXPECT_EQ(scratch.Content("a"), "");
    scratch.Fill("a", "kept");
    ExpectFailure(file, file.Create(), XFile::ErrorExists);
    EXPECT_EQ(scratch.Content("a"), "kept");
    EXPECT_EQ(FileAt(scratch.Path("*")).Exists(), 0);
    platform::SetLastError(0);

    XFile directory = FileAt(scratch.Path("d"));
    EXPECT_EQ(directory.CreateDirectoryA(), 1);
    EXPECT_EQ(directory.IsDirectory(), 1);
    EXPECT_EQ(directory.IsFile(), 0);
    EXPECT_EQ(directory.Exists(), 1);
    XFile again = FileAt(scratch.Path("d"));
    ExpectFailure(again, again.CreateDirectoryA(), XFile::ErrorExists);
    EXPECT_EQ(again.IsDirectory(), 0);
}

TEST(File, SaysWhyItCannotBeOpened) {
    const Scratch scratch;
    scratch.Fill("a", "");
    std::filesystem::create_directory(scratch.Host("d"));
    const struct {
        std::string path;
        XFile::Error error;
    } cases[] = {
        {scratch.Path("missing"), XFile::ErrorNotFound},
        {scratch.Path("missing\\a"), XFile::ErrorBadPath},
        {scratch.Path("a\\b"), XFile::ErrorBadPath},
        // A drive that isn't there; Wine says that the file isn't.
        {"Q:\\a", UnderWine() ? XFile::ErrorNotFound : XFile::ErrorBadPath},
        {"", XFile::ErrorBadPath},
        {scratch.Path("d"), XFile::ErrorAccess},
    };
    for (const auto& [path, error] : cases) {
        for (const XFile::Permission permission : kPermissions) {
            SCOPED_TRACE(path);
            XFile file = FileAt(path);
            ExpectFailure(file, file.Open(permission), error);
            EXPECT_EQ(file.IsOpen(), 0);
        }
    }
    XFile file = FileAt(scratch.Path("missing\\d"));
    ExpectFailure(file, file.CreateDirectoryA(), XFile::ErrorBadPath);
    ExpectFailure(file, file.Create(), XFile::ErrorBadPath);
    ExpectFailure(file, file.Delete(), XFile::ErrorBadPath);
}

TEST(File, DeliversWhatIsThere) {
    const Scratch scratch;
    const std::string content(120, 'c');
    scratch.Fill("a", content);
    XFile file = FileAt(scratch.Path("a"));
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    const struct {
        std::uint32_t count;
        std::int32_t position;
        std::uint32_t done;
        XFile::Error error;
    } cases[] = {
        {120, 0, 120, XFile::ErrorNone},        {100, 90, 30, XFile::ErrorEndOfFile},
        {1, 119, 1, XFile::ErrorNone},          {1, 120, 0, XFile::ErrorEndOfFile},
        {10, 100000, 0, XFile::ErrorEndOfFile}, {0, 500, 0, XFile::ErrorNone},
    };
    for (const auto& row : cases) {
        char buffer[121] = {};
        EXPECT_EQ(file.Read(buffer, row.count, row.position, 0), row.done);
        EXPECT_EQ(file.GetError(), row.error);
        EXPECT_EQ(std::string(buffer), content.substr(0, row.done));
    }
    std::int32_t low = -1;
    std::int32_t high = -1;
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, 120);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(file.SetEOF(50, 0), 1);
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, 50);
    EXPECT_EQ(file.Write("end", 3, 52, 0), 3u);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(scratch.Content("a"), content.substr(0, 50) + std::string("\0\0end", 5));
}

TEST(File, RefusesPositionsBelowZero) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    XFile file = FileAt(scratch.Path("a"));
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    for (const std::int32_t low : {0, -1, 7}) {
        char mark = 'x';
        ExpectFailure(file, file.Read(&mark, 1, low, -1), XFile::ErrorOther);
        ExpectFailure(file, file.Write(&mark, 1, low, -1), XFile::ErrorOther);
        ExpectFailure(file, file.SetEOF(low, -1), XFile::ErrorOther);
        EXPECT_EQ(mark, 'x');
    }
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(scratch.Content("a"), "content");
}

TEST(File, KeepsToItsPermission) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    XFile file = FileAt(scratch.Path("a"));
    char mark = 'x';
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    ExpectFailure(file, file.Write(&mark, 1, 0, 0), XFile::ErrorAccess);
    EXPECT_EQ(file.SetEOF(0, 0), 0);
    // Wine calls it a bad argument where the system itself says that access is denied.
    EXPECT_TRUE(file.GetError() == XFile::ErrorAccess || UnderWine()) << file.GetError();
    platform::SetLastError(0);
    EXPECT_EQ(file.Close(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionWrite), 1);
    ExpectFailure(file, file.Read(&mark, 1, 0, 0), XFile::ErrorAccess);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(scratch.Content("a"), "content");
}

TEST(File, HasToBeClosedForDeletionAndClosesOnce) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    XFile file = FileAt(scratch.Path("a"));
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    ExpectFailure(file, file.Delete(), XFile::ErrorIsOpen);
    ExpectFailure(file, file.CreateDirectoryA(), XFile::ErrorIsOpen);
    EXPECT_EQ(file.Rename("b"), 1);
    EXPECT_EQ(file.IsOpen(), 0);
    EXPECT_EQ(FileAt(scratch.Path("b")).Exists(), 0);
    platform::SetLastError(0);
    EXPECT_EQ(scratch.Content("a"), "content");
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    EXPECT_EQ(file.Close(), 1);
    ExpectFailure(file, file.Close(), XFile::ErrorNotOpen);
    EXPECT_EQ(file.Delete(), 1);
    ExpectFailure(file, file.Delete(), XFile::ErrorNotFound);
}

TEST(File, IsOpenOnceAtATime) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    for (const XFile::Permission first : kPermissions) {
        XFile holder = FileAt(scratch.Path("a"));
        ASSERT_EQ(holder.Open(first), 1);
        XFile other = FileAt(scratch.Path("a"));
        for (const XFile::Permission second : kPermissions) {
            ExpectFailure(other, other.Open(second), XFile::ErrorAccess);
        }
        ExpectFailure(other, other.Delete(), XFile::ErrorAccess);
        EXPECT_EQ(holder.Close(), 1);
        EXPECT_EQ(other.Open(first), 1);
        EXPECT_EQ(other.Close(), 1);
    }
}

TEST(File, CopiesHoldOneHandle) {
    const Scratch scratch;
    scratch.Fill("a", "content");
    XFile file = FileAt(scratch.Path("a"));
    XFile copy = FileAt(scratch.Path("b"));
    EXPECT_EQ(file == copy, 0);
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    copy = file;
    EXPECT_EQ(file == copy, 1);
    EXPECT_EQ(copy != file, 0);
    char buffer[8] = {};
    EXPECT_EQ(copy.Read(buffer, 7, 0, 0), 7u);
    EXPECT_STREQ(buffer, "content");
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(copy.IsOpen(), 1);
    ExpectFailure(copy, copy.Close(), XFile::ErrorOther);
    EXPECT_EQ(copy.IsOpen(), 1);
    EXPECT_EQ(FileAt("C:\\a") == FileAt("C:\\A"), 0);
}

// It has a path that nobody chose, and lasts until it is deleted.
TEST(File, WithoutAPathIsTemporary) {
    XFile one = FileAt("");
    XFile two = FileAt("");
    ASSERT_EQ(one.Create(), 1);
    ASSERT_EQ(two.Create(), 1);
    EXPECT_EQ(one.IsTemporary(), 1);
    EXPECT_EQ(one == two, 0);
    EXPECT_EQ(one.Exists() + two.Exists(), 2);
    ASSERT_EQ(one.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(one.Write("text", 4, 0, 0), 4u);
    EXPECT_EQ(one.Close(), 1);
    EXPECT_EQ(one.Delete(), 1);
    EXPECT_EQ(two.Delete(), 1);
    EXPECT_EQ(one.Exists() + two.Exists(), 0);
}

TEST(File, TakesItsPathApart) {
    const struct {
        const char* path;
        const char* name;
        const char* basename;
        const char* extension;
        const char* directory;
    } cases[] = {
        {"C:\\dir\\file.tar.gz", "file.tar.gz", "file.tar", "gz", "C:\\dir"},
        {"C:\\file.txt", "file.txt", "file", "txt", "C:"},
        {"C:\\a.b\\c", "c", "c", "b\\c", "C:\\a.b"},
        {"C:\\dir\\", "-", "-", "-", "C:\\dir"},
        {"C:\\.profile", ".profile", "", "profile", "C:"},
        {"\\file.", "file.", "file", "-", ""},
        {"file", "file", "file", "-", "-"},
        {"", "", "", "-", "-"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(Part(row.path, &XFile::GetPathname), row.path);
        EXPECT_EQ(Part(row.path, &XFile::GetName), row.name);
        EXPECT_EQ(Part(row.path, &XFile::GetBasename), row.basename);
        EXPECT_EQ(Part(row.path, &XFile::GetExtension), row.extension);
        EXPECT_EQ(Part(row.path, &XFile::GetPath), row.directory);
        EXPECT_STREQ(FileAt(row.path).GetPlatformSpec()->GetNativeFileSpec(), row.path);
    }
    const std::string longName(5000, 'n');
    std::vector<char> buffer(longName.size() + 1);
    EXPECT_EQ(FileAt("C:\\" + longName + ".txt").GetBasename(buffer.data()), longName);
}

TEST(File, RefusedMemoryLeavesTheObjectAsItWas) {
    XFile file = FileAt("C:\\dir\\file.txt");
    for (auto query : {&XFile::GetPathname, &XFile::GetName, &XFile::GetBasename,
                       &XFile::GetExtension, &XFile::GetPath}) {
        const RefusedNew refusal(1);
        EXPECT_THROW((file.*query)(nullptr), std::bad_alloc);
    }
    EXPECT_EQ(file.GetError(), XFile::ErrorNone);
    XFile temporary = FileAt("");
    const RefusedNew refusal(1);
    EXPECT_THROW(temporary.Create(), std::bad_alloc);
    EXPECT_EQ(temporary.IsTemporary(), 0);
}

TEST(File, MapsThePlatformsErrors) {
    const std::pair<platform::DWORD, int> cases[] = {
        {0, 0},   {2, 7},  {3, 3},  {5, 2},  {19, 2}, {20, 3},  {21, 13},  {29, 12},
        {30, 11}, {32, 2}, {33, 2}, {38, 1}, {80, 8}, {183, 8}, {112, 14}, {0xFFFFFFFF, 14}};
    for (const auto& [number, error] : cases) {
        EXPECT_EQ(files::MapPlatformError(number), error) << number;
    }
}

}  // namespace veldt::tests
