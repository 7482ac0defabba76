// Finds, in a ring of page links, the first link from the head on that has something to offer,
// without walking past those that have not. The answer is always the one that the plain walk along
// `next` would give.
//
// The links of each ring are the nodes of a treap in ring order, each node with an upper bound on
// what the pages below it offer. A raise climbs until the bounds above it suffice already; a
// lowered offer is left to the next search that is misled by it, which corrects the bounds on its
// way. So searches and raises cost O(log n) node visits, amortised, and usually one or two.
#pragma once

#include "heap/fault.h"
#include "heap/records.h"

namespace veldt::heap {

inline Offer OfferOf(const PageLink* link) {
    const bool pinned = (link->linkFlags & kPinnedMask) != 0;
    return {.hint = link->freeHint,
            .unpinnedHint = static_cast<std::uint16_t>(pinned ? 0 : link->freeHint + 1),
            .unslid = static_cast<std::uint16_t>((link->linkFlags & kNothingToSlide) == 0)};
}

inline bool Covers(const Offer& bound, const Offer& offer) {
    return bound.hint >= offer.hint && bound.unpinnedHint >= offer.unpinnedHint &&
           bound.unslid >= offer.unslid;
}

inline Offer Widest(const Offer& a, const Offer& b) {
    return {.hint = a.hint > b.hint ? a.hint : b.hint,
            .unpinnedHint = a.unpinnedHint > b.unpinnedHint ? a.unpinnedHint : b.unpinnedHint,
            .unslid = a.unslid > b.unslid ? a.unslid : b.unslid};
}

/// Puts `link`, whose page is set, right behind `before` in the ring order; null: a new ring.
void RingIndexInsert(PageLink* link, const PageLink* before);
void RingIndexRemove(const PageLink* link);
/// Raises the bounds above `link` to its offer. To be called when an offer has grown.
void RingIndexRaise(const PageLink* link);

/// Sets a hint, whichever way it goes.
inline void SetFreeHint(PageLink* link, std::uint16_t hint) {
    const bool raised = hint > link->freeHint;
    link->freeHint = hint;
    if (raised) {
        RingIndexRaise(link);
    }
}

/// Says that sliding may gain something in the page again.
inline void ClearNothingToSlide(PageLink* link) {
    if ((link->linkFlags & kNothingToSlide) != 0) {
        link->linkFlags &= kPinnedMask;
        RingIndexRaise(link);
    }
}

/// Makes the bound of a node as narrow as its link and its children allow.
inline void RingRefit(RingNode& node) {
    node.bound = OfferOf(node.link);
    if (node.left != 0) {
        node.bound = Widest(node.bound, NodeOf(node.left).bound);
    }
    if (node.right != 0) {
        node.bound = Widest(node.bound, NodeOf(node.right).bound);
    }
}

/// The top node of the tree that holds `link`.
RingNode& RingIndexTop(const PageLink* link);

/// The first node in ring order at or below `top` that offers what is wanted, or 0. `wanted` takes
/// an Offer and must hold for every offer that covers one for which it holds.
template <class Wanted>
Unit RingFirstBelow(Unit top, const Wanted& wanted) {
    if (top == 0 || !wanted(NodeOf(top).bound)) {
        return 0;
    }
    RingNode& node = NodeOf(top);
    if (const Unit found = RingFirstBelow(node.left, wanted); found != 0) {
        return found;
    }
    if (wanted(OfferOf(node.link))) {
        return top;
    }
    const Unit found = RingFirstBelow(node.right, wanted);
    if (found == 0) {
        RingRefit(node);
    }
    return found;
}

/// The first link behind `link` in the ring that offers what is wanted, `link` itself last; or
/// null.
template <class Wanted>
PageLink* RingFirstBehind(const PageLink* link, const Wanted& wanted) {
    Unit unit = UnitOf(link->page);
    Unit found = RingFirstBelow(NodeOf(unit).right, wanted);
    while (found == 0 && NodeOf(unit).parent != 0) {
        const Unit below = unit;
        unit = NodeOf(unit).parent;
        const RingNode& node = NodeOf(unit);
        if (node.left == below && wanted(node.bound)) {
            found = wanted(OfferOf(node.link)) ? unit : RingFirstBelow(node.right, wanted);
        }
    }
    if (found == 0) {
        found = RingFirstBelow(unit, wanted);
    }
    return found != 0 ? NodeOf(found).link : nullptr;
}

/// The same, with `link` itself first.
template <class Wanted>
PageLink* RingFirstFrom(PageLink* link, const Wanted& wanted) {
    return wanted(OfferOf(link)) ? link : RingFirstBehind(link, wanted);
}

/// Whether tree and ring of `head` hold the same links in the same cyclic order, the tree's links
/// to parents and children agree, and no bound is too low.
HeapFault RingIndexFault(const PageLink* head);

}  // namespace veldt::heap
