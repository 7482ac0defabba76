// Draws moments of the heap as one SVG: every page a bar, every bar's area its committed memory, so
// that what compaction gave back can be seen as bars that are gone.
#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "memory/heap_moment.h"

namespace {

// All lengths are the picture's own units. A bar stands for kBarBytes at most.
constexpr std::uint32_t kBarBytes = 16384;
constexpr int kCells = 64;  // a bar's steps, one unit wide each
constexpr int kBarHeight = 9;
constexpr int kColumnWidth = kCells + 5;
constexpr int kColumns = 8;
constexpr int kPanelWidth = kColumns * kColumnWidth;
constexpr int kMargin = 24;
constexpr int kHeaderHeight = 150;
constexpr int kGroupTitleHeight = 26;
constexpr int kRowHeight = kBarHeight + 3;
constexpr std::uint32_t kMostBars = 1600;  // a group; what is beyond is told in words

enum Tint : std::uint8_t { kTintOverhead, kTintFree, kTintUsed, kTintLocked, kTintLarge, kTints };

constexpr const char* kColours[kTints] = {"#b8c0c8", "#eceff2", "#3b7dd8", "#e0782f", "#3f9e78"};

/// The groups of a panel, in drawing order, with the kind of their pages.
struct Group {
    int kind;
    const char* title;
};
constexpr Group kGroups[] = {{2, "Handle pages: blocks here can move"},
                             {0, "Pointer pages: blocks of any size, and handles moved high"},
                             {1, "Small-pointer pages: blocks of one size"},
                             {3, "Large blocks: a region each"}};

/// Gathers text for the writer; remembers once it has refused.
class Output {
  public:
    Output(XHeapWriter writer, void* context) : writer_(writer), context_(context) {}

    __attribute__((format(printf, 2, 3))) void Print(const char* format, ...) {
        char text[512];
        va_list arguments;
        va_start(arguments, format);
        const int length = std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        Put(text, std::min<std::size_t>(static_cast<std::size_t>(length), sizeof text - 1));
    }

    /// Text from outside, which may hold anything.
    void PutEscaped(const char* text) {
        for (; *text != '\0'; ++text) {
            switch (*text) {
                case '&':
                    Print("&amp;");
                    break;
                case '<':
                    Print("&lt;");
                    break;
                case '>':
                    Print("&gt;");
                    break;
                default:
                    Put(text, 1);
            }
        }
    }

    bool Flush() {
        if (used_ > 0 && !refused_) {
            refused_ = writer_(buffer_, static_cast<std::uint32_t>(used_), context_) == 0;
        }
        used_ = 0;
        return !refused_;
    }

  private:
    void Put(const char* text, std::size_t length) {
        if (used_ + length > sizeof buffer_) {
            Flush();
        }
        std::memcpy(buffer_ + used_, text, length);
        used_ += length;
    }

    XHeapWriter writer_;
    void* context_;
    bool refused_ = false;
    std::size_t used_ = 0;
    char buffer_[16384];
};

using Cells = std::array<Tint, kCells>;

Tint TintOf(const XHeapBlock& block, int kind) {
    switch (block.state) {
        case kXFree:
            return kTintFree;
        case kXLocked:
            return kTintLocked;
        default:
            return kind == 3 ? kTintLarge : kTintUsed;
    }
}

/// What most of each cell's bytes are.
Cells CellsOf(const XHeapMoment::Content& content, std::size_t number) {
    constexpr std::uint32_t kCellBytes = kBarBytes / kCells;
    const XHeapMoment::Content::Page& page = content.pages[number];
    std::array<std::array<std::uint32_t, kTints>, kCells> bytes{};
    for (std::size_t i = page.firstBlock; i < content.EndOfBlocks(number); ++i) {
        const XHeapBlock& block = content.blocks[i];
        auto at = static_cast<std::uint32_t>(block.data - page.page.base);
        const std::uint32_t end = std::min(at + block.size, kBarBytes);
        while (at < end) {
            const std::uint32_t cell = at / kCellBytes;
            const std::uint32_t stop = std::min(end, (cell + 1) * kCellBytes);
            bytes[cell][TintOf(block, page.page.kind)] += stop - at;
            at = stop;
        }
    }
    Cells cells{};
    for (std::size_t i = 0; i < kCells; ++i) {
        const auto most = std::ranges::max_element(bytes[i]);
        cells[i] = *most != 0 ? static_cast<Tint>(most - bytes[i].begin()) : kTintOverhead;
    }
    return cells;
}

void DrawStrip(Output& out, int x, int y, int width, Tint tint) {
    out.Print("<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"%s\"/>\n", x, y, width,
              kBarHeight, kColours[tint]);
}

/// One bar, neighbouring cells of one tint drawn together.
void DrawCells(Output& out, int x, int y, const Cells& cells, int width) {
    int start = 0;
    for (int i = 1; i <= width; ++i) {
        if (i == width ||
            cells[static_cast<std::size_t>(i)] != cells[static_cast<std::size_t>(start)]) {
            DrawStrip(out, x + start, y, i - start, cells[static_cast<std::size_t>(start)]);
            start = i;
        }
    }
}

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

int GroupHeight(std::uint32_t bars) {
    if (bars == 0) {
        return 0;
    }
    const int rows = static_cast<int>((std::min(bars, kMostBars) + kColumns - 1) / kColumns);
    return kGroupTitleHeight + rows * kRowHeight + (bars > kMostBars ? kGroupTitleHeight : 0);
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

/// Where the next bar of a group goes, left to right in rows.
class BarGrid {
  public:
    BarGrid(int x, int y) : x_(x), y_(y) {}
    bool Full() const { return bars_ >= kMostBars; }
    int X() const { return x_ + static_cast<int>(bars_ % kColumns) * kColumnWidth; }
    int Y() const { return y_ + static_cast<int>(bars_ / kColumns) * kRowHeight; }
    void Next() { ++bars_; }

  private:
    int x_;
    int y_;
    std::uint32_t bars_ = 0;
};

void DrawPage(Output& out, BarGrid& grid, const XHeapMoment::Content& content, std::size_t number) {
    const XHeapPage& page = content.pages[number].page;
    constexpr std::uint32_t kCellBytes = kBarBytes / kCells;
    if (page.kind != 3) {
        const Cells cells = CellsOf(content, number);
        DrawCells(out, grid.X(), grid.Y(), cells, static_cast<int>(page.committed / kCellBytes));
        grid.Next();
        return;
    }
    const Tint tint = TintOf(content.blocks[content.pages[number].firstBlock], 3);
    for (std::uint32_t left = page.committed; left > 0 && !grid.Full(); grid.Next()) {
        const std::uint32_t part = std::min(left, kBarBytes);
        DrawStrip(out, grid.X(), grid.Y(), static_cast<int>(part / kCellBytes), tint);
        left -= part;
    }
}

void DrawGroup(Output& out, const XHeapMoment::Content& content, const Group& group, int x, int y) {
    const std::uint32_t bars = BarsIn(content, group.kind);
    const std::uint32_t pages = content.statistics.pages[group.kind];
    out.Print("<text x=\"%d\" y=\"%d\" class=\"group\">%s (%u page%s, %.2f MB)</text>\n", x,
              y + kGroupTitleHeight - 8, group.title, pages, pages == 1 ? "" : "s",
              static_cast<double>(content.statistics.committed[group.kind]) / 1e6);
    BarGrid grid(x, y + kGroupTitleHeight);
    for (const std::size_t number : PagesOf(content, group.kind)) {
        if (grid.Full()) {
            break;
        }
        DrawPage(out, grid, content, number);
    }
    if (bars > kMostBars) {
        out.Print("<text x=\"%d\" y=\"%d\" class=\"figures\">and %u more bars</text>\n", x,
                  y + GroupHeight(bars) - 8, bars - kMostBars);
    }
}

void DrawFigures(Output& out, const XHeapStatistics& figures, const char* caption, int x) {
    const double live = static_cast<double>(figures.liveBytes);
    out.Print("<text x=\"%d\" y=\"78\" class=\"caption\">", x);
    out.PutEscaped(caption);
    out.Print("</text>\n<text x=\"%d\" y=\"100\" class=\"figures\">live %.2f MB, footprint %.2f MB",
              x, live / 1e6, figures.footprint / 1e6);
    if (live > 0) {
        out.Print(" (%.2f times the live bytes)", figures.footprint / live);
    }
    std::uint32_t blocks = 0;
    for (const XHeapFamilyFigures& family : figures.families) {
        blocks += family.blocks;
    }
    out.Print(
        "</text>\n<text x=\"%d\" y=\"118\" class=\"figures\">%u blocks, %u of them pinned"
        "</text>\n<text x=\"%d\" y=\"136\" class=\"figures\">free inside pages %.2f MB, largest "
        "free block %u bytes</text>\n",
        x, blocks, figures.pinned, x, static_cast<double>(figures.freeBytes) / 1e6,
        figures.largestFree);
}

void DrawLegend(Output& out) {
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
        DrawStrip(out, x, 36, 18, row.tint);
        out.Print("<text x=\"%d\" y=\"45\" class=\"figures\">%s</text>\n", x + 24, row.meaning);
        x += 48 + static_cast<int>(std::strlen(row.meaning)) * 7;
    }
    out.Print(
        "<text x=\"%d\" y=\"24\" class=\"figures\">Each bar is 16 KB of memory, its addresses "
        "from left to right.</text>\n",
        kMargin);
}

void DrawFrame(Output& out, int panels, int height) {
    const int width = 2 * kMargin + std::max(panels * (kPanelWidth + kMargin) - kMargin, 640);
    out.Print(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
        "viewBox=\"0 0 %d %d\">\n",
        width, height, width, height);
    out.Print(
        "<style>text{font-family:sans-serif;fill:#26303a}.caption{font-size:18px;"
        "font-weight:bold}.group{font-size:13px;font-weight:bold}.figures{font-size:13px}"
        "</style>\n<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n");
}

}  // namespace

int XHeapDraw(const XHeapMoment* const* moments, const char* const* captions, int count,
              XHeapWriter writer, void* context) {
    static const XHeapMoment::Content kNothing{};
    const auto content = [&](int i) -> const XHeapMoment::Content& {
        return moments[i]->GetContent() != nullptr ? *moments[i]->GetContent() : kNothing;
    };
    int height = kHeaderHeight;
    for (int i = 0; i < count; ++i) {
        int panel = kHeaderHeight + kMargin;
        for (const Group& group : kGroups) {
            panel += GroupHeight(BarsIn(content(i), group.kind));
        }
        height = std::max(height, panel);
    }
    Output out(writer, context);
    try {
        DrawFrame(out, count, height);
        DrawLegend(out);
        for (int i = 0; i < count; ++i) {
            const int x = kMargin + i * (kPanelWidth + kMargin);
            int y = kHeaderHeight;
            DrawFigures(out, content(i).statistics, captions[i], x);
            for (const Group& group : kGroups) {
                if (const int groupHeight = GroupHeight(BarsIn(content(i), group.kind));
                    groupHeight > 0) {
                    DrawGroup(out, content(i), group, x, y);
                    y += groupHeight;
                }
            }
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    out.Print("</svg>\n");
    return out.Flush() ? 1 : 0;
}
