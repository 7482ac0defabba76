#include "replayer.h"

#include <algorithm>

#include "keepers.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Each block has a pattern of its own, which tells its bytes from every other block's.
unsigned char PatternAt(std::uint32_t block, std::uint32_t index) {
    const std::uint32_t word = (block + 1) * 0x9E3779B1U + index * 0x85EBCA77U;
    return static_cast<unsigned char>(word >> 24);
}

template <class Keeper>
class Run {
  public:
    Run(const Trace& trace, bool verify)
        : trace_(trace), verify_(verify), keeper_(trace.blocks), sizes_(trace.blocks, kNotLive) {}

    bool Apply(const Operation& operation) {
        switch (operation.kind) {
            case Operation::kAllocate:
                return keeper_.Allocate(operation.block, operation.size);
            case Operation::kResize:
                return keeper_.Resize(operation.block, sizes_[operation.block], operation.size);
            default:
                keeper_.Free(operation.block);
                return true;
        }
    }

    /// The hot loop: nothing but the operations and the sizes that a resize needs to know.
    bool Timed() {
        for (const Operation& operation : trace_.operations) {
            if (!Apply(operation)) {
                return false;
            }
            sizes_[operation.block] =
                operation.kind == Operation::kFree ? kNotLive : operation.size;
        }
        return true;
    }

    bool Observed(Figures& figures) {
        std::size_t look = 0;
        for (const Operation& operation : trace_.operations) {
            if (!ApplyObserved(operation)) {
                return false;
            }
            figures.peakLiveBytes = std::max(figures.peakLiveBytes, live_);
            if (look++ % Keeper::kLook == 0) {
                figures.peakFootprint = std::max(figures.peakFootprint, Keeper::Footprint());
            }
        }
        figures.liveBytes = live_;
        figures.footprint = Keeper::Footprint();
        figures.peakFootprint = std::max(figures.peakFootprint, figures.footprint);
        return true;
    }

    void VerifyAll() {
        for (std::uint32_t block = 0; block < sizes_.size(); ++block) {
            if (sizes_[block] != kNotLive) {
                Verify(block, sizes_[block]);
            }
        }
    }

    void FreeAll() {
        for (std::uint32_t block = 0; block < sizes_.size(); ++block) {
            if (sizes_[block] != kNotLive) {
                keeper_.Free(block);
            }
        }
    }

    std::uint64_t Mismatches() const { return mismatches_; }

  private:
    static constexpr std::uint32_t kNotLive = 0xFFFFFFFF;

    bool ApplyObserved(const Operation& operation) {
        std::uint32_t& size = sizes_[operation.block];
        const std::uint32_t old = size;
        if (operation.kind != Operation::kAllocate) {
            Verify(operation.block, old);
            live_ -= old;
        }
        if (!Apply(operation)) {
            return false;
        }
        if (operation.kind == Operation::kFree) {
            size = kNotLive;
            return true;
        }
        if (operation.kind == Operation::kResize) {
            Verify(operation.block, std::min(old, operation.size));
        }
        size = operation.size;
        live_ += size;
        Fill(operation.block, size);
        return true;
    }

    void Fill(std::uint32_t block, std::uint32_t size) {
        unsigned char* bytes = verify_ ? keeper_.Bytes(block) : nullptr;
        for (std::uint32_t i = 0; bytes != nullptr && i < size; ++i) {
            bytes[i] = PatternAt(block, i);
        }
    }

    void Verify(std::uint32_t block, std::uint32_t size) {
        const unsigned char* bytes = verify_ ? keeper_.Bytes(block) : nullptr;
        for (std::uint32_t i = 0; bytes != nullptr && i < size; ++i) {
            mismatches_ += bytes[i] != PatternAt(block, i) ? 1 : 0;
        }
    }

    const Trace& trace_;
    bool verify_;
    Keeper keeper_;
    std::vector<std::uint32_t> sizes_;
    std::uint64_t live_ = 0;
    std::uint64_t mismatches_ = 0;
};

constexpr const char* kOutOfMemory = "memory ran out";

/// One timed pass; all that stays live is freed untimed.
template <class Keeper>
bool TimePass(const Trace& trace, std::vector<double>& seconds) {
    Run<Keeper> run(trace, false);
    const Clock::time_point start = Clock::now();
    const bool done = run.Timed();
    seconds.push_back(SecondsSince(start));
    if (done) {
        run.FreeAll();
    }
    return done;
}

template <class Keeper>
void CompactAndMeasure(const Settings& settings, Figures& figures) {
    if (settings.beforeCompaction) {
        settings.beforeCompaction();
    }
    const Clock::time_point start = Clock::now();
    Keeper::Compact();
    figures.compactionSeconds = SecondsSince(start);
    figures.footprintAfterCompaction = Keeper::Footprint();
    if (settings.afterCompaction) {
        settings.afterCompaction();
    }
}

}  // namespace

template <class Keeper>
std::string Replay(const Trace& trace, const Settings& settings, Figures& figures) {
    std::vector<double> seconds;
    for (std::uint32_t pass = 0; pass < settings.repeat; ++pass) {
        settings.progress(pass, settings.repeat + 1);
        if (!TimePass<Keeper>(trace, seconds)) {
            return kOutOfMemory;
        }
    }
    settings.progress(settings.repeat, settings.repeat + 1);
    std::ranges::nth_element(seconds, seconds.begin() + static_cast<long>(seconds.size() / 2));
    figures.operations = trace.operations.size();
    if (figures.operations > 0) {
        figures.nsPerOperation =
            seconds[seconds.size() / 2] * 1e9 / static_cast<double>(figures.operations);
    }
    Run<Keeper> run(trace, settings.verify);
    if (!run.Observed(figures)) {
        return kOutOfMemory;
    }
    CompactAndMeasure<Keeper>(settings, figures);
    run.VerifyAll();
    run.FreeAll();
    figures.mismatches = run.Mismatches();
    return {};
}

template std::string Replay<HandleKeeper>(const Trace&, const Settings&, Figures&);
template std::string Replay<PointerKeeper>(const Trace&, const Settings&, Figures&);
template std::string Replay<MallocKeeper>(const Trace&, const Settings&, Figures&);
