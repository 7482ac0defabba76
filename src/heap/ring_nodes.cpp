#include "heap/ring_nodes.h"

#include <algorithm>

#include "heap/block_life.h"
#include "heap/locks.h"
#include "heap/regions.h"

namespace veldt::heap {

namespace {

/// A page that joins an index takes at most one node on each level and a new top. A level is added
/// when all places of the top are taken, for which each time 32 times as many pages must have come.
constexpr std::uint32_t kMostAtOnce = 8;
/// Nodes keep away from the base of a region: a processor that takes addresses for the same which
/// agree in their low twelve bits would let the search of a node wait for the last store to the
/// header of a page.
constexpr std::uint32_t kBeforeNodes = 2 * alignof(RingNode);
constexpr std::uint32_t kBatch = (kRegionUnit - kBeforeNodes) / sizeof(RingNode);

char* nodeRegions = nullptr;     ///< linked through each region's first word
RingNode* spareNodes = nullptr;  ///< linked through parent
std::uint32_t spareCount = 0;

/// Tells the entry at a place where it is now.
void Settle(RingNode& node, unsigned place) {
    if (node.isLeaf) {
        NoteOf(node.entries[place].page).ringPlace =
            reinterpret_cast<std::uintptr_t>(&node) | place;
    } else {
        node.entries[place].node->parent = &node;
        node.entries[place].node->place = static_cast<std::uint8_t>(place);
    }
}

void Put(RingNode& node, unsigned place, const RingItem& item) {
    node.entries[place] = item.entry;
    node.SetBound(place, item.bound);
    node.SetHinted(place, item.hinted);
    Settle(node, place);
}

constexpr std::uint64_t PlacesBefore(unsigned place) {
    return (std::uint64_t{1} << place) - 1;
}

void SettleFrom(RingNode& node, unsigned first) {
    for (unsigned i = first; i < node.count; ++i) {
        Settle(node, i);
    }
}

/// Forgets the entries from `first` on.
void Truncate(RingNode& node, unsigned first) {
    node.count = static_cast<std::uint8_t>(first);
    node.hinted &= PlacesBefore(first);
}

void Push(RingNode* node) {
    node->parent = spareNodes;
    spareNodes = node;
    ++spareCount;
}

}  // namespace

bool RingNodesAtHand() {
    if (spareCount >= kMostAtOnce) {
        return true;
    }
    auto* region = static_cast<char*>(platform::VirtualAllocUnits(kRegionUnit));
    if (region == nullptr) {
        return false;
    }
    RegionBegan(region, kRegionUnit);
    Store(region, nodeRegions);
    nodeRegions = region;
    auto* batch = reinterpret_cast<RingNode*>(region + kBeforeNodes);
    for (std::uint32_t i = kBatch; i > 0; --i) {
        Push(batch + i - 1);
    }
    return true;
}

void DropRingNodes() {
    while (nodeRegions != nullptr) {
        char* region = nodeRegions;
        nodeRegions = Load<char*>(region);
        RegionFree(region);
    }
    spareNodes = nullptr;
    spareCount = 0;
}

RingNode* TakeRingNode(bool isLeaf) {
    RingNode* node = spareNodes;
    spareNodes = node->parent;
    --spareCount;
    node->parent = nullptr;
    node->place = 0;
    node->count = 0;
    node->isLeaf = isLeaf;
    node->hinted = 0;
    node->unslid = 0;
    return node;
}

void GiveRingNode(RingNode* node) {
    const RegistryHold hold;
    Push(node);
}

Offer RingBound(const RingNode& node) {
    Offer bound{};
    for (unsigned i = 0; i < node.count; ++i) {
        bound = Widest(bound, node.Bound(i));
    }
    return bound;
}

RingItem RingItemOf(RingNode* below) {
    return {.entry = {.node = below}, .bound = RingBound(*below), .hinted = below->hinted != 0};
}

RingItem RingItemAt(const RingNode& node, unsigned place) {
    return {.entry = node.entries[place],
            .bound = node.Bound(place),
            .hinted = (node.hinted >> place & 1) != 0};
}

void RingPutAt(RingNode& node, unsigned place, const RingItem& item) {
    const auto openIn = [&node, place](auto* array) {
        std::copy_backward(array + place, array + node.count, array + node.count + 1);
    };
    openIn(node.entries);
    openIn(node.hints);
    openIn(node.unpinnedHints);
    const std::uint64_t before = PlacesBefore(place);
    node.hinted = (node.hinted & before) | (node.hinted & ~before) << 1;
    node.unslid = (node.unslid & before) | (node.unslid & ~before) << 1;
    ++node.count;
    Put(node, place, item);
    SettleFrom(node, place + 1);
}

void RingTakeFrom(RingNode& node, unsigned place) {
    const auto closeIn = [&node, place](auto* array) {
        std::copy(array + place + 1, array + node.count, array + place);
    };
    closeIn(node.entries);
    closeIn(node.hints);
    closeIn(node.unpinnedHints);
    const std::uint64_t before = PlacesBefore(place);
    node.hinted = (node.hinted & before) | (node.hinted >> 1 & ~before);
    node.unslid = (node.unslid & before) | (node.unslid >> 1 & ~before);
    --node.count;
    SettleFrom(node, place);
}

void RingMoveTail(RingNode& to, RingNode& from, unsigned first) {
    for (unsigned i = first; i < from.count; ++i) {
        Put(to, to.count++, RingItemAt(from, i));
    }
    if (first < from.count) {
        Truncate(from, first);
    }
}

}  // namespace veldt::heap
