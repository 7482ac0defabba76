// What a moment of the heap keeps: its pages, each with the blocks that the walk showed.
#pragma once

#include <veldt20/inspect.h>

#include <vector>

struct XHeapMoment::Content {
    struct Page {
        XHeapPage page;
        std::size_t firstBlock;  ///< index into blocks; the page's blocks go on to the next page's
    };

    XHeapStatistics statistics{};
    std::vector<Page> pages;
    std::vector<XHeapBlock> blocks;

    std::size_t EndOfBlocks(std::size_t page) const {
        return page + 1 < pages.size() ? pages[page + 1].firstBlock : blocks.size();
    }
};
