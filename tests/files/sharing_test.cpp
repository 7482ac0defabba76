// One file at a time has one handle: between processes, through other names, and in races.
#include <gtest/gtest.h>
#include <signal.h>

#include <thread>
#include <vector>

#include "files/children.h"
#include "files/scratch.h"

namespace veldt::tests {

namespace {

void ExpectInUse(const std::string& path) {
    XFile file = FileAt(path);
    ExpectFailure(file, file.Open(XFile::PermissionRead), XFile::ErrorAccess);
    ExpectFailure(file, file.Open(XFile::PermissionReadWriteShared), XFile::ErrorAccess);
    ExpectFailure(file, file.Delete(), XFile::ErrorAccess);
}

void ExpectFree(const std::string& path) {
    XFile file = FileAt(path);
    EXPECT_EQ(file.Open(XFile::PermissionReadWrite), 1) << file.GetError();
    EXPECT_EQ(file.Close(), 1);
}

class Sharing : public testing::Test {
  protected:
    Sharing() : path_(scratch_.Path("a")) { scratch_.Fill("a", "0"); }

    const Scratch scratch_;
    const std::string path_;
};

}  // namespace

TEST_F(Sharing, KeepsOtherProcessesOutUntilTheHolderDies) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t holder = StartChild([&] {
        XFile file = FileAt(path_);
        const char opened = static_cast<char>(file.Open(XFile::PermissionRead));
        EXPECT_EQ(write(ready[1], &opened, 1), 1);
        pause();
    });
    char opened = 0;
    ASSERT_EQ(read(ready[0], &opened, 1), 1);
    ASSERT_EQ(opened, 1);
    ExpectInUse(path_);
    EXPECT_EQ(kill(holder, SIGKILL), 0);
    EXPECT_EQ(EndOf(holder), -1);
    ExpectFree(path_);
    close(ready[0]);
    close(ready[1]);
}

// A forked child has its parent's open files too. What it does to its copies leaves the parent's
// hold on the file alone, and the parent's closing counts although the child has not closed.
TEST_F(Sharing, StaysWithTheProcessThatOpened) {
    XFile file = FileAt(path_);
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    EXPECT_EQ(InChild([&] {
                  ExpectInUse(path_);
                  EXPECT_EQ(file.Close(), 1);
                  ExpectInUse(path_);
              }),
              0);
    ExpectInUse(path_);

    const pid_t idle = StartChild([] { pause(); });
    EXPECT_EQ(file.Close(), 1);
    ExpectFree(path_);
    EXPECT_EQ(kill(idle, SIGKILL), 0);
    EndOf(idle);
}

TEST_F(Sharing, GoesByTheFileNotByItsName) {
    std::filesystem::create_hard_link(scratch_.Host("a"), scratch_.Host("hard"));
    std::filesystem::create_symlink("a", scratch_.Host("soft"));
    XFile file = FileAt(path_);
    ASSERT_EQ(file.Open(XFile::PermissionRead), 1);
    ExpectInUse(scratch_.Path("hard"));
    XFile link = FileAt(scratch_.Path("soft"));
    ExpectFailure(link, link.Open(XFile::PermissionRead), XFile::ErrorAccess);
    EXPECT_EQ(link.Delete(), 1) << "the link is no part of the open file";
    EXPECT_EQ(file.Close(), 1);
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
    EXPECT_NE(one, INVALID_HANDLE_VALUE);
    EXPECT_NE(two, INVALID_HANDLE_VALUE);
    EXPECT_EQ(open(GENERIC_READ, 0), INVALID_HANDLE_VALUE);
    EXPECT_EQ(open(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(CloseHandle(one), 1);
    ExpectInUse(path_);
    EXPECT_EQ(CloseHandle(two), 1);
    ExpectFree(path_);
}

// A handle that was closed never reaches the file that was opened after it.
TEST_F(Sharing, StaleHandlesAreRefused) {
    XFile file = FileAt(path_);
    XFile copy = FileAt(path_);
    char mark = 'x';
    for (int round = 0; round < 100; ++round) {
        ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
        copy = file;
        ASSERT_EQ(file.Close(), 1);
        ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
        ExpectFailure(copy, copy.Write(&mark, 1, 0, 0), XFile::ErrorOther);
        ExpectFailure(copy, copy.Close(), XFile::ErrorOther);
        ASSERT_EQ(file.Close(), 1);
    }
    EXPECT_EQ(platform::CloseHandle(nullptr), 0);
    EXPECT_EQ(platform::CloseHandle(&mark), 0);
    EXPECT_EQ(scratch_.Content("a"), "0");
}

// Different objects are independent, also where one thread's handle takes another's old place.
TEST_F(Sharing, ThreadsWithFilesOfTheirOwnDoNotMeet) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            XFile file = FileAt(scratch_.Path(std::to_string(number)));
            EXPECT_EQ(file.Create(), 1);
            for (int round = 0; round < 300; ++round) {
                EXPECT_EQ(file.Open(XFile::PermissionReadWrite), 1);
                EXPECT_EQ(file.Write(&number, sizeof number, round, 0), sizeof number);
                int found = -1;
                EXPECT_EQ(file.Read(&found, sizeof found, round, 0), sizeof found);
                EXPECT_EQ(found, number);
                EXPECT_EQ(file.Close(), 1);
                XFile shared = FileAt(path_);
                if (shared.Open(XFile::PermissionRead) != 0) shared.Close();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    ExpectFree(path_);
}

// Processes add to a number in the file, take turns by its share mode alone, and lose nothing.
TEST_F(Sharing, ProcessesTakeTurns) {
    constexpr int kProcesses = 4;
    constexpr int kAdditions = 250;
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(StartChild([&] {
            XFile file = FileAt(path_);
            for (int done = 0; done < kAdditions; ++done) {
                while (file.Open(XFile::PermissionReadWrite) == 0) {
                    ASSERT_EQ(file.GetError(), XFile::ErrorAccess);
                }
                char text[16] = {};
                file.Read(text, sizeof text, 0, 0);
                const std::string next = std::to_string(std::stoi(text) + 1);
                file.Write(next.data(), static_cast<std::uint32_t>(next.size()), 0, 0);
                file.Close();
            }
        }));
    }
    for (const pid_t child : children) EXPECT_EQ(EndOf(child), 0);
    EXPECT_EQ(scratch_.Content("a"), std::to_string(kProcesses * kAdditions));
}

// Of all that create, open and delete one path, each creation and each deletion succeeds for one
// process alone: as many files come into being as are deleted, whatever happens in between.
TEST_F(Sharing, CreationsAndDeletionsBalance) {
    constexpr int kProcesses = 3;
    int counts[2];
    ASSERT_EQ(pipe(counts), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(StartChild([&] {
            XFile file = FileAt(path_);
            int balance = 0;
            for (int round = 0; round < 400; ++round) {
                balance += file.Create();
                char mark = 'x';
                if (file.Open(XFile::PermissionReadWrite) != 0) {
                    EXPECT_EQ(file.Write(&mark, 1, 0, 0), 1u);
                    file.Close();
                }
                balance -= file.Delete();
            }
            EXPECT_EQ(write(counts[1], &balance, sizeof balance), int{sizeof balance});
        }));
    }
    int sum = 1;  // the file that was there at the start
    for (const pid_t child : children) {
        EXPECT_EQ(EndOf(child), 0);
        int balance = 0;
        ASSERT_EQ(read(counts[0], &balance, sizeof balance), int{sizeof balance});
        sum += balance;
    }
    EXPECT_EQ(sum, FileAt(path_).Exists());
    close(counts[0]);
    close(counts[1]);
}

}  // namespace veldt::tests
