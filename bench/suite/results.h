// What a run of the suite gives, and what is reckoned from it. Nothing here measures.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace veldt::bench {

enum class Unit { kNanoseconds, kGigabytesPerSecond, kTimesLive };

/// What a row must not exceed; 0 where it needn't keep to anything.
struct Bound {
    double toFirst = 0;    ///< our cost over the first contestant's: the C library's or its like
    double toFastest = 0;  ///< over that of the fastest of the others
    double figure = 0;     ///< the figure itself
};

/// A row's medians, in the order of its section's contestants. Ours is element 0.
struct Measured {
    std::string name;
    Unit unit = Unit::kNanoseconds;
    Bound bound;
    bool headline = false;  ///< one of the few that the README shows
    std::vector<double> medians;
};

struct MeasuredSection {
    std::string title;
    std::string note;
    std::vector<std::string> contestants;
    std::vector<Measured> rows;
};

/// A whole run: where, when and with what it was done, and its sections.
struct Run {
    std::vector<std::string> machine;  ///< one sentence each
    std::vector<MeasuredSection> sections;
};

/// The cost of contestant `a` over that of `b`: below 1 where `a` is ahead, whatever the unit.
double Ratio(const Measured& row, std::size_t a, std::size_t b);
inline double RatioToFirst(const Measured& row) {
    return Ratio(row, 0, 1);
}
/// Which of the contestants behind the first two is the fastest; nothing if there are but two.
std::optional<std::size_t> FastestPeer(const Measured& row);
std::optional<double> RatioToFastest(const Measured& row);

enum class Verdict { kNoBound, kMet, kMissed };
/// A bound to peers that aren't there holds nobody.
Verdict VerdictOn(const Measured& row);

/// The figure with its unit: "7.1 ns", "12.3 µs", "4.31 GB/s", "1.08".
std::string FigureText(Unit unit, double figure);
/// "at most 0.80, 1.30": to the first, to the fastest. Empty without a bound.
std::string BoundText(const Bound& bound);
/// "met", "missed" or nothing.
std::string VerdictText(const Measured& row);
/// "0.83", "12.4", "140": three digits, more only in front of the point.
std::string RatioText(double ratio);

}  // namespace veldt::bench
