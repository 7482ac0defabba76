// Random operations on a file, against a string that holds what the file should.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "files/scratch.h"
#include "support/seed.h"

namespace veldt::tests {

namespace {

constexpr std::int32_t kReach = 100000;

class ModelRun {
  public:
    ModelRun() : file_(FileAt(scratch_.Path("model"))), random_(Seed()) {}

    void Run(int steps) {
        ASSERT_EQ(file_.Create(), 1);
        ASSERT_EQ(file_.Open(XFile::PermissionReadWrite), 1);
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            const int choice = Up(19);
            if (choice < 8) {
                Write();
            } else if (choice < 16) {
                Read();
            } else if (choice < 18) {
                Resize();
            } else {
                Reopen();
            }
            CheckSize();
        }
        EXPECT_EQ(file_.Close(), 1);
        EXPECT_EQ(scratch_.Content("model"), model_);
    }

  private:
    int Up(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
    // Mostly small, now and then over several pages.
    int Count() { return Up(3) == 0 ? Up(20000) : Up(100); }
    std::int32_t Position() {
        return Up(1) == 0 ? Up(kReach) : Up(static_cast<int>(model_.size()));
    }

    void Write() {
        const auto position = static_cast<std::size_t>(Position());
        std::string bytes(static_cast<std::size_t>(Count()), '\0');
        for (char& letter : bytes) letter = static_cast<char>(Up(255));
        EXPECT_EQ(file_.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                              static_cast<std::int32_t>(position), 0),
                  bytes.size());
        EXPECT_EQ(file_.GetError(), XFile::ErrorNone);
        if (bytes.empty()) return;
        model_.resize(std::max(model_.size(), position + bytes.size()));
        model_.replace(position, bytes.size(), bytes);
    }

    void Read() {
        const auto position = static_cast<std::size_t>(Position());
        const auto count = static_cast<std::size_t>(Count());
        const std::string expected =
            position < model_.size() ? model_.substr(position, count) : std::string();
        std::string bytes(count, '\0');
        const std::uint32_t done = file_.Read(bytes.data(), static_cast<std::uint32_t>(count),
                                              static_cast<std::int32_t>(position), 0);
        bytes.resize(done);
        EXPECT_EQ(bytes, expected);
        EXPECT_EQ(file_.GetError(),
                  expected.size() < count ? XFile::ErrorEndOfFile : XFile::ErrorNone);
    }

    void Resize() {
        const std::int32_t size = Position();
        EXPECT_EQ(file_.SetEOF(size, 0), 1);
        model_.resize(static_cast<std::size_t>(size));
    }

    void Reopen() {
        EXPECT_EQ(file_.Close(), 1);
        EXPECT_EQ(file_.Open(XFile::PermissionReadWriteShared), 1);
    }

    void CheckSize() {
        std::int32_t low = -1;
        std::int32_t high = -1;
        EXPECT_EQ(file_.GetEOF(&low, &high), 1);
        EXPECT_EQ(low, static_cast<std::int32_t>(model_.size()));
        EXPECT_EQ(high, 0);
    }

    Scratch scratch_;
    XFile file_;
    std::mt19937 random_;
    std::string model_;
};

}  // namespace

TEST(FileModel, RandomOperationsLeaveWhatTheModelHolds) {
    ModelRun().Run(3000);
}

// The low half of a position is 32 plain bits: 0x80000000 and 0xFFFFFFFF are not below zero, and
// the last is also what a failed move would give.
TEST(FileModel, PositionsAndSizesHave64Bits) {
    const Scratch scratch;
    XFile file = FileAt(scratch.Path("sparse"));
    ASSERT_EQ(file.Create(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    const struct {
        std::int32_t low;
        std::int32_t high;
    } positions[] = {{INT32_MIN, 0}, {-1, 0}, {0, 1}, {0x40000000, 1}};
    char mark = 'a';
    for (const auto& [low, high] : positions) {
        EXPECT_EQ(file.Write(&mark, 1, low, high), 1u);
        EXPECT_EQ(file.GetError(), XFile::ErrorNone);
        ++mark;
    }
    mark = 'a';
    for (const auto& [low, high] : positions) {
        char found = 0;
        EXPECT_EQ(file.Read(&found, 1, low, high), 1u);
        EXPECT_EQ(found, mark++);
    }
    char edge[4];
    EXPECT_EQ(file.Read(edge, 4, -2, 0), 4u);
    EXPECT_EQ(std::string(edge, 4), std::string("\0bc\0", 4));
    EXPECT_EQ(file.Read(edge, 4, 0x40000000, 1), 1u);
    EXPECT_EQ(file.GetError(), XFile::ErrorEndOfFile);
    EXPECT_EQ(file.Read(edge, 4, -1, INT32_MAX), 0u);
    platform::SetLastError(0);

    std::int32_t low = 0;
    std::int32_t high = 0;
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, 0x40000001);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(file.SetEOF(-1, 0), 1);
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, -1);
    EXPECT_EQ(high, 0);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(std::filesystem::file_size(scratch.Host("sparse")), 0xFFFFFFFFu);
}

}  // namespace veldt::tests
