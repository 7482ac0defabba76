#include <gtest/gtest.h>
#include <veldt20/utilities_byte_order.h>

#include <bit>
#include <cstdint>
#include <string>
#include <utility>

namespace {

TEST(ByteOrder, NumbersAndTheFieldsOfRecords) {
    EXPECT_EQ(XSwapBytes(0x12F4), 0xF412);
    EXPECT_EQ(XSwapLong(0x12345678), 0x78563412);
    EXPECT_EQ(XSwapLong(0x7EDCBA98), static_cast<std::int32_t>(0x98BADC7E));
    XNPoint point{0x0102, 0x03F4};
    XSwapPoint(point);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(point), 0xF4030201);
    XNRect rect{0x0102, 0x0304, 0x0506, 0x0708};
    XSwapRect(rect);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(rect), 0x0807060504030201);
    // At an odd address; the second is a signalling not-a-number both ways.
    for (const std::string bytes : {"\1\2\3\4\5\6\7\10", "\x7F\xF0\1\2\3\4\xF0\x7F"}) {
        std::string buffer = "<" + bytes + ">";
        XSwapDouble(reinterpret_cast<double*>(buffer.data() + 1));
        EXPECT_EQ(buffer, "<" + std::string(bytes.rbegin(), bytes.rend()) + ">");
    }
}

TEST(ByteOrder, ResourceTypes) {
    using namespace std::string_literals;
    for (const auto& [type, expected] : {std::pair{0x44434241u, "ABCD\0#"s},
                                         {0u, "\0\0\0\0\0#"s},
                                         {0xFF00FE41u, "A\xFE\0\xFF\0#"s}}) {
        std::string text(6, '#');
        XResTypeToNResType(text.data(), type);
        EXPECT_EQ(text, expected);
    }
}

}  // namespace
