// __XMunger: searching a handle beside memmem and std::string, and editing one beside std::string.
#include <cstring>
#include <memory>

#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr double kOnText = 1.2;
constexpr int kSearches = 40;
constexpr std::size_t kText = 65536;  // that is searched

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

/// Times `find(text, pattern)`, whose result is looked at.
template <class Find>
Setup TimedSearch(const std::string& text, const std::string& pattern, Find find) {
    return [=]() -> Round {
        return [=] {
            return NanosecondsOf(kSearches, [&] {
                Touch(text.data());
                const auto place = find(text, pattern);
                Touch(&place);
            });
        };
    };
}

Setup SearchingHandle(const std::string& text, const std::string& pattern) {
    return [=]() -> Round {
        char** h = HandleOf(text);
        return TimedSearch(text, pattern, [h](const std::string&, const std::string& sought) {
            return __XMunger(h, 0, sought.data(), static_cast<std::int32_t>(sought.size()), nullptr,
                             0);
        })();
    };
}

Row SearchRow(const std::string& name, const std::string& text, const std::string& pattern) {
    return {name,
            {kOnText},
            {SearchingHandle(text, pattern),
             TimedSearch(text, pattern,
                         [](const std::string& in, const std::string& sought) {
                             return memmem(in.data(), in.size(), sought.data(), sought.size());
                         }),
             TimedSearch(text, pattern, [](const std::string& in, const std::string& sought) {
                 return in.find(sought);
             })}};
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

Section Searching() {
    Section section{
        "Searching a handle",
        "__XMunger looks for bytes that aren't there in 64 KB of letters as frequent as "
        "in English, or of one letter.",
        {{"__XMunger", ""}, {"memmem", ""}, {"std::string::find", ""}},
        {}};
    const std::string text = Text(kText);
    for (const std::size_t length : {2U, 4U, 8U, 16U, 64U, 1000U}) {
        const std::string size = std::to_string(length) + " bytes, ";
        section.rows.push_back(
            SearchRow(size + "the last one differs", text, text.substr(3000, length - 1) + '!'));
        section.rows.push_back(
            SearchRow(size + "the first one differs", text, '!' + text.substr(3000, length - 1)));
    }
    const std::string same(kText, 'a');
    const std::string half(kText / 2, 'a');
    section.rows.push_back(SearchRow("a...ab in a...a", same, half + 'b'));
    section.rows.push_back(SearchRow("ba...a in a...a", same, 'b' + half));
    for (Row& row : section.rows) {
        row.rounds = 9;
    }
    return section;
}

Section Editing() {
    return {"Editing a handle",
            "__XMunger replaces bytes in the middle, and puts the former ones back.",
            {{"__XMunger", ""}, {"std::string::replace", ""}},
            {ReplacementRow(1000, "four", "five"), ReplacementRow(1000, "four", "twelve"),
             ReplacementRow(kText, "four", "twelve")}};
}

}  // namespace veldt::bench
