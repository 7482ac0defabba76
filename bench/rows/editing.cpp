// __XMunger on a handle beside std::string.
#include <memory>

#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr double kSameSpeed = 1.2;  // of memmem's kin on text

/// Words of the letters of English, the commoner ones more often.
std::string Text(std::size_t length) {
    constexpr char kLetters[] = "      eeeeetttaaaooooiiinnnsshhrrddlcumwfgypbvk";
    std::string text(length, '\0');
    std::uint32_t state = 20;
    for (char& c : text) {
        state = state * 1664525 + 1013904223;
        c = kLetters[(state >> 8) % (sizeof kLetters - 1)];
    }
    return text;
}

char** HandleOf(const std::string& text) {
    char** h = nullptr;
    _XPtrToHand(text.data(), &h, static_cast<std::int32_t>(text.size()));
    return h;
}

Row SearchRow(std::size_t length, const std::string& pattern) {
    const std::string text = Text(length);
    const int times = static_cast<int>(20'000'000 / length);
    const auto ours = [=]() -> Round {
        char** h = HandleOf(text);
        return [=] {
            return NanosecondsOf(times, [&] {
                const std::int32_t place = __XMunger(
                    h, 0, pattern.data(), static_cast<std::int32_t>(pattern.size()), nullptr, 0);
                Touch(&place);
            });
        };
    };
    const auto theirs = [=]() -> Round {
        return [=] {
            return NanosecondsOf(times, [&] {
                Touch(&text);
                const std::size_t place = text.find(pattern);
                Touch(&place);
            });
        };
    };
    return {"search of " + std::to_string(length) + " bytes for " + std::to_string(pattern.size()) +
                " that aren't there",
            {kSameSpeed},
            {ours, theirs}};
}

/// Replaces bytes in the middle and puts the former ones back.
Row ReplacementRow(std::size_t length, const std::string& former, const std::string& latter) {
    const std::string text = Text(length / 2) + former + Text(length / 2);
    const auto at = static_cast<std::int32_t>(length / 2);
    const auto formerSize = static_cast<std::int32_t>(former.size());
    const auto latterSize = static_cast<std::int32_t>(latter.size());
    const auto ours = [=]() -> Round {
        char** h = HandleOf(text);
        return [=] {
            return NanosecondsOf(20'000, [&] {
                __XMunger(h, at, nullptr, formerSize, latter.data(), latterSize);
                __XMunger(h, at, nullptr, latterSize, former.data(), formerSize);
            });
        };
    };
    const auto theirs = [=]() -> Round {
        auto edited = std::make_shared<std::string>(text);
        return [=] {
            return NanosecondsOf(20'000, [&] {
                edited->replace(length / 2, former.size(), latter);
                edited->replace(length / 2, latter.size(), former);
                Touch(edited->data());
            });
        };
    };
    return {"replace " + std::to_string(former.size()) + " of " + std::to_string(length) +
                " bytes by " + std::to_string(latter.size()) + " and back",
            {},
            {ours, theirs}};
}

}  // namespace

Section Editing() {
    return {"__XMunger",
            "On a handle, beside find and replace of std::string.",
            {{"__XMunger", ""}, {"std::string", ""}},
            {SearchRow(1000, "qz"), SearchRow(1000, "the rest of it!!"), SearchRow(65536, "qz"),
             SearchRow(65536, "the rest of it!!"), ReplacementRow(1000, "four", "five"),
             ReplacementRow(1000, "four", "twelve"), ReplacementRow(65536, "four", "twelve")}};
}

}  // namespace veldt::bench
