#include "suite/measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "suite/worker.h"

namespace veldt::bench {

namespace {

/// For the rounds of one process of each contestant.
constexpr std::chrono::seconds kLongEnough{4};

double Median(std::vector<double>& figures) {
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    return *middle;
}

bool Wanted(const Choice& choice, const std::string& title, const std::string& name) {
    return choice.names.empty() || std::ranges::any_of(choice.names, [&](const std::string& part) {
               return title.find(part) != std::string::npos || name.find(part) != std::string::npos;
           });
}

/// What the dynamic linker can't preload it passes over with a warning.
void InsistOn(const Contestant& contestant, const std::string& inUse) {
    const std::string expected = contestant.preload.empty() ? "C library" : contestant.name;
    if (!inUse.starts_with(expected)) {
        std::fprintf(stderr, "veldt-bench: no %s (%s) here; './do setup' installs it\n",
                     expected.c_str(), contestant.preload.c_str());
        std::exit(2);
    }
}

std::vector<Contestant> ContestantsOf(const Section& section, const Build& build) {
    std::vector<Contestant> contestants = section.contestants;
    if (!build.withPreloads) {
        std::erase_if(contestants, [](const Contestant& c) { return !c.preload.empty(); });
    }
    return contestants;
}

class RowMeasurement {
  public:
    RowMeasurement(const Build& build, const std::vector<Contestant>& contestants, Task task,
                   std::set<std::string>& allocators)
        : build_(build),
          contestants_(contestants),
          task_(task),
          allocators_(allocators),
          figures_(contestants.size()) {}

    /// A fresh process of each contestant, and `rounds` of each in turn, fewer where they take
    /// long. The first round, which fills the caches, doesn't count where there are more.
    void Sit(int rounds) {
        std::vector<std::unique_ptr<Worker>> workers;
        for (task_.contestant = 0; task_.contestant < contestants_.size(); ++task_.contestant) {
            const Contestant& contestant = contestants_[task_.contestant];
            workers.push_back(std::make_unique<Worker>(build_.program, task_, contestant.preload));
            InsistOn(contestant, workers.back()->Allocator());
            allocators_.insert(workers.back()->Allocator());
        }
        const auto end = std::chrono::steady_clock::now() + kLongEnough;
        for (int round = 0; round < rounds && (round < 2 || std::chrono::steady_clock::now() < end);
             ++round) {
            for (std::size_t i = 0; i < workers.size(); ++i) {
                const std::size_t turn = (i + static_cast<std::size_t>(round)) % workers.size();
                const double figure = workers[turn]->RunRound();
                if (round > 0 || rounds == 1) figures_[turn].push_back(figure);
            }
        }
    }

    std::vector<double> Medians() {
        std::vector<double> medians;
        std::ranges::transform(figures_, std::back_inserter(medians), Median);
        return medians;
    }

  private:
    const Build& build_;
    const std::vector<Contestant>& contestants_;
    Task task_;
    std::set<std::string>& allocators_;
    std::vector<std::vector<double>> figures_;  // by contestant
};

}  // namespace

std::vector<MeasuredSection> MeasureAll(const Build& build, const Choice& choice,
                                        const Progress& progress,
                                        std::set<std::string>& allocators) {
    std::vector<MeasuredSection> measured;
    const std::vector<Section> sections = AllSections();
    for (std::size_t s = 0; s < sections.size(); ++s) {
        const Section& section = sections[s];
        if (build.ofMemoryAlone && !section.ofMemory) continue;
        const std::vector<Contestant> contestants = ContestantsOf(section, build);
        MeasuredSection result{section.title + build.suffix, section.note + build.note, {}, {}};
        for (const Contestant& contestant : contestants) {
            result.contestants.push_back(contestant.name);
        }
        for (std::size_t r = 0; r < section.rows.size(); ++r) {
            const Row& row = section.rows[r];
            if (!Wanted(choice, result.title, row.name)) continue;
            if (result.rows.empty()) progress.beginSection(result);
            RowMeasurement measurement(build, contestants, {s, r, 0}, allocators);
            for (int i = 0; i < (choice.quick ? 1 : row.processes); ++i) {
                measurement.Sit(choice.quick ? std::min(row.rounds, 2) : row.rounds);
            }
            result.rows.push_back({row.name, row.unit, row.bound,
                                   row.headline && build.suffix.empty(), measurement.Medians()});
            progress.row(result, result.rows.back());
        }
        if (!result.rows.empty()) measured.push_back(std::move(result));
    }
    return measured;
}

}  // namespace veldt::bench
