// Signals, short counts and faults in the kernel's calls, and file systems without locks.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "files/failures.h"
#include "platform/platform.h"
#include "support/refusing_new.h"
#include "support/seed.h"

namespace veldt::tests {

namespace {

/// What the next of the kernel's file calls meet, in turn; after the last, they are left alone. A
/// number above 0 is the errno value that the call fails with, ~n the most bytes that it moves.
struct {
    std::deque<int> reads, writes, truncations, openings, locks;
    std::function<void()> beforeLock;  ///< runs once
} scripted;

// Goes on to the real call, unless the script lets it fail. `size`, one of the arguments, can
// become smaller first.
template <class Function, class... Rest>
auto Run(std::deque<int>& script, std::size_t& size, Function*, const char* name,
         const Rest&... arguments) {
    const int step = script.empty() ? 0 : script.front();
    if (!script.empty()) script.pop_front();
    if (step < 0) size = std::min(size, static_cast<std::size_t>(~step));
    const auto real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    errno = step;
    return step > 0 ? -1 : real(arguments...);
}

std::size_t noSize = 0;

class Interruptions : public testing::Test {
  protected:
    Interruptions() {
        scratch_.Fill("a", std::string(10000, 'a'));
        EXPECT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
    }
    ~Interruptions() override {
        scripted = {};
        file_.Close();
    }

    const Scratch scratch_;
    XFile file_ = FileAt(scratch_.Path("a"));
    XFile other_ = FileAt(scratch_.Path("a"));
};

// This program's own versions of the kernel's calls.
extern "C" {

ssize_t pread64(int file, void* buffer, size_t size, off64_t position) {
    return Run(scripted.reads, size, pread64, "pread64", file, buffer, size, position);
}

ssize_t pwrite64(int file, const void* buffer, size_t size, off64_t position) {
    return Run(scripted.writes, size, pwrite64, "pwrite64", file, buffer, size, position);
}

int ftruncate64(int file, off64_t size) {
    return Run(scripted.truncations, noSize, ftruncate64, "ftruncate64", file, size);
}

int flock(int file, int operation) {
    if (scripted.beforeLock) std::exchange(scripted.beforeLock, nullptr)();
    return Run(scripted.locks, noSize, flock, "flock", file, operation);
}

// The mode comes as one of a variable number of arguments, which are passed like any others.
int open64(const char* path, int flags, mode_t mode) {
    return Run(scripted.openings, noSize, open64, "open64", path, flags, mode);
}
}

}  // namespace

TEST_F(Interruptions, NeverReachTheCallerAsShortCounts) {
    std::mt19937 random(Seed());
    std::string bytes(10000, '\0'), found = bytes;
    for (char& letter : bytes) letter = static_cast<char>(random());
    for (int step = 0; step < 40; ++step) {
        for (std::deque<int>* script : {&scripted.writes, &scripted.reads}) {
            script->push_back(random() % 2 == 0 ? EINTR : ~static_cast<int>(1 + random() % 250));
        }
    }
    EXPECT_EQ(file_.Write(bytes.data(), 10000, 5000, 0), 10000u);
    EXPECT_EQ(scratch_.Content("a"), std::string(5000, 'a') + bytes);
    EXPECT_EQ(file_.Read(found.data(), 10000, 5000, 0), 10000u);
    EXPECT_EQ(found, bytes);
    EXPECT_EQ(file_.GetError(), XFile::ErrorNone);

    scripted.truncations = {EINTR, EINTR};
    EXPECT_EQ(file_.SetEOF(100, 0), 1);
    file_.Close();
    scripted.openings = {EINTR, EINTR};
    scripted.locks = {EINTR};
    EXPECT_EQ(file_.Open(XFile::PermissionRead), 1);
    EXPECT_TRUE(scripted.writes.empty() && scripted.reads.empty() && scripted.truncations.empty());
    EXPECT_TRUE(scripted.openings.empty() && scripted.locks.empty());
}

TEST_F(Interruptions, FaultsKeepWhatMovedBeforeThem) {
    std::string bytes(1000, 'b');
    scripted.reads = {~300, EINTR, EIO};
    EXPECT_EQ(file_.Read(bytes.data(), 1000, 0, 0), 300u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorReadFault);
    EXPECT_EQ(bytes, std::string(300, 'a') + std::string(700, 'b'));
    scripted.writes = {~300, EIO};
    EXPECT_EQ(file_.Write(bytes.data(), 1000, 0, 0), 300u);
    EXPECT_EQ(file_.GetError(), XFile::ErrorWriteFault);
    for (const int full : {ENOSPC, ~0}) {
        scripted.writes = {~300, full};
        EXPECT_EQ(file_.Write(bytes.data(), 1000, 0, 0), 300u);
        EXPECT_EQ(platform::GetLastError(), platform::ERROR_DISK_FULL);
        EXPECT_EQ(file_.GetError(), XFile::ErrorOther);
    }
    scripted.openings = {EROFS};
    EXPECT_EQ(other_.Create(), 0);
    EXPECT_EQ(platform::GetLastError(), platform::ERROR_WRITE_PROTECT);
    EXPECT_EQ(other_.GetError(), XFile::ErrorAccess);
    scripted.reads = {EAGAIN};
    ExpectFailure(file_, file_.Read(bytes.data(), 1000, 0, 0), XFile::ErrorNotReady);
    scripted.truncations = {EIO};
    ExpectFailure(file_, file_.SetEOF(0, 0), XFile::ErrorWriteFault);
}

// Where the kernel has no locks, the handles of one process still keep one another out.
TEST_F(Interruptions, SharingHoldsInOneProcessWithoutLocks) {
    file_.Close();
    scripted.locks = {ENOLCK, ENOLCK};
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    scripted.locks = {EOPNOTSUPP, EOPNOTSUPP};
    ExpectFailure(other_, other_.Open(XFile::PermissionRead), XFile::ErrorAccess);
    scripted.locks = {ENOLCK};
    ExpectFailure(other_, other_.Delete(), XFile::ErrorAccess);
    EXPECT_EQ(file_.Close(), 1);
    const auto shareReading = [&] {
        scripted.locks = {ENOLCK};
        return platform::CreateFileA(scratch_.Path("a").c_str(), platform::GENERIC_READ,
                                     platform::FILE_SHARE_READ, nullptr, platform::OPEN_EXISTING, 0,
                                     nullptr);
    };
    scripted.locks = {ENOLCK, ENOLCK};
    EXPECT_EQ(other_.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(shareReading(), platform::INVALID_HANDLE_VALUE);
    EXPECT_EQ(other_.Close(), 1);
    const platform::HANDLE one = shareReading(), two = shareReading();
    EXPECT_EQ(platform::CloseHandle(one) + platform::CloseHandle(two), 2);
    // No exclusive lock without the right to write, but a shared one that keeps writers out.
    scripted.locks = {EBADF};
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    ExpectFailure(other_, other_.Open(XFile::PermissionReadWrite), XFile::ErrorAccess);
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
    scripted.beforeLock = [&] {
        replace();
        EXPECT_EQ(other_.Open(XFile::PermissionRead), 1);
    };
    ExpectFailure(file_, file_.Delete(), XFile::ErrorAccess);
    EXPECT_EQ(other_.Close(), 1);
    scripted.beforeLock = [&] { std::filesystem::remove(scratch_.Host("a")); };
    ExpectFailure(file_, file_.Open(XFile::PermissionRead), XFile::ErrorNotFound);
    // Whoever is quick enough to open a new file before its creator has locked it takes nothing
    // away from the creation.
    scripted.locks = {EWOULDBLOCK};
    EXPECT_EQ(file_.Create(), 1);
}

// A temporary name that somebody else took first is let go of, for the file isn't the object's own.
TEST_F(Interruptions, TakenTemporaryNamesAreLeftAlone) {
    XFile temporary = FileAt("");
    scripted.openings = {EEXIST};
    {
        const RefusedNew refusal(2);
        EXPECT_THROW(temporary.Create(), std::bad_alloc);
    }
    EXPECT_EQ(temporary.IsTemporary(), 0);
    EXPECT_STREQ(temporary.GetPlatformSpec()->GetNativeFileSpec(), "");
    scripted.openings = {EEXIST, EEXIST};
    EXPECT_EQ(temporary.Create(), 1);
    EXPECT_EQ(temporary.Delete(), 1);
}

TEST_F(Interruptions, ACreationWithoutMemoryLeavesNoFile) {
    // Up to the first descriptor for which the library needs memory.
    std::vector<int> taken = {dup(0)};
    while (taken.back() < 255) taken.push_back(dup(taken[0]));
    XFile fresh = FileAt(scratch_.Path("fresh"));
    {
        const RefusedNew refusal(1);
        ExpectFailure(fresh, fresh.Create(), XFile::ErrorOther);
        EXPECT_TRUE(refusal.Happened());
    }
    EXPECT_EQ(fresh.Exists(), 0);
    for (const int descriptor : taken) close(descriptor);
}

}  // namespace veldt::tests
