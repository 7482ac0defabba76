#include "heap/ring_nodes.h"

#include "heap/locks.h"

namespace veldt::heap {

using namespace platform;

namespace {

/// Nodes that were given back, linked through parent.
RingNode* spareNodes = nullptr;

/// Nodes of one addition that were never taken. A batch is made of its own first node.
struct Batch {
    Batch* next;
    std::uint32_t fresh;
};
static_assert(sizeof(Batch) <= sizeof(RingNode));

Batch* batches = nullptr;

RingNode* TakeFresh() {
    Batch* batch = batches;
    RingNode* node = reinterpret_cast<RingNode*>(batch) + batch->fresh;
    if (--batch->fresh == 0) {
        batches = batch->next;
    }
    return node;
}

}  // namespace

bool AddRingNodes(std::uint32_t count) {
    const SIZE_T size = (SIZE_T{count} + 1) * sizeof(RingNode);
    void* memory = VirtualAllocUnits(size);
    if (memory == nullptr) {
        return false;
    }
    const RegistryHold hold;
    batches = new (memory) Batch{.next = batches, .fresh = count};
    return true;
}

RingNode* TakeRingNode(bool isLeaf) {
    const RegistryHold hold;
    RingNode* node = spareNodes;
    if (node != nullptr) {
        spareNodes = node->parent;
    } else {
        node = TakeFresh();
    }
    node->parent = nullptr;
    node->place = 0;
    node->count = 0;
    node->isLeaf = isLeaf;
    node->hinted = 0;
    return node;
}

void GiveRingNode(RingNode* node) {
    const RegistryHold hold;
    node->parent = spareNodes;
    spareNodes = node;
}

}  // namespace veldt::heap
