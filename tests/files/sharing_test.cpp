// A file has one handle at a time: between processes, through other names, and in races.
#include <gtest/gtest.h>
#include <signal.h>

#include "files/children.h"
#include "files/failures.h"
#include "platform/platform.h"
#include "support/threads.h"

namespace veldt::tests {

namespace {

void ExpectInUse(const std::string& path) {
    XFile file = FileAt(path);
    ExpectFailure(file, file.Open(XFile::PermissionRead), XFile::ErrorAccess);
    ExpectFailure(file, file.Delete(), XFile::ErrorAccess);
}

void ExpectFree(const std::string& path) {
    XFile file = FileAt(path);
    EXPECT_EQ(file.Open(XFile::PermissionReadWrite), 1) << file.GetError();
    EXPECT_EQ(file.Close(), 1);
}

void AddOne(const std::string& path) {
    XFile file = FileAt(path);
    while (file.Open(XFile::PermissionReadWrite) == 0) {
        ASSERT_EQ(file.GetError(), XFile::ErrorAccess);
    }
    char text[16] = {};
    file.Read(text, sizeof text, 0, 0);
    const std::string next = std::to_string(std::stoi(text) + 1);
    file.Write(next.data(), static_cast<std::uint32_t>(next.size()), 0, 0);
    file.Close();
}

void Kill(pid_t child) {
    EXPECT_EQ(kill(child, SIGKILL), 0);
    EXPECT_EQ(EndOf(child), -1);
}

class Sharing : public testing::Test {
  protected:
    Sharing() { scratch_.Fill("a", "0"); }

    const Scratch scratch_;
    const std::string path_ = scratch_.Path("a");
    XFile file_ = FileAt(path_);
};

}  // namespace

TEST_F(Sharing, KeepsOtherProcessesOutUntilTheHolderDies) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t holder = StartChild([&] {
        const char opened = static_cast<char>(file_.Open(XFile::PermissionRead));
        EXPECT_EQ(write(ready[1], &opened, 1), 1);
        pause();
    });
    char opened = 0;
    ASSERT_EQ(read(ready[0], &opened, 1), 1);
    ASSERT_EQ(opened, 1);
    ExpectInUse(path_);
    Kill(holder);
    ExpectFree(path_);
}

// A forked child has its parent's open files too. What it does to its copies leaves the parent's
// hold on the file alone, and the parent's closing counts although the child has not closed.
TEST_F(Sharing, StaysWithTheProcessThatOpened) {
    ASSERT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(EndOf(StartChild([&] {
                  EXPECT_EQ(file_.Close(), 1);
                  ExpectInUse(path_);
              })),
              0);
    ExpectInUse(path_);
    const pid_t idle = StartChild([] { pause(); });
    EXPECT_EQ(file_.Close(), 1);
    ExpectFree(path_);
    Kill(idle);
}

TEST_F(Sharing, GoesByTheFileNotByItsName) {
    std::filesystem::create_hard_link(scratch_.Host("a"), scratch_.Host("hard"));
    std::filesystem::create_symlink("a", scratch_.Host("soft"));
    ASSERT_EQ(file_.Open(XFile::PermissionRead), 1);
    ExpectInUse(scratch_.Path("hard"));
    XFile link = FileAt(scratch_.Path("soft"));
    ExpectFailure(link, link.Open(XFile::PermissionRead), XFile::ErrorAccess);
    EXPECT_EQ(link.Delete(), 1) << "the link is no part of the open file";
    EXPECT_EQ(file_.Close(), 1);
    EXPECT_EQ(FileAt(scratch_.Path("hard")).Delete(), 1);
    ExpectFree(path_);
}

TEST_F(Sharing, LetsReadersInTogetherWhoShareReading) {
    using namespace platform;
    const auto open = [&](DWORD access, DWORD share) {
        return CreateFileA(path_.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
    };
    const HANDLE one = open(GENERIC_READ, FILE_SHARE_READ);
    const HANDLE two = open(GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(open(GENERIC_READ, 0), INVALID_HANDLE_VALUE);
    EXPECT_EQ(open(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ), INVALID_HANDLE_VALUE);
    EXPECT_EQ(CloseHandle(one), 1);
    ExpectInUse(path_);
    EXPECT_EQ(CloseHandle(two), 1);
    ExpectFree(path_);
}

// A handle that was closed never reaches the file that was opened after it.
TEST_F(Sharing, StaleHandlesAreRefused) {
    XFile copy = FileAt(path_);
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
        copy = file_;
        ASSERT_EQ(file_.Close(), 1);
        ASSERT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
        ExpectFailure(copy, copy.Write("x", 1, 0, 0), XFile::ErrorOther);
        ExpectFailure(copy, copy.Close(), XFile::ErrorOther);
        ASSERT_EQ(file_.Close(), 1);
    }
    EXPECT_EQ(platform::CloseHandle(nullptr) + platform::CloseHandle(&copy), 0);
}

// Threads and processes add to a number in the file, take turns by its share mode alone, and lose
// nothing. Each thread has a file of its own besides, whose handle takes another's old place.
TEST_F(Sharing, ThreadsAndProcessesTakeTurns) {
    constexpr int kRounds = 200;
    const auto addAll = [&] {
        for (int done = 0; done < kRounds; ++done) AddOne(path_);
    };
    const pid_t children[] = {StartChild(addAll), StartChild(addAll)};
    OnThreads(4, [&](int number) {
        XFile own = FileAt(scratch_.Path(std::to_string(number)));
        EXPECT_EQ(own.Create(), 1);
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_EQ(own.Open(XFile::PermissionReadWrite), 1);
            EXPECT_EQ(own.Write(&number, sizeof number, round, 0), sizeof number);
            AddOne(path_);
            int found = 0;
            EXPECT_EQ(own.Read(&found, sizeof found, round, 0), sizeof found);
            EXPECT_EQ(found, number);
            EXPECT_EQ(own.Close(), 1);
        }
    });
    for (const pid_t child : children) EXPECT_EQ(EndOf(child), 0);
    EXPECT_EQ(scratch_.Content("a"), std::to_string(6 * kRounds));
}

}  // namespace veldt::tests
