// The nodes of all ring indexes. They never run out: an index has at most half as many nodes as
// pages (ring_index.h), and every zone of the address map brings one for each two of its units.
#pragma once

#include "heap/address_map.h"

namespace veldt::heap {

struct HeapPage;

/// What a page, or all the pages below a place of an index together, have to offer.
struct Offer {
    std::uint16_t hint;          ///< largest free block, as the links tell it
    std::uint16_t unpinnedHint;  ///< the same plus 1 over pages without a pinned block; else 0
    std::uint16_t unslid;        ///< 1 if sliding may still gain something
};

/// A run of neighbours in ring order: pages in a leaf, nodes above one.
struct alignas(64) RingNode {
    static constexpr unsigned kPlaces = 16;

    union Entry {
        HeapPage* page;
        RingNode* node;
    };

    RingNode* parent;    ///< null at the top
    std::uint8_t place;  ///< in the parent
    std::uint8_t count;  ///< entries, which stand from place 0 on
    bool isLeaf;
    std::uint16_t hinted;   ///< a bit for each place whose bound has a hint that isn't 0
    Offer bounds[kPlaces];  ///< no entry offers more than its bound
    Entry entries[kPlaces];

    void SetBound(unsigned at, const Offer& bound) {
        bounds[at] = bound;
        const unsigned bit = 1U << at;
        hinted = static_cast<std::uint16_t>(bound.hint != 0 ? hinted | bit : hinted & ~bit);
    }
};

/// Adds to the store. False: out of memory.
bool AddRingNodes(std::uint32_t count);
/// An empty node, of the kind that is asked for.
RingNode* TakeRingNode(bool isLeaf);
void GiveRingNode(RingNode* node);

}  // namespace veldt::heap
