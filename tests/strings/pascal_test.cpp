// Length-prefixed strings: every call on texts that often overlap, and numbers.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "support/seed.h"

namespace {

std::string Prefixed(const std::string& text) {
    return static_cast<char>(text.size()) + text;
}

std::string WithTerminator(const std::string& text) {
    return {text.c_str(), text.size() + 1};
}

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

// In a stretch of memory of few byte values, so that much is found. Each call reads its source
// before it writes, and writes no byte too many.
TEST(Pascal, CallsAgreeWithPlainOnesOnACopy) {
    std::mt19937 random(veldt::tests::Seed());
    const auto below = [&](std::size_t bound) { return random() % bound; };
    const auto length = [&] { return below(below(2) == 0 ? 6 : 256); };
    std::string memory(1000, 0);
    const auto textAt = [&](std::size_t at) {
        return memory.substr(at + 1, static_cast<unsigned char>(memory[at]));
    };
    for (int round = 0; round < 100000; ++round) {
        if (round % 10 == 0) {
            for (char& c : memory) c = "ab\1\xFF"[below(4)];
            for (int zeros = 9; zeros > 0; --zeros) memory[below(memory.size())] = 0;
        }
        const std::size_t to = below(300), from = below(3) == 0 ? below(300) : to + below(9);
        memory[from] = static_cast<char>(length());
        memory[to] = static_cast<char>(length());
        const std::string source = textAt(from), target = textAt(to), text = memory.c_str() + from;
        unsigned char *p = Bytes(memory) + from, *q = Bytes(memory) + to;
        ASSERT_EQ(XPascalStrLen(p), source.size());
        ASSERT_EQ(XPascalStrIsEmpty(p), source.empty());
        // npos + 1 is 0.
        ASSERT_EQ(XPascalStrPos(p, q), source.empty() ? 0 : target.find(source) + 1)
            << testing::PrintToString(source) << " in " << testing::PrintToString(target);
        const std::size_t last = target.rfind('\1');
        ASSERT_EQ(XPascalStrRScan(q, 1), last == target.npos ? nullptr : q + 1 + last);

        char *c = memory.data() + from, *d = memory.data() + to;
        const std::size_t most = below(256), first = length();
        const auto limit = static_cast<std::int16_t>(most);
        const auto begin = static_cast<unsigned char>(first);
        const auto count = static_cast<unsigned char>(most);
        const std::string whole = Prefixed(source);
        const std::string part = first < whole.size() ? whole.substr(first, most) : "";
        const std::string start = text.substr(0, most);
        std::string replaced = target;
        std::replace(replaced.begin(), replaced.end(), '\1', 'c');
        const auto hits = std::count(target.begin(), target.end(), '\1');
        // Where the two begin at the same byte the text can be converted in its place.
        const bool inPlace = from == to;
        const struct {
            std::function<void*()> call;
            std::string written;
        } changes[] = {
            {[&] { return XPascalStrCpy(q, p); }, Prefixed(source)},
            {[&] { return XPascalStrCpy(q, c, limit); }, Prefixed(start)},
            {[&] { return XPascalStrCpy(q, p, begin, count); }, Prefixed(part)},
            {[&] { return XPascalStrCat(q, p); }, Prefixed((target + source).substr(0, 255))},
            {[&] { return PStr2CStr(p, d, limit); }, WithTerminator(source.substr(0, most))},
            {[&] { return CStr2PStr(c, q, limit); }, Prefixed(start)},
            {[&] { return _PtoCstr(p, inPlace ? nullptr : d); }, WithTerminator(source)},
            {[&] { return _CtoPstr(c, inPlace ? nullptr : q); },
             Prefixed(text.substr(0, text.size() % 256))},
            {[&] { return XCStringToPStr(c, q, limit + 1), q; }, Prefixed(start)},
            {[&] { return XPascalStrReplace(q, 1, 'c') == hits ? q : nullptr; },
             Prefixed(replaced)},
            {[&] { return XPascalStrInit(q), q; }, Prefixed("")}};
        const std::size_t chosen = below(std::size(changes));
        const auto& [call, written] = changes[chosen];
        std::string copy = memory;
        copy.replace(to, written.size(), written);
        ASSERT_EQ(call(), q) << "change " << chosen;
        ASSERT_EQ(memory, copy) << "change " << chosen;
    }
}

TEST(Pascal, LimitsAndNulls) {
    unsigned char pascal[256];
    char text[] = "text";
    XPascalStrCpy(pascal, std::string(65538, 'x').c_str(), 255);
    EXPECT_EQ(pascal[0], 2) << "a length counts modulo 65536";
    EXPECT_TRUE(!PStr2CStr(nullptr, text, 4) && !PStr2CStr(pascal, nullptr, 4));
    EXPECT_TRUE(!CStr2PStr(nullptr, pascal, 4) && !CStr2PStr(text, nullptr, 4));
    EXPECT_TRUE(!_PtoCstr(nullptr, text) && !_CtoPstr(nullptr, pascal));
}

TEST(Pascal, NumbersGoThroughText) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::mt19937 random(veldt::tests::Seed());
    const std::string pieces[] = {" ", "\t\n\v\f\r",   "+",          "-",
                                  "0", "27",           "2147483647", "2147483648",
                                  "a", "000000000000", "9999999999", "1000000000"};
    for (int round = 0; round < 20000; ++round) {
        const auto any = static_cast<std::int32_t>(random()) >> random() % 32;
        const std::int32_t number = round == 0 ? Limits::min() : any;
        const std::string digits = std::to_string(number);
        std::string written(digits.size() + 3, 'w');
        XNumToString(number, Bytes(written));
        ASSERT_EQ(written, Prefixed(digits) + '\0' + 'w');

        std::string text;
        for (auto count = random() % 6; count > 0; --count) text += pieces[random() % 12];
        const long long wanted = std::clamp<long long>(std::strtoll(text.c_str(), nullptr, 10),
                                                       Limits::min(), Limits::max());
        // What follows is no part of the text.
        std::string counted = Prefixed(text) + (round % 2 == 0 ? "11" : " 11");
        std::int32_t result = 5, countedResult = 5;
        XStringToNum(text.c_str(), &result);
        XStringToNum(Bytes(counted), &countedResult);
        ASSERT_EQ(result, wanted) << text;
        ASSERT_EQ(countedResult, wanted) << text;
    }
}

TEST(Pascal, SetRangesShiftModulo32) {
    EXPECT_EQ(XPascalSetRange(3, 5, 0), 0x38u);
    EXPECT_EQ(XPascalSetRange(10, 12, 8), 0x1Cu);
    EXPECT_EQ(XPascalSetRange(0, 31, 0), 0u);
    EXPECT_EQ(XPascalSetRange(34, 34, 0), 4u);
    EXPECT_EQ(XPascalSetRange(0, 0, 1), 0x80000000u);
}

}  // namespace
