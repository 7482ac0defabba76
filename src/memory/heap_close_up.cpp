#include "memory/heap_close_up.h"

#include <algorithm>

namespace veldt::memory {

namespace {

constexpr int kDigitWidth = 7;

int UnitsOf(std::uint32_t bytes) {
    return static_cast<int>(bytes * kPanelWidth / kBarBytes);
}

int DigitsOf(std::uint32_t number) {
    return number < 10 ? 1 : 1 + DigitsOf(number / 10);
}

/// The part of a block that lies in one bar, from byte `from` of the bar to before `to`, with
/// `label` if that isn't null and there is room.
void DrawPart(PictureOutput& out, Tint tint, std::uint32_t from, std::uint32_t to,
              const std::uint32_t* label, int x, int y) {
    // One unit is left between blocks, so that neighbours can be told apart.
    const int left = UnitsOf(from);
    const int width = std::max(UnitsOf(to) - left - 1, 1);
    out.Strip(x + left, y, width, kCloseUpHeight, tint);
    if (label != nullptr && width > DigitsOf(*label) * kDigitWidth + 2) {
        out.Print("<text x=\"%d\" y=\"%d\" class=\"size\">%u</text>\n", x + left + width / 2,
                  y + kCloseUpHeight - 8, *label);
    }
}

void DrawBlock(PictureOutput& out, const XHeapPage& page, const XHeapBlock& block, int x, int y,
               int rowHeight) {
    auto at = static_cast<std::uint32_t>(block.data - page.base);
    const std::uint32_t end = std::min(at + block.size, page.committed);
    const std::uint32_t* label = block.state != kXFree ? &block.logical : nullptr;
    while (at < end) {
        const std::uint32_t bar = at / kBarBytes;
        const std::uint32_t stop = std::min(end, (bar + 1) * kBarBytes);
        DrawPart(out, TintOf(block, page.kind), at - bar * kBarBytes, stop - bar * kBarBytes, label,
                 x, y + static_cast<int>(bar) * rowHeight);
        label = nullptr;
        at = stop;
    }
}

}  // namespace

int DrawCloseUp(PictureOutput& out, const XHeapMoment::Content& content, std::size_t number, int x,
                int y, int rowHeight) {
    const XHeapPage& page = content.pages[number].page;
    int bars = 0;
    for (std::uint32_t at = 0; at < page.committed; at += kBarBytes, ++bars) {
        out.Strip(x, y + bars * rowHeight, UnitsOf(std::min(page.committed - at, kBarBytes)),
                  kCloseUpHeight, kTintOverhead);
    }
    for (std::size_t i = content.pages[number].firstBlock; i < content.EndOfBlocks(number); ++i) {
        DrawBlock(out, page, content.blocks[i], x, y, rowHeight);
    }
    return bars;
}

}  // namespace veldt::memory
