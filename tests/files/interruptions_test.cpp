// Signals, short counts and faults in the kernel's calls, and file systems without locks.
#include <gtest/gtest.h>

#include <cerrno>
#include <numeric>

#include "files/scratch.h"
#include "files/system_calls.h"
#include "support/seed.h"

namespace veldt::tests {

namespace {

class Interruptions : public testing::Test {
  protected:
    Interruptions() : path_(scratch_.Path("a")), file_(FileAt(path_)) {
        scratch_.Fill("a", std::string(10000, 'a'));
        EXPECT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
    }
    ~Interruptions() override {
        scripted = {};
        if (file_.IsOpen() != 0) file_.Close();
    }

    const Scratch scratch_;
    const std::string path_;
    XFile file_;
};

}  // namespace

TEST_F(Interruptions, NeverReachTheCallerAsShortCounts) {
    std::mt19937 random(Seed());
    const auto script = [&] {
        std::deque<int> steps;
        for (int i = 0; i < 40; ++i) {
            const int most = std::uniform_int_distribution<int>(1, 250)(random);
            steps.push_back(random() % 2 == 0 ? EINTR : -most);
        }
        return steps;
    };
    std::string bytes(10000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    scripted.writes = script();
    EXPECT_EQ(file_.Write(bytes.data(), 10000, 5000, 0), 10000u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
    EXPECT_TRUE(scripted.writes.empty());
    EXPECT_EQ(scratch_.Content("a"), std::string(5000, 'a') + bytes);

    std::string found(10000, '\0');
    scripted.reads = script();
    EXPECT_EQ(file_.Read(found.data(), 10000, 5000, 0), 10000u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
    EXPECT_TRUE(scripted.reads.empty());
    EXPECT_EQ(found, bytes);

    scripted.reads = script();
    EXPECT_EQ(file_.Read(found.data(), 10000, 6000, 0), 9000u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorEndOfFile);

    scripted.truncations = {EINTR, EINTR};
    EXPECT_EQ(file_.SetEOF(100, 0), 1);
    EXPECT_TRUE(scripted.truncations.empty());
    file_.Close();
    scripted.openings = {EINTR, EINTR};
    scripted.locks = {EINTR};
    EXPECT_EQ(file_.Open(XFile::PermissionRead), 1);
    EXPECT_TRUE(scripted.openings.empty());
    EXPECT_TRUE(scripted.locks.empty());
}

TEST_F(Interruptions, FaultsKeepWhatMovedBeforeThem) {
    std::string bytes(1000, 'b');
    scripted.reads = {-300, EINTR, EIO};
    EXPECT_EQ(file_.Read(bytes.data(), 1000, 0, 0), 300u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorReadFault);
    EXPECT_EQ(bytes, std::string(300, 'a') + std::string(700, 'b'));

    scripted.writes = {-300, EIO};
    EXPECT_EQ(file_.Write(bytes.data(), 1000, 0, 0), 300u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorWriteFault);
    scripted.writes = {-300, ENOSPC};
    EXPECT_EQ(file_.Write(bytes.data(), 1000, 0, 0), 300u);
    EXPECT_EQ(platform::GetLastError(), platform::ERROR_DISK_FULL);
    scripted.reads = {EAGAIN};
    ExpectFailure(file_, file_.Read(bytes.data(), 1000, 0, 0), XFile::ErrorNotReady);
    scripted.truncations = {EIO};
    ExpectFailure(file_, file_.SetEOF(0, 0), XFile::ErrorWriteFault);

    // The handle is gone, and what was written may be lost: both are said.
    scripted.closings = {EIO};
    ExpectFailure(file_, file_.Close(), XFile::ErrorWriteFault);
    EXPECT_EQ(file_.IsOpen(), 0);
    EXPECT_EQ(file_.Open(XFile::PermissionRead), 1);
    scripted.closings = {EINTR};
    EXPECT_EQ(file_.Close(), 1);
}

TEST_F(Interruptions, EachRefusalToOpenHasItsNumber) {
    file_.Close();
    const struct {
        int code;
        platform::DWORD number;
        XFile::Error error;
    } cases[] = {
        {EILSEQ, 123, XFile::ErrorOther},      {EINVAL, 123, XFile::ErrorOther},
        {EMFILE, 4, XFile::ErrorOther},        {ENFILE, 4, XFile::ErrorOther},
        {ENOMEM, 8, XFile::ErrorOther},        {EPERM, 5, XFile::ErrorAccess},
        {EROFS, 19, XFile::ErrorAccess},       {ETXTBSY, 32, XFile::ErrorAccess},
        {EBUSY, 32, XFile::ErrorAccess},       {EWOULDBLOCK, 32, XFile::ErrorAccess},
        {ENXIO, 20, XFile::ErrorBadPath},      {ENODEV, 20, XFile::ErrorBadPath},
        {ENOMEDIUM, 21, XFile::ErrorNotReady}, {EDQUOT, 112, XFile::ErrorOther},
        {ESTALE, 1006, XFile::ErrorOther},     {EIO, 1117, XFile::ErrorOther},
        {ENOTUNIQ, 31, XFile::ErrorOther},
    };
    for (const auto& [code, number, error] : cases) {
        scripted.openings = {code};
        EXPECT_EQ(file_.Open(XFile::PermissionRead), 0);
        EXPECT_EQ(platform::GetLastError(), number) << code;
        EXPECT_EQ(file_.GetError(), error);
    }
}

// Where the kernel has no locks, the handles of one process still keep one another out.
TEST_F(Interruptions, SharingHoldsInOneProcessWithoutLocks) {
    file_.Close();
    XFile other = FileAt(path_);
    for (const int refusal : {ENOLCK, EOPNOTSUPP, EBADF}) {
        scripted.locks = {refusal, refusal};
        ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
        scripted.locks = {refusal, refusal};
        ExpectFailure(other, other.Open(XFile::PermissionRead), XFile::ErrorAccess);
        scripted.locks = {refusal};
        ExpectFailure(other, other.Delete(), XFile::ErrorAccess);
        EXPECT_EQ(file_.Close(), 1);
        scripted.locks = {refusal, refusal};
        EXPECT_EQ(other.Open(XFile::PermissionReadWrite), 1);
        EXPECT_EQ(other.Close(), 1);
    }
    // No exclusive lock without the right to write, but a shared one that keeps writers out.
    scripted.locks = {EBADF};
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    ExpectFailure(other, other.Open(XFile::PermissionReadWrite), XFile::ErrorAccess);
    EXPECT_EQ(file_.Close(), 1);
    EXPECT_EQ(other.Delete(), 1);
}

// Between the opening of a file and its locking, the name goes to another file.
TEST_F(Interruptions, OpeningAndDeletingFindTheFileThatHasTheNameNow) {
    file_.Close();
    const auto replace = [&] {
        std::filesystem::remove(scratch_.Host("a"));
        scratch_.Fill("a", "new");
    };
    scripted.beforeLock = replace;
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    char found[3];
    EXPECT_EQ(file_.Read(found, 3, 0, 0), 3u);
    EXPECT_EQ(std::string(found, 3), "new");
    EXPECT_EQ(file_.Close(), 1);

    scripted.beforeLock = [&] { std::filesystem::remove(scratch_.Host("a")); };
    ExpectFailure(file_, file_.Open(XFile::PermissionRead), XFile::ErrorNotFound);

    scratch_.Fill("a", "old");
    XFile holder = FileAt(path_);
    scripted.beforeLock = [&] {
        replace();
        EXPECT_EQ(holder.Open(XFile::PermissionRead), 1);
    };
    ExpectFailure(file_, file_.Delete(), XFile::ErrorAccess);
    EXPECT_EQ(holder.Close(), 1);
    scripted.beforeLock = replace;
    EXPECT_EQ(file_.Delete(), 1);
    EXPECT_EQ(file_.Exists(), 0);

    // Whoever is quick enough to open a new file before its creator has locked it takes nothing
    // away from the creation.
    scripted.locks = {EWOULDBLOCK};
    EXPECT_EQ(file_.Create(), 1);
}

}  // namespace veldt::tests
