#include "heap/ring_nodes.h"

#include "heap/block_life.h"
#include "heap/locks.h"

namespace veldt::heap {

namespace {

/// A page that joins an index takes at most one node on each level and a new top. Nodes hold 16
/// entries at least on the average, and 16 to the seventh pages are more than anyone has.
constexpr std::uint32_t kMostAtOnce = 8;
constexpr std::uint32_t kBatch = kRegionUnit / sizeof(RingNode);

RingNode* spareNodes = nullptr;  ///< linked through parent
std::uint32_t spareCount = 0;

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
    auto* batch = static_cast<RingNode*>(platform::VirtualAllocUnits(kRegionUnit));
    if (batch == nullptr) {
        return false;
    }
    RegionBegan(reinterpret_cast<char*>(batch), kRegionUnit);
    for (std::uint32_t i = kBatch; i > 0; --i) {
        Push(batch + i - 1);
    }
    return true;
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

}  // namespace veldt::heap
