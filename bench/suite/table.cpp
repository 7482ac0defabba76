#include "suite/table.h"

#include <algorithm>

namespace veldt::bench {

namespace {

constexpr std::size_t kNameWidth = 46;
constexpr std::size_t kFigureWidth = 13;
constexpr std::size_t kRatioWidth = 9;

/// Characters, not bytes, of UTF-8.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string PaddedLeft(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, Width(text)), ' ') + text;
}

std::string PaddedRight(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, Width(text)), ' ');
}

std::string RatioToFastestText(const Measured& row) {
    const auto ratio = RatioToFastest(row);
    return ratio ? RatioText(*ratio) : std::string();
}

bool HasPeers(const MeasuredSection& section) {
    return section.contestants.size() > 2;
}

std::string Line(const std::vector<std::string>& cells) {
    std::string line = "|";
    for (const std::string& cell : cells) {
        line += " " + cell + " |";
    }
    return line + "\n";
}

/// Its first column to the left, the others to the right.
std::string Rule(std::size_t columns) {
    std::string line = "|---|";
    for (std::size_t i = 1; i < columns; ++i) {
        line += "--:|";
    }
    return line + "\n";
}

std::vector<std::string> HeadCells(const MeasuredSection& section) {
    std::vector<std::string> cells = {"Work"};
    cells.insert(cells.end(), section.contestants.begin(), section.contestants.end());
    cells.push_back("to " + section.contestants.at(1));
    if (HasPeers(section)) cells.emplace_back("to the fastest peer");
    cells.insert(cells.end(), {"bound", ""});
    return cells;
}

std::vector<std::string> RowCells(const MeasuredSection& section, const Measured& row) {
    std::vector<std::string> cells = {row.name};
    for (const double median : row.medians) {
        cells.push_back(FigureText(row.unit, median));
    }
    cells.push_back(RatioText(RatioToFirst(row)));
    if (HasPeers(section)) cells.push_back(RatioToFastestText(row));
    const std::string verdict = VerdictText(row);
    cells.push_back(BoundText(row.bound));
    cells.push_back(verdict == "missed" ? "**missed**" : verdict);
    return cells;
}

template <class Visit>
void ForEachRow(const Run& run, const Visit& visit) {
    for (const MeasuredSection& section : run.sections) {
        for (const Measured& row : section.rows) {
            visit(section, row);
        }
    }
}

/// "mimalloc 12.1 ns", or a dash.
std::string FastestPeerText(const MeasuredSection& section, const Measured& row) {
    const auto peer = FastestPeer(row);
    if (!peer) return "-";
    return section.contestants.at(*peer) + " " + FigureText(row.unit, row.medians.at(*peer));
}

}  // namespace

std::string TerminalHead(const MeasuredSection& section) {
    std::string line = PaddedRight(section.title, kNameWidth);
    for (const std::string& contestant : section.contestants) {
        line += PaddedLeft(contestant.substr(0, kFigureWidth - 1), kFigureWidth);
    }
    line += PaddedLeft("to first", kRatioWidth);
    if (HasPeers(section)) line += PaddedLeft("to best", kRatioWidth);
    return line + "\n";
}

std::string TerminalRow(const MeasuredSection& section, const Measured& row) {
    std::string line = PaddedRight("  " + row.name, kNameWidth);
    for (const double median : row.medians) {
        line += PaddedLeft(FigureText(row.unit, median), kFigureWidth);
    }
    line += PaddedLeft(RatioText(RatioToFirst(row)), kRatioWidth);
    if (HasPeers(section)) line += PaddedLeft(RatioToFastestText(row), kRatioWidth);
    const std::string verdict = VerdictText(row);
    if (!verdict.empty()) line += "  " + BoundText(row.bound) + ": " + verdict;
    return line + "\n";
}

std::string MarkdownTable(const MeasuredSection& section) {
    const std::vector<std::string> head = HeadCells(section);
    std::string table = Line(head) + Rule(head.size());
    for (const Measured& row : section.rows) {
        table += Line(RowCells(section, row));
    }
    return table;
}

std::string HeadlineTable(const Run& run) {
    const std::vector<std::string> head = {"Work",          "VELDT20",      "what it is beside",
                                           "ratio to that", "fastest peer", "ratio to it"};
    std::string table = Line(head) + Rule(head.size());
    ForEachRow(run, [&](const MeasuredSection& section, const Measured& row) {
        if (!row.headline) return;
        const auto toFastest = RatioToFastest(row);
        table += Line({section.title + ": " + row.name, FigureText(row.unit, row.medians.at(0)),
                       section.contestants.at(1) + " " + FigureText(row.unit, row.medians.at(1)),
                       RatioText(RatioToFirst(row)), FastestPeerText(section, row),
                       toFastest ? RatioText(*toFastest) : "-"});
    });
    return table;
}

BoundCount CountBounds(const Run& run) {
    BoundCount count;
    ForEachRow(run, [&](const MeasuredSection&, const Measured& row) {
        const Verdict verdict = VerdictOn(row);
        count.met += verdict == Verdict::kMet ? 1 : 0;
        count.missed += verdict == Verdict::kMissed ? 1 : 0;
    });
    return count;
}

std::string MissedTable(const Run& run) {
    if (CountBounds(run).missed == 0) return "No bound is missed.\n";
    const std::vector<std::string> head = {"Work", "figure", "to the first", "to the fastest peer",
                                           "bound"};
    std::string table = Line(head) + Rule(head.size());
    ForEachRow(run, [&](const MeasuredSection& section, const Measured& row) {
        if (VerdictOn(row) != Verdict::kMissed) return;
        table +=
            Line({section.title + ": " + row.name, FigureText(row.unit, row.medians.at(0)),
                  RatioText(RatioToFirst(row)), RatioToFastestText(row), BoundText(row.bound)});
    });
    return table;
}

}  // namespace veldt::bench
