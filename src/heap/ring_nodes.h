// The nodes of all ring indexes, from one store.
#pragma once

#include "heap/address_map.h"

namespace veldt::heap {

struct HeapPage;

/// What a page, or all the pages below a place of an index together, have to offer.
struct Offer {
    std::uint16_t hint;          ///< largest free block, as the links tell it
    std::uint16_t unpinnedHint;  ///< the same plus 1 over pages without a pinned block; else 0
    bool unslid;                 ///< sliding may still gain something
};

/// A run of neighbours in ring order: pages in a leaf, nodes above one.
struct alignas(64) RingNode {
    static constexpr unsigned kPlaces = 64;

    union Entry {
        HeapPage* page;
        RingNode* node;
    };

    RingNode* parent;      ///< null at the top
    RingNode* nextUntidy;  ///< while a change of the index is on its way
    std::uint8_t place;    ///< in the parent
    std::uint8_t count;    ///< entries, which stand from place 0 on
    bool isLeaf;
    /// Bits of the pages whose hint isn't 0, as far as the index was told, and of the nodes with
    /// such a bit.
    std::uint64_t hinted;
    // No entry offers more than these say.
    std::uint64_t unslid;
    std::uint16_t hints[kPlaces];
    std::uint16_t unpinnedHints[kPlaces];

    Entry entries[kPlaces];

    Offer Bound(unsigned at) const {
        return {.hint = hints[at],
                .unpinnedHint = unpinnedHints[at],
                .unslid = (unslid >> at & 1) != 0};
    }
    void SetBound(unsigned at, const Offer& bound) {
        hints[at] = bound.hint;
        unpinnedHints[at] = bound.unpinnedHint;
        unslid = WithBit(unslid, at, bound.unslid);
    }
    void SetHinted(unsigned at, bool isHinted) { hinted = WithBit(hinted, at, isHinted); }

  private:
    static std::uint64_t WithBit(std::uint64_t mask, unsigned at, bool on) {
        const std::uint64_t bit = std::uint64_t{1} << at;
        return on ? mask | bit : mask & ~bit;
    }
};

/// Sees to it that as many nodes can be taken as one page may need. The caller holds the registry
/// lock, for as long as it takes nodes. False: out of memory.
bool RingNodesAtHand();
/// An empty node, of the kind that is asked for.
RingNode* TakeRingNode(bool isLeaf);
/// Takes the registry lock itself.
void GiveRingNode(RingNode* node);

}  // namespace veldt::heap
