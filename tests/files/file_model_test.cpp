// Files against a string that holds what they should, and at positions beyond 4 GB.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "files/failures.h"
#include "support/seed.h"

namespace veldt::tests {

TEST(FileModel, RandomOperationsLeaveWhatTheModelHolds) {
    const Scratch scratch;
    std::mt19937 random(Seed());
    const auto upTo = [&](std::size_t most) { return random() % (most + 1); };
    std::string model;
    XFile file = FileAt(scratch.Path("model"));
    ASSERT_EQ(file.Create(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    for (int step = 0; step < 3000 && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const std::size_t choice = upTo(19);
        // Within the file or far beyond its end; mostly few bytes, now and then several pages.
        const std::size_t position = upTo(upTo(1) == 0 ? 100000 : model.size());
        const auto low = static_cast<std::int32_t>(position);
        std::string bytes(upTo(upTo(3) == 0 ? 20000 : 100), '\0');
        const auto count = static_cast<std::uint32_t>(bytes.size());
        XFile::Error error = XFile::ErrorNone;
        if (choice < 8) {
            for (char& letter : bytes) letter = static_cast<char>(random());
            EXPECT_EQ(file.Write(bytes.data(), count, low, 0), count);
            if (count == 0) continue;
            model.resize(std::max(model.size(), position + count));
            model.replace(position, count, bytes);
        } else if (choice < 16) {
            const std::string rest = position < model.size() ? model.substr(position, count) : "";
            bytes.resize(file.Read(bytes.data(), count, low, 0));
            EXPECT_EQ(bytes, rest);
            if (rest.size() < count) error = XFile::ErrorEndOfFile;
        } else if (choice < 18) {
            EXPECT_EQ(file.SetEOF(low, 0), 1);
            model.resize(position);
        } else {
            EXPECT_EQ(file.Close(), 1);
            EXPECT_EQ(file.Open(XFile::PermissionReadWriteShared), 1);
        }
        EXPECT_EQ(file.GetError(), error);
        std::int32_t size = -1, high = -1;
        EXPECT_EQ(file.GetEOF(&size, &high), 1);
        EXPECT_EQ(static_cast<std::size_t>(size), model.size());
        EXPECT_EQ(high, 0);
    }
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(scratch.Content("model"), model);
}

// The low half of a position is 32 plain bits: 0x80000000 and 0xFFFFFFFF are not below zero, and
// the last is also what a failed move would give.
TEST(FileModel, PositionsAndSizesHave64Bits) {
    const Scratch scratch;
    XFile file = FileAt(scratch.Path("sparse"));
    ASSERT_EQ(file.Create(), 1);
    ASSERT_EQ(file.Open(XFile::PermissionReadWrite), 1);
    const std::tuple<char, std::int32_t, std::int32_t> places[] = {
        {'a', INT32_MIN, 0}, {'b', -1, 0}, {'c', 0, 1}, {'d', 0x40000000, 1}};
    for (const auto& [mark, low, high] : places) EXPECT_EQ(file.Write(&mark, 1, low, high), 1u);
    char edge[4];
    for (const auto& [mark, low, high] : places) {
        EXPECT_EQ(file.Read(edge, 1, low, high), 1u);
        EXPECT_EQ(edge[0], mark);
    }
    // Below zero nothing is done, not even where the handle stood before.
    for (const std::int32_t below : {0, -1, 7}) {
        ExpectFailure(file, file.Read(edge, 1, below, -1), XFile::ErrorOther);
        ExpectFailure(file, file.Write(edge, 1, below, -1), XFile::ErrorOther);
        ExpectFailure(file, file.SetEOF(below, -1), XFile::ErrorOther);
    }
    EXPECT_EQ(file.Read(edge, 4, -2, 0), 4u);
    EXPECT_EQ(std::string(edge, 4), std::string("\0bc\0", 4));
    EXPECT_EQ(file.Read(edge, 4, 0x40000000, 1), 1u);
    EXPECT_EQ(file.GetError(), XFile::ErrorEndOfFile);
    EXPECT_EQ(file.Read(edge, 4, -1, INT32_MAX), 0u);
    ClearPendingError();
    std::int32_t low = 0, high = 0;
    EXPECT_EQ(file.GetEOF(&low, &high), 1);
    EXPECT_EQ(low, 0x40000001);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(file.SetEOF(-1, 0), 1);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(std::filesystem::file_size(scratch.Host("sparse")), 0xFFFFFFFFu);
}

}  // namespace veldt::tests
