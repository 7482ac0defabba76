#include "suite/document.h"

#include <fstream>
#include <iterator>

#include "suite/plot.h"
#include "suite/table.h"

namespace veldt::bench {

namespace {

constexpr const char* kBegin = "<!-- figures of ./do bench: begin -->\n";
constexpr const char* kEnd = "<!-- figures of ./do bench: end -->\n";

constexpr const char* kHowToRead =
    "Each contestant works in a process of its own, through the shared module or with its "
    "allocator "
    "preloaded, and all are asked for a round in turn; figures are medians over the rounds. The "
    "ratios are of costs: below 1 means that VELDT20 is ahead. A bound is what this project holds "
    "itself to: first the ratio to the C library (or what stands in its column), then the ratio to "
    "the fastest of the others.\n";

std::string BoundSentence(const Run& run) {
    const BoundCount count = CountBounds(run);
    return std::to_string(count.met) + " bounds are met and " + std::to_string(count.missed) +
           " missed.";
}

bool WriteFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return !file.fail();
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::string BenchmarksPage(const Run& run) {
    std::string page =
        "# Benchmarks\n\nWritten by `./do bench` after its last full run. To repeat it:\n\n"
        "    ./do setup    # the compilers and the allocators to compare with\n"
        "    ./do bench    # all of it, some minutes on a machine with nothing else to do\n\n"
        "`./do bench NAME...` measures the rows whose section or name holds one of the texts, and "
        "`./do bench --quick` all of them once; neither writes this page. The rows with 1 GB live "
        "want 8 GB of memory.\n\n";
    for (const std::string& sentence : run.machine) {
        page += "- " + sentence + "\n";
    }
    page += std::string("\n") + kHowToRead + "\n" + BoundSentence(run) +
            "\n\n![Cost of each contestant beside the C library's](pictures/benchmarks.svg)\n\n"
            "## Missed\n\n" +
            MissedTable(run);
    for (const MeasuredSection& section : run.sections) {
        page += "\n## " + section.title + "\n\n" + section.note + "\n\n" + MarkdownTable(section);
    }
    return page;
}

std::string WithFigures(const std::string& readme, const Run& run) {
    const std::size_t begin = readme.find(kBegin);
    const std::size_t end = readme.find(kEnd);
    if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
    return readme.substr(0, begin) + kBegin + "\n" + HeadlineTable(run) +
           "\nA ratio below 1 means that VELDT20 is ahead. " + BoundSentence(run) + "\n\n" +
           readme.substr(end);
}

std::string KeepRun(const std::string& root, const Run& run) {
    const std::string readme = WithFigures(ReadFile(root + "/README.md"), run);
    if (readme.empty()) return "README.md has no place for the figures";
    const bool written = WriteFile(root + "/README.md", readme) &&
                         WriteFile(root + "/docs/benchmarks.md", BenchmarksPage(run)) &&
                         WriteFile(root + "/docs/pictures/benchmarks.svg", PlotSvg(run));
    return written ? "" : "the figures can't be written to " + root;
}

}  // namespace veldt::bench
