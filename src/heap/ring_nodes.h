// The nodes of the ring indexes, which all come from one store, and what one does with the entries
// of a single node.
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

inline bool Covers(const Offer& bound, const Offer& offer) {
    return bound.hint >= offer.hint && bound.unpinnedHint >= offer.unpinnedHint &&
           bound.unslid >= offer.unslid;
}

inline Offer Widest(const Offer& a, const Offer& b) {
    return {.hint = a.hint > b.hint ? a.hint : b.hint,
            .unpinnedHint = a.unpinnedHint > b.unpinnedHint ? a.unpinnedHint : b.unpinnedHint,
            .unslid = a.unslid || b.unslid};
}

/// A run of neighbours in ring order: pages in a leaf, nodes above one.
struct alignas(64) RingNode {
    static constexpr unsigned kPlaces = 64;

    union Entry {
        HeapPage* page;
        RingNode* node;
    };

    RingNode* parent;    ///< null at the top
    std::uint8_t place;  ///< in the parent
    std::uint8_t count;  ///< entries, which stand from place 0 on
    bool isLeaf;
    /// Bits of the pages whose hint isn't 0, as far as the index was told, and of the nodes with
    /// such a bit. In a leaf that has bounds it is set just where `hints` isn't 0.
    std::uint64_t hinted;
    // No entry offers more than these say. A ring of fixed blocks has no use for them.
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

inline constexpr std::uint64_t kAllPlaces = ~std::uint64_t{0};

constexpr std::uint64_t PlacesBehind(unsigned place) {
    return ~std::uint64_t{1} << place;
}

/// What no entry of the node exceeds.
Offer RingBound(const RingNode& node);

/// An entry of a node with what the node knows of it.
struct RingItem {
    RingNode::Entry entry;
    Offer bound;
    bool hinted;
};

RingItem RingItemOf(RingNode* below);
RingItem RingItemAt(const RingNode& node, unsigned place);

/// Opens a place in a node that is not full. Every entry that moves is told where it is now.
void RingPutAt(RingNode& node, unsigned place, const RingItem& item);
/// Closes a place.
void RingTakeFrom(RingNode& node, unsigned place);
/// Moves the entries from `first` on to the end of another node.
void RingMoveTail(RingNode& to, RingNode& from, unsigned first);

/// Sees to it that as many nodes can be taken as one page may need. The caller holds the registry
/// lock, for as long as it takes nodes. False: out of memory.
bool RingNodesAtHand();
/// An empty node, of the kind that is asked for.
RingNode* TakeRingNode(bool isLeaf);
/// Takes the registry lock itself.
void GiveRingNode(RingNode* node);
/// Gives the store back to the system. No pool is left, and so no node is in use.
void DropRingNodes();

}  // namespace veldt::heap
