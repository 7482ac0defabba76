// veldt-replay: shows how a real program's memory behaves on this heap.
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "keepers.h"
#include "replayer.h"

namespace {

constexpr int kBadUse = 2;

constexpr const char* kUsage =
    "usage: veldt-replay [--handles|--pointers|--malloc] [--repeat N] [--verify] [--json]\n"
    "                    [--picture FILE.svg] TRACE\n"
    "\n"
    "Replays a program's recorded allocations and tells what they cost and what they leave.\n"
    "\n"
    "  --handles        each block is a handle, which compaction may move (the default)\n"
    "  --pointers       each block is a pointer; a resize that has no room makes a new one\n"
    "  --malloc         the C library, for comparison\n"
    "  --repeat N       time N passes and give the median (1 unless told)\n"
    "  --verify         fill every block with a pattern and check every byte\n"
    "  --json           print one object in place of the report\n"
    "  --picture FILE   draw the pages before and after compaction\n"
    "\n"
    "TRACE has lines 'a ID SIZE', 'r ID SIZE' and 'f ID'; '-' reads standard input.\n";

enum class Keeping { kHandles, kPointers, kMalloc };

struct Options {
    Keeping keeping = Keeping::kHandles;
    std::uint32_t repeat = 1;
    bool verify = false;
    bool json = false;
    std::string picture;
    std::string trace;
};

/// Gives an empty text, or what is wrong with the command line.
std::string ParseArguments(int count, char** arguments, Options& options) {
    for (int i = 1; i < count; ++i) {
        const std::string_view word = arguments[i];
        const bool last = i + 1 == count;
        if (word == "--handles") {
            options.keeping = Keeping::kHandles;
        } else if (word == "--pointers") {
            options.keeping = Keeping::kPointers;
        } else if (word == "--malloc") {
            options.keeping = Keeping::kMalloc;
        } else if (word == "--verify") {
            options.verify = true;
        } else if (word == "--json") {
            options.json = true;
        } else if (word == "--picture" && !last) {
            options.picture = arguments[++i];
        } else if (word == "--repeat" && !last) {
            const std::string_view number = arguments[++i];
            const char* end = number.data() + number.size();
            const auto [stop, error] = std::from_chars(number.data(), end, options.repeat);
            if (error != std::errc{} || stop != end || options.repeat == 0) {
                return "--repeat wants a number from 1 up, not '" + std::string(number) + "'";
            }
        } else if (word.starts_with("--")) {
            return last && (word == "--picture" || word == "--repeat")
                       ? std::string(word) + " wants a value"
                       : "unknown option " + std::string(word);
        } else if (options.trace.empty()) {
            options.trace = word;
        } else {
            return "one trace at a time: '" + std::string(word) + "' is too much";
        }
    }
    if (options.trace.empty()) {
        return "no trace was given";
    }
    if (options.keeping == Keeping::kMalloc && !options.picture.empty()) {
        return "--picture draws this library's heap: it doesn't go with --malloc";
    }
    return {};
}

/// Tells a terminal where a run of more than a second stands.
class Progress {
  public:
    void Show(std::uint32_t pass, std::uint32_t passes) {
        const auto now = std::chrono::steady_clock::now();
        if (terminal_ && now - shown_ > std::chrono::seconds(1)) {
            std::fprintf(stderr, "\rpass %u of %u ", pass + 1, passes);
            shown_ = now;
            dirty_ = true;
        }
    }
    ~Progress() {
        if (dirty_) {
            std::fputs("\r                                \r", stderr);
        }
    }

  private:
    bool terminal_ = isatty(STDERR_FILENO) != 0;
    bool dirty_ = false;
    std::chrono::steady_clock::time_point shown_ = std::chrono::steady_clock::now();
};

int WriteToFile(const char* text, std::uint32_t length, void* context) {
    return std::fwrite(text, 1, length, static_cast<std::FILE*>(context)) == length;
}

/// Gives an empty text, or why the picture is not there.
std::string DrawPicture(const std::string& file, const XHeapMoment& before,
                        const XHeapMoment& after) {
    std::FILE* output = std::fopen(file.c_str(), "w");
    if (output == nullptr) {
        return file + ": " + std::strerror(errno);
    }
    const XHeapMoment* const moments[] = {&before, &after};
    const char* const captions[] = {"Before compaction", "After compaction"};
    const bool drawn = XHeapDraw(moments, captions, 2, WriteToFile, output) != 0;
    const bool closed = std::fclose(output) == 0;
    return drawn && closed ? std::string() : file + ": could not be written whole";
}

double Megabytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / 1e6;
}

void PrintReport(const Options& options, const Figures& figures) {
    constexpr const char* kNames[] = {"handles", "pointers", "malloc"};
    const auto ratio = [&](std::uint64_t footprint) {
        return figures.liveBytes == 0
                   ? 0.0
                   : static_cast<double>(footprint) / static_cast<double>(figures.liveBytes);
    };
    std::printf("%s as %s\n", options.trace.c_str(), kNames[static_cast<int>(options.keeping)]);
    std::printf("  operations                  %12llu\n",
                static_cast<unsigned long long>(figures.operations));
    std::printf("  time an operation           %12.1f ns\n", figures.nsPerOperation);
    std::printf("  peak live bytes             %12.2f MB\n", Megabytes(figures.peakLiveBytes));
    std::printf("  peak footprint              %12.2f MB\n", Megabytes(figures.peakFootprint));
    std::printf("  live bytes at the end       %12.2f MB\n", Megabytes(figures.liveBytes));
    std::printf("  footprint at the end        %12.2f MB  (%.2f times the live bytes)\n",
                Megabytes(figures.footprint), ratio(figures.footprint));
    std::printf("  footprint after compaction  %12.2f MB  (%.2f times the live bytes)\n",
                Megabytes(figures.footprintAfterCompaction),
                ratio(figures.footprintAfterCompaction));
    std::printf("  given back                  %12.2f MB  in %.2f ms\n",
                Megabytes(figures.footprint) - Megabytes(figures.footprintAfterCompaction),
                figures.compactionSeconds * 1e3);
    if (options.verify) {
        std::printf("  bytes that differ           %12llu\n",
                    static_cast<unsigned long long>(figures.mismatches));
    }
}

void PrintJson(const Figures& figures) {
    const auto field = [](const char* name, std::uint64_t value) {
        std::printf("\"%s\": %llu, ", name, static_cast<unsigned long long>(value));
    };
    std::printf("{");
    field("operations", figures.operations);
    std::printf("\"ns_per_operation\": %.2f, ", figures.nsPerOperation);
    field("peak_live_bytes", figures.peakLiveBytes);
    field("peak_footprint", figures.peakFootprint);
    field("live_bytes", figures.liveBytes);
    field("footprint", figures.footprint);
    field("footprint_after_compaction", figures.footprintAfterCompaction);
    std::printf("\"compaction_seconds\": %.6f, \"mismatches\": %llu}\n", figures.compactionSeconds,
                static_cast<unsigned long long>(figures.mismatches));
}

std::string ReplayAs(Keeping keeping, const Trace& trace, const Settings& settings,
                     Figures& figures) {
    switch (keeping) {
        case Keeping::kHandles:
            return Replay<HandleKeeper>(trace, settings, figures);
        case Keeping::kPointers:
            return Replay<PointerKeeper>(trace, settings, figures);
        default:
            return Replay<MallocKeeper>(trace, settings, figures);
    }
}

int Fail(const std::string& what, int status) {
    std::fprintf(stderr, "veldt-replay: %s\n", what.c_str());
    return status;
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2 && std::string_view(arguments[1]) == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    Options options;
    if (const std::string wrong = ParseArguments(count, arguments, options); !wrong.empty()) {
        Fail(wrong, kBadUse);
        std::fputs("'veldt-replay --help' tells how it is used.\n", stderr);
        return kBadUse;
    }
    Trace trace;
    if (const std::string wrong = ReadTrace(options.trace, trace); !wrong.empty()) {
        std::fprintf(stderr, "%s\n", wrong.c_str());
        return kBadUse;
    }
    if (XMemInitInstance() == 0) {
        return Fail("the system has no memory for a heap", 1);
    }
    Figures figures;
    XHeapMoment before;
    XHeapMoment after;
    {
        Progress progress;
        Settings settings;
        settings.repeat = options.repeat;
        settings.verify = options.verify;
        settings.progress = [&](auto pass, auto passes) { progress.Show(pass, passes); };
        if (!options.picture.empty()) {
            settings.beforeCompaction = [&] { before.Capture(); };
            settings.afterCompaction = [&] { after.Capture(); };
        }
        if (const std::string wrong = ReplayAs(options.keeping, trace, settings, figures);
            !wrong.empty()) {
            return Fail(wrong, 1);
        }
    }
    options.json ? PrintJson(figures) : PrintReport(options, figures);
    if (!options.picture.empty()) {
        if (const std::string wrong = DrawPicture(options.picture, before, after); !wrong.empty()) {
            return Fail(wrong, 1);
        }
    }
    XMemExitInstance();
    return figures.mismatches == 0 ? 0 : Fail("bytes were lost", 1);
}
