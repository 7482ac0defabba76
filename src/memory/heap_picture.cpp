// Draws moments of the heap as one SVG: every page a bar, every bar's area its committed memory, so
// that what compaction gave back can be seen as bars that are gone.
#include <algorithm>
#include <cstring>
#include <numeric>

#include "memory/heap_close_up.h"
#include "memory/heap_moment.h"
#include "memory/heap_overview.h"
#include "memory/picture_output.h"

using namespace veldt::memory;

namespace {

constexpr int kMargin = 24;
constexpr int kLegendHeight = 60;
constexpr int kLegendWidth = 690;
constexpr int kPanelHeaderHeight = 90;
constexpr int kGroupTitleHeight = 26;

/// Panels stand side by side with many small bars each; or, where every group has few bars, one
/// below the other with bars as wide as a panel.
constexpr Layout kOverview{false, kColumns, kBarHeight + 3};
constexpr Layout kCloseUp{true, 1, kCloseUpHeight + 6};
constexpr std::uint32_t kMostCloseUpBars = 8;  // a group

/// The groups of a panel, in drawing order, with the kind of their pages.
struct Group {
    int kind;
    const char* title;
};
constexpr Group kGroups[] = {{2, "Handle pages: blocks here can move"},
                             {0, "Pointer pages: blocks of any size, and handles moved high"},
                             {1, "Small-pointer pages: blocks of one size"},
                             {3, "Large blocks: a region each"}};

std::uint32_t BarsOf(const XHeapPage& page) {
    return (page.committed + kBarBytes - 1) / kBarBytes;
}

std::uint32_t BarsIn(const XHeapMoment::Content& content, int kind) {
    std::uint32_t bars = 0;
    for (const auto& page : content.pages) {
        bars += page.page.kind == kind ? BarsOf(page.page) : 0;
    }
    return bars;
}

int GroupHeight(const Layout& layout, std::uint32_t bars) {
    if (bars == 0) {
        return 0;
    }
    const int drawn = static_cast<int>(std::min(bars, kMostBars));
    const int rows = (drawn + layout.columns - 1) / layout.columns;
    return kGroupTitleHeight + rows * layout.rowHeight + (bars > kMostBars ? kGroupTitleHeight : 0);
}

int PanelHeight(const Layout& layout, const XHeapMoment::Content& content) {
    int height = kPanelHeaderHeight + kMargin;
    for (const Group& group : kGroups) {
        height += GroupHeight(layout, BarsIn(content, group.kind));
    }
    return height;
}

bool HasFewBars(const XHeapMoment::Content& content) {
    return std::ranges::all_of(kGroups, [&](const Group& group) {
        return BarsIn(content, group.kind) <= kMostCloseUpBars;
    });
}

/// The pages of one kind, in address order.
std::vector<std::size_t> PagesOf(const XHeapMoment::Content& content, int kind) {
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < content.pages.size(); ++i) {
        if (content.pages[i].page.kind == kind) {
            numbers.push_back(i);
        }
    }
    std::ranges::sort(numbers, {}, [&](std::size_t i) { return content.pages[i].page.base; });
    return numbers;
}

void PrintAmount(PictureOutput& out, std::uint64_t bytes) {
    if (bytes < 1000000) {
        out.Print("%llu bytes", static_cast<unsigned long long>(bytes));
    } else {
        out.Print("%.2f MB", static_cast<double>(bytes) / 1e6);
    }
}

void DrawGroup(PictureOutput& out, const Layout& layout, const XHeapMoment::Content& content,
               const Group& group, int x, int y) {
    const std::uint32_t bars = BarsIn(content, group.kind);
    const std::uint32_t pages = content.statistics.pages[group.kind];
    out.Print("<text x=\"%d\" y=\"%d\" class=\"group\">%s (%u page%s, ", x,
              y + kGroupTitleHeight - 8, group.title, pages, pages == 1 ? "" : "s");
    PrintAmount(out, content.statistics.committed[group.kind]);
    out.Print(")</text>\n");
    BarGrid grid(layout, x, y + kGroupTitleHeight);
    for (const std::size_t number : PagesOf(content, group.kind)) {
        if (layout.closeUp) {
            grid.Next(DrawCloseUp(out, content, number, grid.X(), grid.Y(), layout.rowHeight));
        } else if (!grid.Full()) {
            DrawPage(out, grid, content, number);
        }
    }
    if (bars > kMostBars) {
        out.Print("<text x=\"%d\" y=\"%d\" class=\"figures\">and %u more bars</text>\n", x,
                  y + GroupHeight(layout, bars) - 8, bars - kMostBars);
    }
}

void DrawFigures(PictureOutput& out, const XHeapStatistics& figures, const char* caption, int x,
                 int y) {
    out.Print("<text x=\"%d\" y=\"%d\" class=\"caption\">", x, y + 18);
    out.PutEscaped(caption);
    out.Print("</text>\n<text x=\"%d\" y=\"%d\" class=\"figures\">live ", x, y + 40);
    PrintAmount(out, figures.liveBytes);
    out.Print(", footprint ");
    PrintAmount(out, figures.footprint);
    if (figures.liveBytes > 0) {
        out.Print(" (%.2f times the live bytes)",
                  figures.footprint / static_cast<double>(figures.liveBytes));
    }
    std::uint32_t blocks = 0;
    for (const XHeapFamilyFigures& family : figures.families) {
        blocks += family.blocks;
    }
    out.Print(
        "</text>\n<text x=\"%d\" y=\"%d\" class=\"figures\">%u blocks, %u of them pinned"
        "</text>\n<text x=\"%d\" y=\"%d\" class=\"figures\">free inside pages ",
        x, y + 58, blocks, figures.pinned, x, y + 76);
    PrintAmount(out, figures.freeBytes);
    out.Print(", largest free block %u bytes</text>\n", figures.largestFree);
}

void DrawPanel(PictureOutput& out, const Layout& layout, const XHeapMoment::Content& content,
               const char* caption, int x, int y) {
    DrawFigures(out, content.statistics, caption, x, y);
    y += kPanelHeaderHeight;
    for (const Group& group : kGroups) {
        if (const int height = GroupHeight(layout, BarsIn(content, group.kind)); height > 0) {
            DrawGroup(out, layout, content, group, x, y);
            y += height;
        }
    }
}

void DrawLegend(PictureOutput& out, const Layout& layout) {
    constexpr struct {
        Tint tint;
        const char* meaning;
    } kRows[] = {{kTintUsed, "in use"},
                 {kTintLocked, "locked: stays where it is"},
                 {kTintLarge, "large block"},
                 {kTintFree, "free"},
                 {kTintOverhead, "the heap's own records"}};
    int x = kMargin;
    for (const auto& row : kRows) {
        out.Strip(x, 36, 18, kBarHeight, row.tint);
        out.Print("<text x=\"%d\" y=\"45\" class=\"figures\">%s</text>\n", x + 24, row.meaning);
        x += 48 + static_cast<int>(std::strlen(row.meaning)) * 7;
    }
    out.Print(
        "<text x=\"%d\" y=\"24\" class=\"figures\">Each bar is 16 KB of memory, its addresses "
        "from left to right.%s</text>\n",
        kMargin, layout.closeUp ? " Numbers are bytes asked for." : "");
}

void DrawFrame(PictureOutput& out, int width, int height) {
    out.Print(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
        "viewBox=\"0 0 %d %d\">\n",
        width, height, width, height);
    out.Print(
        "<style>text{font-family:sans-serif;fill:#26303a}.caption{font-size:18px;"
        "font-weight:bold}.group{font-size:13px;font-weight:bold}.figures{font-size:13px}"
        ".size{font-size:12px;text-anchor:middle;fill:#ffffff}</style>\n"
        "<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n");
}

using Contents = std::vector<const XHeapMoment::Content*>;

void DrawPicture(PictureOutput& out, const Contents& contents, const char* const* captions) {
    const bool few = std::ranges::all_of(contents, [](auto* each) { return HasFewBars(*each); });
    const Layout& layout = few ? kCloseUp : kOverview;
    std::vector<int> heights;
    for (const auto* content : contents) {
        heights.push_back(PanelHeight(layout, *content));
    }
    const int panels = static_cast<int>(contents.size());
    const int highest = contents.empty() ? 0 : *std::ranges::max_element(heights);
    const int height = few ? std::reduce(heights.begin(), heights.end()) : highest;
    const int width = few ? kPanelWidth : panels * (kPanelWidth + kMargin) - kMargin;
    DrawFrame(out, 2 * kMargin + std::max(width, kLegendWidth), kLegendHeight + height);
    DrawLegend(out, layout);
    int x = kMargin;
    int y = kLegendHeight;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        DrawPanel(out, layout, *contents[i], captions[i], x, y);
        (few ? y : x) += few ? heights[i] : kPanelWidth + kMargin;
    }
    out.Print("</svg>\n");
}

}  // namespace

int XHeapDraw(const XHeapMoment* const* moments, const char* const* captions, int count,
              XHeapWriter writer, void* context) {
    static const XHeapMoment::Content kNothing{};
    PictureOutput out(writer, context);
    try {
        Contents contents;
        for (int i = 0; i < count; ++i) {
            const XHeapMoment::Content* content = moments[i]->GetContent();
            contents.push_back(content != nullptr ? content : &kNothing);
        }
        DrawPicture(out, contents, captions);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return out.Flush() ? 1 : 0;
}
