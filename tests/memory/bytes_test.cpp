#include <gtest/gtest.h>
#include <veldt20/bytes.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "memory/byte_logic.h"
#include "support/seed.h"

namespace {

using namespace veldt::memory;
using Bytes = std::vector<unsigned char>;

struct Operation {
    const char* name;
    void (*exported)(void*, const void*, unsigned int);
    void (*inner)(void*, const void*, std::size_t, VectorWidth);
    void (*one)(unsigned char&, unsigned char);
};

const Operation kOperations[] = {
    {"or", XMemSetOr, OrBytes, [](unsigned char& a, unsigned char b) { a |= b; }},
    {"and", XMemSetAnd, AndBytes, [](unsigned char& a, unsigned char b) { a &= b; }},
    {"xor", XMemSetXor, XorBytes, [](unsigned char& a, unsigned char b) { a ^= b; }},
};

/// Few zeros and few ones, so that neither OR nor AND soon has nothing left to change.
Bytes RandomBytes(std::size_t count, std::mt19937& random) {
    Bytes bytes(count);
    for (auto& byte : bytes) {
        byte = static_cast<unsigned char>(1u << random() % 8);
        byte = random() % 2 == 0 ? byte : static_cast<unsigned char>(~byte);
    }
    return bytes;
}

void ExpectAsByteByByte(const Bytes& bytes, std::size_t target, std::size_t mask,
                        std::size_t count) {
    for (const Operation& operation : kOperations) {
        Bytes expected = bytes;
        for (std::size_t i = 0; i < count; ++i) {
            operation.one(expected[target + i], expected[mask + i]);
        }
        Bytes exported = bytes;
        operation.exported(&exported[target], &exported[mask], static_cast<unsigned int>(count));
        Bytes narrow = bytes;
        operation.inner(&narrow[target], &narrow[mask], count, VectorWidth::k16);
        ASSERT_TRUE(exported == expected && narrow == expected)
            << operation.name << ' ' << count << " bytes, target " << target << ", mask " << mask;
    }
}

TEST(Bytes, LogicIsThatOfSingleBytesAtEveryDistance) {
    std::mt19937 random(veldt::tests::Seed());
    constexpr std::size_t kMask = 100;
    const Bytes bytes = RandomBytes(1000, random);
    for (std::size_t target = kMask - 80; target <= kMask + 80 && !HasFailure(); ++target) {
        for (std::size_t count = 0; count < 160 && !HasFailure(); ++count) {
            ExpectAsByteByByte(bytes, target, kMask, count);
        }
        ExpectAsByteByByte(bytes, target, kMask, 600 + random() % 200);
    }
    const Bytes large = RandomBytes(100000, random);
    for (std::size_t target = kMask - 1; target < kMask + 40 && !HasFailure(); ++target) {
        ExpectAsByteByByte(large, target, kMask, 32700 + random() % 17000);
    }
}

TEST(Bytes, MovesFillsAndComparesJustWhatItIsTold) {
    EXPECT_EQ(XBlockEqual(nullptr, "a", 0), 1);
    for (unsigned int count = 0; count < 40; ++count) {
        for (std::size_t to = 0; to < 40; ++to) {
            Bytes bytes(100);
            std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
            Bytes expected = bytes;
            std::copy_n(&bytes[20], count, &expected[to]);
            Bytes changed = bytes;
            XBlockMove(&changed[20], &changed[to], count);
            ASSERT_EQ(changed, expected);
            std::fill_n(&expected[to], count, '\xAB');
            XMemSet(reinterpret_cast<char*>(&changed[to]), '\xAB', count);
            ASSERT_EQ(changed, expected);
            ASSERT_EQ(XBlockEqual(&changed[to], &expected[to], count + 1), 1);
            std::fill_n(&expected[to], count, 0);
            ASSERT_EQ(XBlockEqual(&changed[to], &expected[to], count), count == 0);
            XBlockClear(&changed[to], count);
            ASSERT_EQ(changed, expected);
            ++changed[to + count];
            ASSERT_EQ(XBlockEqual(&changed[to], &expected[to], count), 1);
            ASSERT_EQ(XBlockEqual(&changed[to], &expected[to], count + 1), 0);
        }
    }
}

}  // namespace
