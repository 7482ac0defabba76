#include "memory/heap_overview.h"

#include <algorithm>
#include <array>

namespace veldt::memory {

namespace {

using Cells = std::array<Tint, kCells>;

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

/// One bar, neighbouring cells of one tint drawn together.
void DrawCells(PictureOutput& out, int x, int y, const Cells& cells, int width) {
    int start = 0;
    for (int i = 1; i <= width; ++i) {
        if (i == width ||
            cells[static_cast<std::size_t>(i)] != cells[static_cast<std::size_t>(start)]) {
            out.Strip(x + start, y, i - start, kBarHeight, cells[static_cast<std::size_t>(start)]);
            start = i;
        }
    }
}

}  // namespace

void DrawPage(PictureOutput& out, BarGrid& grid, const XHeapMoment::Content& content,
              std::size_t number) {
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
        out.Strip(grid.X(), grid.Y(), static_cast<int>(part / kCellBytes), kBarHeight, tint);
        left -= part;
    }
}

}  // namespace veldt::memory
