// XCString beside std::string.
#include <strings.h>
#include <veldt20/strings_xcstring.h>

#include <algorithm>
#include <cctype>
#include <memory>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr int kTimes = 100'000;
constexpr double kSameSpeed = 1.1;

std::string Lengthy(std::size_t length) {
    std::string text(length, '\0');
    for (std::size_t i = 0; i < length; ++i) {
        text[i] = static_cast<char>('a' + i * 7 % 23);
    }
    return text;
}

/// `call` with whatever it works on in its own hold, so many times a round.
template <class Call>
Setup Repeated(int times, Call call) {
    return [=]() -> Round {
        auto owned = std::make_shared<Call>(call);
        return [=] { return NanosecondsOf(times, *owned); };
    };
}

Row CopyRow(std::size_t length) {
    const std::string text = Lengthy(length);
    return {"copy of " + std::to_string(length) + " bytes",
            {length >= 32 ? 0.3 : 0},
            {Repeated(kTimes,
                      [a = XCString(text.c_str())] {
                          const XCString b(a);
                          Touch(&b);
                      }),
             Repeated(kTimes, [text] {
                 const std::string b(text);
                 Touch(&b);
             })}};
}

/// The text as if it had come from elsewhere.
const char* Unknown(const char* text) {
    asm("" : "+r"(text));
    return text;
}

Row AppendWithRoomRow() {
    constexpr int kAppended = 25;
    const auto ours = [] {
        XCString line;
        line.GetBuffer(8 * kAppended);
        return [line]() mutable {
            line.GetBuffer(8 * kAppended);
            line.ReleaseBuffer(0);
            for (int i = 0; i < kAppended; ++i) {
                line += Unknown("8 bytes.");
            }
            Touch(line);
        };
    };
    const auto theirs = [line = std::string()]() mutable {
        line.reserve(8 * kAppended);
        line.clear();
        for (int i = 0; i < kAppended; ++i) {
            line += Unknown("8 bytes.");
        }
        Touch(line.data());
    };
    return {"25 appends of 8 bytes, with room",
            {kSameSpeed},
            {Repeated(kTimes / 10, ours()), Repeated(kTimes / 10, theirs)}};
}

Row AppendCharactersRow() {
    constexpr int kAppended = 100;
    const auto ours = [line = XCString()]() mutable {
        line.GetBuffer(kAppended);
        line.ReleaseBuffer(0);
        for (int i = 0; i < kAppended; ++i) {
            line += 'x';
            Touch(&line);
        }
    };
    const auto theirs = [line = std::string()]() mutable {
        line.reserve(kAppended);
        line.clear();
        for (int i = 0; i < kAppended; ++i) {
            line += 'x';
            Touch(&line);
        }
    };
    return {"100 appends of a character, with room",
            {kSameSpeed},
            {Repeated(kTimes / 20, ours), Repeated(kTimes / 20, theirs)}};
}

Row AppendWithoutRoomRow() {
    const std::string text = Lengthy(100);
    return {"copy of 100 bytes and append of 100, without room",
            {},
            {Repeated(kTimes,
                      [a = XCString(text.c_str())] {
                          XCString b(a);
                          b += a;
                          Touch(b);
                      }),
             Repeated(kTimes, [text] {
                 std::string b(text);
                 b += text;
                 Touch(b.data());
             })}};
}

struct Pair {
    const char* name;
    std::string a;
    std::string b;
};

std::vector<Pair> PairsToCompare() {
    std::vector<Pair> pairs;
    for (const std::size_t length : {8U, 32U, 1000U}) {
        const std::string text = Lengthy(length);
        std::string late = text;
        ++late.back();
        pairs.push_back({"equal", text, text});
        pairs.push_back({"differing late", text, late});
        if (length == 1000) pairs.push_back({"differing early", "x" + text, "y" + text});
    }
    return pairs;
}

Row CompareRow(const Pair& pair) {
    const auto ours = [a = XCString(pair.a.c_str()), b = XCString(pair.b.c_str())] {
        Touch(&a);
        const int order = a.Compare(b);
        Touch(&order);
    };
    const auto theirs = [a = pair.a, b = pair.b] {
        Touch(&a);
        const int order = a.compare(b.c_str());
        Touch(&order);
    };
    return {"compare " + std::to_string(pair.a.size()) + " bytes, " + pair.name,
            {kSameSpeed},
            {Repeated(kTimes, ours), Repeated(kTimes, theirs)}};
}

Row EqualityRow(const Pair& pair) {
    const auto ours = [a = XCString(pair.a.c_str()), b = XCString(pair.b.c_str())] {
        Touch(&a);
        const int order = (a == b) + 2 * (a < b);
        Touch(&order);
    };
    const auto theirs = [a = pair.a, b = pair.b] {
        Touch(&a);
        const int order = (a == b) + 2 * (a < b);
        Touch(&order);
    };
    return {"== and < on " + std::to_string(pair.a.size()) + " bytes, " + pair.name,
            {kSameSpeed},
            {Repeated(kTimes, ours), Repeated(kTimes, theirs)}};
}

template <class What>
Row FindRow(const char* name, const std::string& text, What what) {
    const auto ours = [a = XCString(text.c_str()), what] {
        Touch(&a);
        const int place = a.Find(what);
        Touch(&place);
    };
    const auto theirs = [text, what] {
        Touch(&text);
        const std::size_t place = text.find(what);
        Touch(&place);
    };
    return {name + (" in " + std::to_string(text.size())) + " bytes",
            {kSameSpeed},
            {Repeated(kTimes, ours), Repeated(kTimes, theirs)}};
}

std::string Capitals(std::size_t length) {
    std::string text = Lengthy(length);
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

Row FoldRow(std::size_t length) {
    const std::string text = Capitals(length);
    return {"copy and lower the case of " + std::to_string(length) + " bytes",
            {},
            {Repeated(kTimes / 10,
                      [a = XCString(text.c_str())] {
                          XCString b(a);
                          b.MakeLower();
                          Touch(b);
                      }),
             Repeated(kTimes / 10, [text] {
                 std::string b(text);
                 std::ranges::transform(b, b.begin(),
                                        [](unsigned char c) { return std::tolower(c); });
                 Touch(b.data());
             })}};
}

Row CompareFoldedRow(std::size_t length) {
    const std::string upper = Capitals(length);
    const std::string lower = Lengthy(length);
    const auto ours = [a = XCString(upper.c_str()), lower] {
        const int order = a.CompareNoCase(lower.c_str());
        Touch(&order);
    };
    const auto theirs = [upper, lower] {
        const int order = strcasecmp(upper.c_str(), lower.c_str());
        Touch(&order);
    };
    return {"compare " + std::to_string(length) + " bytes whatever their case (strcasecmp)",
            {},
            {Repeated(kTimes / 10, ours), Repeated(kTimes / 10, theirs)}};
}

}  // namespace

Section Strings() {
    Section section{"XCString",
                    "Beside std::string, through the shared module.",
                    {{"XCString", ""}, {"std::string", ""}},
                    {}};
    for (const std::size_t length : {8U, 32U, 100U, 1000U}) {
        section.rows.push_back(CopyRow(length));
        section.rows.back().headline = length == 100;
    }
    section.rows.push_back(AppendWithRoomRow());
    section.rows.push_back(AppendCharactersRow());
    section.rows.push_back(AppendWithoutRoomRow());
    for (const Pair& pair : PairsToCompare()) {
        section.rows.push_back(CompareRow(pair));
    }
    for (const Pair& pair : PairsToCompare()) {
        section.rows.push_back(EqualityRow(pair));
    }
    for (const std::size_t length : {16U, 100U, 1000U}) {
        section.rows.push_back(FindRow("find a character", Lengthy(length - 1) + '!', '!'));
        section.rows.push_back(FindRow("find a text", Lengthy(length - 4) + "wxy!", "wxy!"));
    }
    for (const std::size_t length : {32U, 1000U}) {
        section.rows.push_back(FoldRow(length));
        section.rows.push_back(CompareFoldedRow(length));
    }
    return section;
}

}  // namespace veldt::bench
