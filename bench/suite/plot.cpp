#include "suite/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace veldt::bench {

namespace {

// In the picture's units.
constexpr double kLeft = 370;  // of the scale; the names stand before it
constexpr double kWidth = 520;
constexpr double kRight = kLeft + kWidth + 90;  // the ratios stand behind the scale
constexpr double kTop = 74;
constexpr double kRowHeight = 15;
constexpr double kTitleHeight = 28;

// The scale's ends; what lies beyond is shown at the end.
constexpr double kLowest = 1.0 / 32;
constexpr double kHighest = 32;

constexpr const char* kStyle =
    "<style>text{font:11px sans-serif;fill:#222}.title{font-weight:bold;font-size:12px}"
    ".head{font-weight:bold;font-size:16px}.small{fill:#666}.line{stroke:#e4e4e4}"
    ".one{stroke:#888}.bound{stroke:#c33;stroke-width:2}.ours{fill:#1667b7}"
    ".missed{fill:#c33}.peer{fill:#fff;stroke:#777}</style>\n";

double PlaceOf(double ratio) {
    const double held = std::clamp(ratio, kLowest, kHighest);
    return kLeft + kWidth * std::log(held / kLowest) / std::log(kHighest / kLowest);
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

template <class... Values>
std::string Format(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string Text(double x, double y, const char* kind, const char* anchor, std::string_view text) {
    return Format("<text x=\"%.1f\" y=\"%.1f\" class=\"%s\" text-anchor=\"%s\">", x, y, kind,
                  anchor) +
           Escaped(text) + "</text>\n";
}

std::string VerticalLine(double x, double y1, double y2, const char* kind) {
    return Format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" class=\"%s\"/>\n", x, y1,
                  x, y2, kind);
}

std::string Dot(double x, double y, double radius, const char* kind, const std::string& tip) {
    return Format("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\" class=\"%s\"><title>", x, y, radius,
                  kind) +
           Escaped(tip) + "</title></circle>\n";
}

/// What the row may cost at most beside the first contestant, 0 if it has no bound.
double BoundPlace(const Measured& row) {
    if (row.bound.figure > 0) return row.bound.figure / row.medians.at(1);
    return row.bound.toFirst;
}

std::string RowSvg(const MeasuredSection& section, const Measured& row, double y) {
    const double middle = y - 4;
    std::string svg = Text(kLeft - 12, y, "name", "end", row.name);
    svg += Format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" class=\"line\"/>\n", kLeft,
                  middle, kLeft + kWidth, middle);
    if (const double bound = BoundPlace(row); bound > 0) {
        svg += VerticalLine(PlaceOf(bound), middle - 5, middle + 5, "bound");
    }
    for (std::size_t i = row.medians.size() - 1; i > 0; --i) {
        svg += Dot(PlaceOf(Ratio(row, i, 1)), middle, 3, "peer",
                   section.contestants.at(i) + " " + FigureText(row.unit, row.medians[i]));
    }
    const bool missed = VerdictOn(row) == Verdict::kMissed;
    svg += Dot(PlaceOf(RatioToFirst(row)), middle, 4.2, missed ? "missed" : "ours",
               section.contestants.at(0) + " " + FigureText(row.unit, row.medians[0]));
    return svg + Text(kLeft + kWidth + 14, y, "small", "start", RatioText(RatioToFirst(row)));
}

double Height(const Run& run) {
    double height = kTop + 20;
    for (const MeasuredSection& section : run.sections) {
        height += kTitleHeight + kRowHeight * static_cast<double>(section.rows.size());
    }
    return height;
}

std::string Head(double height) {
    std::string svg = Format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" role=\"img\">\n",
        kRight, height);
    svg += "<title>Cost of VELDT20 and its peers beside the C library</title>\n";
    svg += kStyle;
    svg += Format("<rect width=\"%.0f\" height=\"%.0f\" fill=\"#fff\"/>\n", kRight, height);
    svg += Text(16, 26, "head", "start",
                "Cost beside the first of the others (1 = the C library or its like)");
    svg += Dot(22, 44, 4.2, "ours", "") + Text(32, 48, "", "start", "VELDT20");
    svg += Dot(102, 44, 4.2, "missed", "") + Text(112, 48, "", "start", "VELDT20, above its bound");
    svg += Dot(272, 44, 3, "peer", "") + Text(282, 48, "", "start", "another");
    svg += VerticalLine(352, 39, 49, "bound") + Text(360, 48, "", "start", "bound");
    return svg;
}

std::string Scale(double height) {
    std::string svg;
    for (double ratio = kLowest; ratio <= kHighest; ratio *= 2) {
        svg += VerticalLine(PlaceOf(ratio), kTop - 4, height - 12, ratio == 1 ? "one" : "line");
        svg += Text(PlaceOf(ratio), kTop - 8, "small", "middle",
                    ratio < 1 ? Format("1/%.0f", 1 / ratio) : Format("%.0f", ratio));
    }
    return svg;
}

}  // namespace

std::string PlotSvg(const Run& run) {
    const double height = Height(run);
    std::string svg = Head(height) + Scale(height);
    double y = kTop;
    for (const MeasuredSection& section : run.sections) {
        y += kTitleHeight;
        svg += Text(16, y - 6, "title", "start", section.title);
        for (const Measured& row : section.rows) {
            y += kRowHeight;
            svg += RowSvg(section, row, y - 4);
        }
    }
    return svg + "</svg>\n";
}

}  // namespace veldt::bench
