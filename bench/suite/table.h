// A run as tables: for the terminal, for docs/benchmarks.md and for the README.
#pragma once

#include <string>

#include "suite/results.h"

namespace veldt::bench {

/// A section's head and a row of it, each a line of columns.
std::string TerminalHead(const MeasuredSection& section);
std::string TerminalRow(const MeasuredSection& section, const Measured& row);

/// A section as a table in Markdown, one line a row.
std::string MarkdownTable(const MeasuredSection& section);

/// The rows that are headlines, of all sections, in one table.
std::string HeadlineTable(const Run& run);

struct BoundCount {
    int met = 0;
    int missed = 0;
};
BoundCount CountBounds(const Run& run);

/// The missed bounds as a table; one sentence if there are none.
std::string MissedTable(const Run& run);

}  // namespace veldt::bench
