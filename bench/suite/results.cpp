#include "suite/results.h"

#include <algorithm>
#include <cstdio>

namespace veldt::bench {

namespace {

std::string Formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// Nothing below 0: higher is worse.
double Cost(Unit unit, double figure) {
    return unit == Unit::kGigabytesPerSecond ? 1 / figure : figure;
}

std::string TimeText(double nanoseconds) {
    if (nanoseconds < 1e3) return Formatted(nanoseconds < 100 ? "%.1f ns" : "%.0f ns", nanoseconds);
    if (nanoseconds < 1e6) return Formatted("%.1f µs", nanoseconds / 1e3);
    return Formatted("%.1f ms", nanoseconds / 1e6);
}

}  // namespace

double Ratio(const Measured& row, std::size_t a, std::size_t b) {
    return Cost(row.unit, row.medians.at(a)) / Cost(row.unit, row.medians.at(b));
}

std::optional<std::size_t> FastestPeer(const Measured& row) {
    if (row.medians.size() < 3) return std::nullopt;
    std::size_t fastest = 2;
    for (std::size_t i = 3; i < row.medians.size(); ++i) {
        if (Ratio(row, i, fastest) < 1) fastest = i;
    }
    return fastest;
}

std::optional<double> RatioToFastest(const Measured& row) {
    const std::optional<std::size_t> fastest = FastestPeer(row);
    if (!fastest) return std::nullopt;
    return Ratio(row, 0, *fastest);
}

Verdict VerdictOn(const Measured& row) {
    const Bound& bound = row.bound;
    const std::optional<double> toFastest = RatioToFastest(row);
    const bool heldToFastest = bound.toFastest > 0 && toFastest.has_value();
    if (bound.toFirst == 0 && bound.figure == 0 && !heldToFastest) return Verdict::kNoBound;
    const bool met = (bound.toFirst == 0 || RatioToFirst(row) <= bound.toFirst) &&
                     (bound.figure == 0 || row.medians.at(0) <= bound.figure) &&
                     (!heldToFastest || *toFastest <= bound.toFastest);
    return met ? Verdict::kMet : Verdict::kMissed;
}

std::string FigureText(Unit unit, double figure) {
    switch (unit) {
        case Unit::kNanoseconds:
            return TimeText(figure);
        case Unit::kGigabytesPerSecond:
            return Formatted("%.2f GB/s", figure);
        default:
            return Formatted("%.2f", figure);
    }
}

std::string BoundText(const Bound& bound) {
    std::string text;
    for (const double limit : {bound.figure, bound.toFirst, bound.toFastest}) {
        if (limit > 0) text += (text.empty() ? "at most " : ", ") + RatioText(limit);
    }
    return text;
}

std::string VerdictText(const Measured& row) {
    switch (VerdictOn(row)) {
        case Verdict::kMet:
            return "met";
        case Verdict::kMissed:
            return "missed";
        default:
            return {};
    }
}

std::string RatioText(double ratio) {
    if (ratio < 10) return Formatted("%.2f", ratio);
    return Formatted(ratio < 100 ? "%.1f" : "%.0f", ratio);
}

}  // namespace veldt::bench
