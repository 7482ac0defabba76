// The byte utilities beside the C library.
#include <veldt20/bytes.h>

#include <cstring>
#include <memory>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr double kSameSpeed = 1.05;
constexpr double kMemorySpeed = 1.2;

/// Two areas of `size` bytes, at addresses that are no better aligned than a program's own.
struct Areas {
    explicit Areas(std::size_t size) : first(size + 64, 'x'), second(size + 64, 'x') {}
    char* A() { return first.data() + 3; }
    char* B() { return second.data() + 6; }

    std::vector<char> first;
    std::vector<char> second;
};

/// Passes over some megabytes a round.
template <class Call>
Setup OnAreas(std::size_t size, Call call) {
    return [=]() -> Round {
        auto areas = std::make_shared<Areas>(size);
        const int times = static_cast<int>(std::min<std::size_t>(300'000, 64'000'000 / size));
        return [=] {
            char* a = areas->A();
            char* b = areas->B();
            return NanosecondsOf(times, [=] {
                call(a, b, size);
                Touch(a);
            });
        };
    };
}

template <class Ours, class Theirs>
Row BytesRow(const char* name, std::size_t size, double bound, Ours ours, Theirs theirs) {
    const std::string text =
        size < 4096 ? std::to_string(size) + " bytes" : std::to_string(size >> 10) + " KB";
    return {name + (", " + text), {bound}, {OnAreas(size, ours), OnAreas(size, theirs)}};
}

unsigned int Count(std::size_t size) {
    return static_cast<unsigned int>(size);
}

void PlainCopy(char* a, char* b, std::size_t size) {
    std::memcpy(a, b, size);
}

std::vector<Row> RowsOf(std::size_t size) {
    const auto equal = [](char* a, char* b, std::size_t n) {
        const int same = XBlockEqual(a, b, Count(n));
        Touch(&same);
    };
    const auto plainEqual = [](char* a, char* b, std::size_t n) {
        const int same = std::memcmp(a, b, n) == 0;
        Touch(&same);
    };
    return {BytesRow(
                "XBlockMove (memmove)", size, kSameSpeed,
                [](char* a, char* b, std::size_t n) { XBlockMove(b, a, Count(n)); },
                [](char* a, char* b, std::size_t n) { std::memmove(a, b, n); }),
            BytesRow(
                "XBlockClear (memset)", size, kSameSpeed,
                [](char* a, char*, std::size_t n) { XBlockClear(a, Count(n)); },
                [](char* a, char*, std::size_t n) { std::memset(a, 0, n); }),
            BytesRow(
                "XMemSet (memset)", size, kSameSpeed,
                [](char* a, char*, std::size_t n) { XMemSet(a, 'x', Count(n)); },
                [](char* a, char*, std::size_t n) { std::memset(a, 'x', n); }),
            BytesRow("XBlockEqual (memcmp)", size, kSameSpeed, equal, plainEqual),
            BytesRow(
                "XMemSetOr (memcpy)", size, kMemorySpeed,
                [](char* a, char* b, std::size_t n) { XMemSetOr(a, b, Count(n)); }, PlainCopy),
            BytesRow(
                "XMemSetAnd (memcpy)", size, kMemorySpeed,
                [](char* a, char* b, std::size_t n) { XMemSetAnd(a, b, Count(n)); }, PlainCopy),
            BytesRow(
                "XMemSetXor (memcpy)", size, kMemorySpeed,
                [](char* a, char* b, std::size_t n) { XMemSetXor(a, b, Count(n)); }, PlainCopy)};
}

}  // namespace

Section Bytes() {
    Section section{"Bytes",
                    "Each beside the call of the C library that is named with it, on the same "
                    "bytes at the same addresses.",
                    {{"VELDT20", ""}, {"C library", ""}},
                    {}};
    for (const std::size_t size : {64U, 4096U, 65536U, 1U << 20}) {
        for (Row& row : RowsOf(size)) {
            section.rows.push_back(std::move(row));
        }
    }
    return section;
}

}  // namespace veldt::bench
