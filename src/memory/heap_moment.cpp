#include "memory/heap_moment.h"

#include <algorithm>
#include <new>

namespace {

int Record(const XHeapPage* page, const XHeapBlock* block, void* context) {
    auto& content = *static_cast<XHeapMoment::Content*>(context);
    if (block == nullptr) {
        content.pages.push_back({*page, content.blocks.size()});
    } else {
        content.blocks.push_back(*block);
    }
    return 1;
}

/// Blocks in use, by what tells them apart: the handle, or a pointer's address.
struct Identified {
    const void* identity;
    const XHeapBlock* block;
};

std::vector<Identified> BlocksInUse(const XHeapMoment::Content& content) {
    std::vector<Identified> found;
    for (const XHeapBlock& block : content.blocks) {
        if (block.state != kXFree) {
            const void* identity = block.data;
            if (block.handle != nullptr) {
                identity = block.handle;
            }
            found.push_back({identity, &block});
        }
    }
    std::ranges::sort(found, {}, &Identified::identity);
    return found;
}

std::vector<const void*> PageBases(const XHeapMoment::Content& content) {
    std::vector<const void*> bases;
    for (const auto& page : content.pages) {
        bases.push_back(page.page.base);
    }
    std::ranges::sort(bases);
    return bases;
}

void CompareBlocks(const XHeapMoment::Content& before, const XHeapMoment::Content& after,
                   XHeapDifference& difference) {
    const std::vector<Identified> old = BlocksInUse(before);
    const std::vector<Identified> now = BlocksInUse(after);
    auto a = old.begin();
    auto b = now.begin();
    while (a != old.end() || b != now.end()) {
        if (b == now.end() || (a != old.end() && a->identity < b->identity)) {
            ++difference.vanished;
            ++a;
        } else if (a == old.end() || b->identity < a->identity) {
            ++difference.appeared;
            ++b;
        } else {
            if (a->block->data != b->block->data) {
                ++difference.moved;
                difference.movedBytes += b->block->logical;
            }
            ++a;
            ++b;
        }
    }
}

void ComparePages(const XHeapMoment::Content& before, const XHeapMoment::Content& after,
                  XHeapDifference& difference) {
    const std::vector<const void*> old = PageBases(before);
    const std::vector<const void*> now = PageBases(after);
    std::vector<const void*> both;
    std::ranges::set_intersection(old, now, std::back_inserter(both));
    difference.pagesLost = static_cast<std::uint32_t>(old.size() - both.size());
    difference.pagesGained = static_cast<std::uint32_t>(now.size() - both.size());
}

}  // namespace

XHeapMoment::XHeapMoment() : content_(nullptr) {}

XHeapMoment::~XHeapMoment() {
    delete content_;
}

int XHeapMoment::Capture() {
    delete content_;
    content_ = nullptr;
    try {
        content_ = new Content;
        if (XHeapGetStatistics(&content_->statistics) != 0) {
            XHeapWalk(Record, content_);
            return 1;
        }
    } catch (const std::bad_alloc&) {
        // An empty moment is the answer, below.
    }
    delete content_;
    content_ = nullptr;
    return 0;
}

const XHeapStatistics& XHeapMoment::Statistics() const {
    static constexpr XHeapStatistics kNothing{};
    return content_ != nullptr ? content_->statistics : kNothing;
}

int XHeapCompare(const XHeapMoment& before, const XHeapMoment& after, XHeapDifference* difference) {
    *difference = {};
    static const XHeapMoment::Content kNothing{};
    const auto& old = before.GetContent() != nullptr ? *before.GetContent() : kNothing;
    const auto& now = after.GetContent() != nullptr ? *after.GetContent() : kNothing;
    try {
        CompareBlocks(old, now, *difference);
        ComparePages(old, now, *difference);
    } catch (const std::bad_alloc&) {
        *difference = {};
        return 0;
    }
    difference->footprint =
        std::int64_t{now.statistics.footprint} - std::int64_t{old.statistics.footprint};
    return 1;
}
