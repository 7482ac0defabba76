// veldt-bench: what this library costs beside what a program would use instead.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "suite/document.h"
#include "suite/machine.h"
#include "suite/measure.h"
#include "suite/table.h"
#include "suite/worker.h"

namespace veldt::bench {

namespace {

constexpr const char* kUsage =
    "usage: veldt-bench [--quick] [--narrow PROGRAM] [--keep DIRECTORY] [NAME...]\n"
    "       veldt-bench --list\n"
    "  --quick           once and briefly: shows that all works\n"
    "  --narrow PROGRAM  the rows on memory once more, by this build of it with 4-byte pointers\n"
    "  --keep DIRECTORY  write a full run to the documents of the checkout there\n"
    "  NAME...           the rows whose section or name holds one of these\n"
    "  --list            print all rows: the numbers that a worker takes, section and name\n"
    "Ends with 1 if a bound was missed, with 2 if something couldn't be measured.\n";

struct Options {
    Choice choice;
    std::string narrow;
    std::string keep;
};

bool Parse(int count, char** arguments, Options& options) {
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--quick") {
            options.choice.quick = true;
        } else if ((argument == "--narrow" || argument == "--keep") && i + 1 < count) {
            (argument == "--narrow" ? options.narrow : options.keep) = arguments[++i];
        } else if (argument.starts_with("--")) {
            return false;
        } else {
            options.choice.names.emplace_back(argument);
        }
    }
    return true;
}

Progress PrintedProgress() {
    return {
        [](const MeasuredSection& section) { std::printf("\n%s", TerminalHead(section).c_str()); },
        [](const MeasuredSection& section, const Measured& row) {
            std::printf("%s", TerminalRow(section, row).c_str());
            std::fflush(stdout);
        }};
}

Run Measure(const Options& options, const char* self) {
    std::vector<Build> builds = {{self, "", "", false, true}};
    if (!options.narrow.empty()) {
        builds.push_back({options.narrow, ", 4-byte pointers",
                          " Built for 32-bit x86, where the C library is the one allocator to "
                          "compare with: the distribution of this machine has no other.",
                          true, false});
    }
    Run run;
    std::set<std::string> allocators;
    for (const Build& build : builds) {
        for (MeasuredSection& section :
             MeasureAll(build, options.choice, PrintedProgress(), allocators)) {
            run.sections.push_back(std::move(section));
        }
    }
    run.machine = DescribeMachine(allocators);
    return run;
}

int RunSuite(const Options& options, const char* self) {
    const Run run = Measure(options, self);
    const BoundCount count = CountBounds(run);
    std::printf("\n%d bounds met, %d missed\n", count.met, count.missed);
    if (!options.keep.empty() && options.choice.names.empty() && !options.choice.quick) {
        if (const std::string wrong = KeepRun(options.keep, run); !wrong.empty()) {
            std::fprintf(stderr, "veldt-bench: %s\n", wrong.c_str());
            return 2;
        }
    }
    return count.missed == 0 ? 0 : 1;
}

void List() {
    const std::vector<Section> sections = AllSections();
    for (std::size_t i = 0; i < sections.size(); ++i) {
        for (std::size_t k = 0; k < sections[i].rows.size(); ++k) {
            std::printf("%zu %zu %s: %s\n", i, k, sections[i].title.c_str(),
                        sections[i].rows[k].name.c_str());
        }
    }
}

}  // namespace

int Main(int count, char** arguments) {
    if (count == 5 && std::strcmp(arguments[1], "--worker") == 0) {
        return RunAsWorker({std::strtoul(arguments[2], nullptr, 10),
                            std::strtoul(arguments[3], nullptr, 10),
                            std::strtoul(arguments[4], nullptr, 10)});
    }
    if (count == 2 && std::strcmp(arguments[1], "--list") == 0) {
        List();
        return 0;
    }
    Options options;
    if (!Parse(count, arguments, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    return RunSuite(options, "/proc/self/exe");
}

}  // namespace veldt::bench

int main(int count, char** arguments) {
    return veldt::bench::Main(count, arguments);
}
