// A page drawn so large that each block can be seen: how a picture shows a heap of few pages.
#pragma once

#include "memory/heap_moment.h"
#include "memory/picture_output.h"

namespace veldt::memory {

constexpr int kCloseUpHeight = 26;

/// Draws the page as bars of the panel's width, one below the other from `y` on, each
/// kCloseUpHeight high and `rowHeight` below the one before; a bar for each 16 KB. A block in use
/// is labelled with the bytes that were asked for where there is room. Gives the number of bars.
int DrawCloseUp(PictureOutput& out, const XHeapMoment::Content& content, std::size_t page, int x,
                int y, int rowHeight);

}  // namespace veldt::memory
