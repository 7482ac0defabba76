#include <gtest/gtest.h>
#include <veldt20/utilities_byte_order.h>

#include <bit>
#include <cstdint>
#include <string>

namespace {

TEST(ByteOrder, NumbersAndTheFieldsOfRecords) {
    EXPECT_EQ(XSwapBytes(0x12F4), 0xF412);
    EXPECT_EQ(XSwapLong(0x7EDCBA98), static_cast<std::int32_t>(0x98BADC7E));
    XNPoint point{0x0102, 0x03F4};
    XSwapPoint(point);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(point), 0xF4030201);
    XNRect rect{0x0102, 0x0304, 0x0506, 0x0708};
    XSwapRect(rect);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(rect), 0x0807060504030201);
    // At an odd address, and a signalling not-a-number both ways.
    const std::string bytes = "\x7F\xF0\1\2\3\4\xF0\x7F";
    std::string buffer = "<" + bytes + ">";
    XSwapDouble(reinterpret_cast<double*>(buffer.data() + 1));
    EXPECT_EQ(buffer, "<" + std::string(bytes.rbegin(), bytes.rend()) + ">");
    buffer = "#######";
    XResTypeToNResType(buffer.data(), 0xFF00FE41);
    EXPECT_EQ(buffer, std::string("A\xFE\0\xFF\0##", 7));
}

}  // namespace
