// What the benchmark suite makes of figures, on figures that were made up.
#include <gtest/gtest.h>

#include <string>

#include "suite/document.h"
#include "suite/plot.h"
#include "suite/table.h"

namespace veldt::bench {
namespace {

Run MadeUpRun() {
    Run run;
    run.machine = {"A machine."};
    run.sections = {{"Pairs",
                     "Of blocks.",
                     {"VELDT20", "C library", "slow", "quick"},
                     {{"small", Unit::kNanoseconds, {0.8, 1.3}, true, {6, 10, 20, 5}},
                      {"large", Unit::kNanoseconds, {0.8, 1.3}, false, {7, 10, 20, 5}},
                      {"free", Unit::kNanoseconds, {}, false, {1500, 10, 20, 5}}}},
                    {"Moving <&>",
                     "Of bytes.",
                     {"VELDT20", "memcpy"},
                     {{"fast enough", Unit::kGigabytesPerSecond, {3, 9}, false, {2, 5}},
                      {"too slow", Unit::kGigabytesPerSecond, {3}, true, {1, 5}},
                      {"resident", Unit::kTimesLive, {0, 0, 1.35}, false, {1.4, 4.3}}}}};
    return run;
}

TEST(BenchReport, ReckonsCostsAgainstTheBounds) {
    const auto run = MadeUpRun();
    const auto& [pairs, moving] = std::tie(run.sections[0], run.sections[1]);
    EXPECT_EQ(FastestPeer(pairs.rows[0]), 3U);
    EXPECT_DOUBLE_EQ(RatioToFirst(pairs.rows[0]), 0.6);
    EXPECT_DOUBLE_EQ(*RatioToFastest(pairs.rows[0]), 1.2);
    EXPECT_DOUBLE_EQ(RatioToFirst(moving.rows[0]), 2.5);  // of cost, not of speed
    EXPECT_FALSE(RatioToFastest(moving.rows[0]));

    EXPECT_EQ(VerdictOn(pairs.rows[0]), Verdict::kMet);
    EXPECT_EQ(VerdictOn(pairs.rows[1]), Verdict::kMissed);  // by the fastest peer alone
    EXPECT_EQ(VerdictOn(pairs.rows[2]), Verdict::kNoBound);
    EXPECT_EQ(VerdictOn(moving.rows[0]), Verdict::kMet);  // there is no peer to be held to
    EXPECT_EQ(CountBounds(run).met, 2);
    EXPECT_EQ(CountBounds(run).missed, 3);
}

TEST(BenchReport, TablesShowMediansRatiosAndBounds) {
    const auto run = MadeUpRun();
    EXPECT_EQ(
        MarkdownTable(run.sections[0]),
        R"(| Work | VELDT20 | C library | slow | quick | to C library | to the fastest peer | bound |  |
|---|--:|--:|--:|--:|--:|--:|--:|--:|
| small | 6.0 ns | 10.0 ns | 20.0 ns | 5.0 ns | 0.60 | 1.20 | at most 0.80, 1.30 | met |
| large | 7.0 ns | 10.0 ns | 20.0 ns | 5.0 ns | 0.70 | 1.40 | at most 0.80, 1.30 | **missed** |
| free | 1.5 µs | 10.0 ns | 20.0 ns | 5.0 ns | 150 | 300 |  |  |
)");
    const std::string missed = MissedTable(run);
    EXPECT_NE(missed.find("Moving <&>: too slow | 1.00 GB/s | 5.00 |"), std::string::npos);
    EXPECT_EQ(missed.find("small"), std::string::npos);
}

TEST(BenchReport, ReplacesTheFiguresAndNothingElse) {
    const auto run = MadeUpRun();
    const std::string begin = "<!-- figures of ./do bench: begin -->\n";
    const std::string end = "<!-- figures of ./do bench: end -->\n";
    const std::string readme = "# Title\n\n" + begin + "old\n" + end + "Below.\n";
    const std::string written = WithFigures(readme, run);
    EXPECT_TRUE(written.starts_with("# Title\n\n" + begin));
    EXPECT_TRUE(written.ends_with(end + "Below.\n"));
    EXPECT_EQ(written.find("old"), std::string::npos);
    EXPECT_NE(written.find("Pairs: small"), std::string::npos);
    EXPECT_EQ(written.find("large"), std::string::npos) << "it is no headline";
    EXPECT_EQ(WithFigures(written, run), written);
    EXPECT_EQ(WithFigures("# No place\n", run), "");
}

/// How far to the right the dot with this look and tip stands, -1 if there is none.
double PlaceOf(const std::string& svg, const std::string& look, const std::string& tip) {
    const std::size_t end = svg.find("class=\"" + look + "\"><title>" + tip);
    const std::size_t place = svg.rfind("<circle cx=\"", end);
    if (end == std::string::npos || place == std::string::npos) return -1;
    return std::stod(svg.substr(place + std::string("<circle cx=\"").size()));
}

TEST(BenchReport, PlotsCostsFromLeftToRight) {
    const std::string svg = PlotSvg(MadeUpRun());
    const double one = PlaceOf(svg, "peer", "C library 10.0 ns");
    EXPECT_GT(PlaceOf(svg, "ours", "VELDT20 6.0 ns"), 0);
    EXPECT_LT(PlaceOf(svg, "ours", "VELDT20 6.0 ns"), one);
    EXPECT_GT(PlaceOf(svg, "peer", "slow 20.0 ns"), one);
    EXPECT_GT(PlaceOf(svg, "missed", "VELDT20 1.00 GB/s"),
              PlaceOf(svg, "ours", "VELDT20 2.00 GB/s"));
    EXPECT_NE(svg.find("Moving &lt;&amp;&gt;"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
}

}  // namespace
}  // namespace veldt::bench
