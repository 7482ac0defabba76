// Pages drawn as small bars, many to a row: how a picture shows a heap of many pages.
#pragma once

#include "memory/heap_moment.h"
#include "memory/picture_output.h"

namespace veldt::memory {

constexpr int kCells = 64;  // a bar's steps, one unit wide each
constexpr int kBarHeight = 9;
constexpr int kColumnWidth = kCells + 5;
constexpr int kColumns = 8;
static_assert(kColumns * kColumnWidth == kPanelWidth);
constexpr std::uint32_t kMostBars = 1600;  // a group; what is beyond is told in words

/// How the bars of a picture are laid out.
struct Layout {
    bool closeUp;
    int columns;
    int rowHeight;
};

/// Where the next bar of a group goes, left to right in rows.
class BarGrid {
  public:
    BarGrid(const Layout& layout, int x, int y) : layout_(layout), x_(x), y_(y) {}
    bool Full() const { return bars_ >= static_cast<int>(kMostBars); }
    int X() const { return x_ + bars_ % layout_.columns * kColumnWidth; }
    int Y() const { return y_ + bars_ / layout_.columns * layout_.rowHeight; }
    void Next(int bars = 1) { bars_ += bars; }

  private:
    Layout layout_;
    int x_;
    int y_;
    int bars_ = 0;
};

/// A bar for the page, or for a large block one for each 16 KB.
void DrawPage(PictureOutput& out, BarGrid& grid, const XHeapMoment::Content& content,
              std::size_t number);

}  // namespace veldt::memory
