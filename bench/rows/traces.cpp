// Recorded programs' allocations, replayed.
#include <cstdio>
#include <memory>

#include "replay/trace.h"
#include "rows/ways.h"
#include "suite/work.h"

namespace veldt::bench {

namespace {

template <class Way>
class Replayer {
  public:
    explicit Replayer(const std::string& program) {
        const std::string file = std::string(VELDT20_TRACES) + "/" + program + ".trace";
        if (const std::string wrong = ReadTrace(file, trace_); !wrong.empty()) {
            std::fprintf(stderr, "veldt-bench: %s\n", wrong.c_str());
            std::exit(2);
        }
        blocks_.resize(trace_.blocks);
    }

    /// Nanoseconds an operation. What lives at the end is disposed untimed.
    double Replay() {
        const double start = ProcessorTime();
        for (const Operation& operation : trace_.operations) {
            Apply(operation);
        }
        const double taken = ProcessorTime() - start;
        for (auto& block : blocks_) {
            if (block != nullptr) Way::Dispose(block);
            block = nullptr;
        }
        return taken / static_cast<double>(trace_.operations.size());
    }

  private:
    void Apply(const Operation& operation) {
        auto& block = blocks_[operation.block];
        // A size of 0 would have some allocators give no block.
        const std::uint32_t size = std::max(operation.size, 1U);
        switch (operation.kind) {
            case Operation::kAllocate:
                block = Way::New(size);
                break;
            case Operation::kResize:
                Way::Resize(block, size);
                break;
            default:
                Way::Dispose(block);
                block = nullptr;
        }
    }

    Trace trace_;
    std::vector<typename Way::Block> blocks_;
};

template <class Way>
Setup Replaying(const std::string& program) {
    return [=]() -> Round {
        auto replayer = std::make_shared<Replayer<Way>>(program);
        return [replayer] { return replayer->Replay(); };
    };
}

template <class Way>
Row TraceRow(const std::string& program, const char* held, double bound) {
    return {
        program + ", as " + held, {bound}, {Replaying<Way>(program), Replaying<CLibrary>(program)}};
}

}  // namespace

Section Traces() {
    Section section{"Recorded programs",
                    "All that four real programs allocated, resized and freed, in their order; the "
                    "time is that of an operation.",
                    Allocators(),
                    {},
                    true};
    for (const char* program : {"jq", "perl", "python", "sqlite"}) {
        section.rows.push_back(TraceRow<Pointers>(program, "pointers", 1.0));
        section.rows.push_back(TraceRow<Handles>(program, "handles", 1.5));
    }
    for (Row& row : section.rows) {
        row.headline = row.name.starts_with("perl");
    }
    return section;
}

}  // namespace veldt::bench
