// Finds, in a ring of page links, the first link from the head on that has something to offer,
// without walking past those that have not. The answer is always the one that the plain walk along
// `next` would give.
//
// The pages of each ring stand in ring order in the leaves of a tree, 64 to a node. A bit for each
// page, and for each node below another, says whether there is a hint at all; that is all that
// counts for pages of fixed blocks. Beside it stands an upper bound on what is offered. A raise
// climbs until the bounds above it suffice already; a lowered offer is left to the next search that
// is misled by it, which corrects the bounds on its way. A ring of one page has no node.
//
// Invariants: no node is empty, and the top has two entries at least. Nodes that have become sparse
// are not merged: the bits spare a search the empty room in them, and it is there for the pages
// that come.
#pragma once

#include <bit>

#include "heap/fault.h"
#include "heap/records.h"
#include "heap/ring_nodes.h"

namespace veldt::heap {

inline Offer OfferOf(const PageLink* link) {
    const bool pinned = (link->linkFlags & kPinnedMask) != 0;
    return {.hint = link->freeHint,
            .unpinnedHint = static_cast<std::uint16_t>(pinned ? 0 : link->freeHint + 1),
            .unslid = (link->linkFlags & kNothingToSlide) == 0};
}

/// Where an entry is in its index. The node is null for a page that is alone in its ring.
struct RingPlace {
    RingNode* node;
    unsigned place;
};

inline RingPlace PlaceOf(const HeapPage* page) {
    const std::uintptr_t word = NoteOf(page).ringPlace;
    constexpr std::uintptr_t kPlaceMask = RingNode::kPlaces - 1;
    return {.node = reinterpret_cast<RingNode*>(word & ~kPlaceMask),
            .place = static_cast<unsigned>(word & kPlaceMask)};
}

/// Puts `link`, whose page is set, right behind `before` in the ring order; null: a new ring.
/// False: out of memory.
bool RingIndexInsert(PageLink* link, const PageLink* before);
void RingIndexRemove(const PageLink* link);
/// Takes the index of a ring down.
void RingIndexDrop(const PageLink* head);

/// Sets the bit of a place, and those above that follow from it.
inline void SetHinted(RingNode* node, unsigned place, bool hinted) {
    for (;;) {
        const bool before = node->hinted != 0;
        node->SetHinted(place, hinted);
        if ((node->hinted != 0) == before || node->parent == nullptr) {
            return;
        }
        place = node->place;
        node = node->parent;
    }
}

/// Notes whether a page whose hint has but one value has it at present.
inline void RingIndexNoteHinted(const HeapPage* page, bool hinted) {
    if (const auto [node, place] = PlaceOf(page); node != nullptr) {
        SetHinted(node, place, hinted);
    }
}

/// The first page behind `page` in the ring that has a hint, `page` itself last; or null. Reads
/// nothing of the pages. `page` is not alone in its ring.
inline HeapPage* RingHintedBehind(const HeapPage* page) {
    const auto [leaf, place] = PlaceOf(page);
    const RingNode* node = leaf;
    std::uint64_t left = node->hinted & PlacesBehind(place);
    while (left == 0 && node->parent != nullptr) {
        left = node->parent->hinted & PlacesBehind(node->place);
        node = node->parent;
    }
    if (left == 0) {
        left = node->hinted;
    }
    if (left == 0) {
        return nullptr;
    }
    RingNode::Entry entry = node->entries[std::countr_zero(left)];
    while (!node->isLeaf) {
        node = entry.node;
        entry = node->entries[std::countr_zero(node->hinted)];
    }
    return entry.page;
}

/// Tells the index what a page offers now. When that has shrunk, the call keeps a search from being
/// misled.
void RingIndexNote(const PageLink* link);

/// To be called when an offer may have grown. It is often back at what the index knows of.
inline void RingIndexRaise(const PageLink* link) {
    const auto [node, place] = PlaceOf(link->page);
    if (node != nullptr && !Covers(node->Bound(place), OfferOf(link))) {
        RingIndexNote(link);
    }
}

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

/// What no page of the ring that `link` is in exceeds.
Offer RingBound(const PageLink* link);

/// A wish for pages whose hint is at least `least`, which is not 0.
struct HintOf {
    std::uint16_t least;

    bool operator()(const Offer& offer) const { return offer.hint >= least; }
};

/// The places where a wish may find something.
template <class Wanted>
std::uint64_t Candidates(const RingNode& node, const Wanted&) {
    return ~(PlacesBehind(node.count - 1U));
}
inline std::uint64_t Candidates(const RingNode& node, const HintOf&) {
    return node.hinted;
}

/// The first page among the entries of `node` at the given places, and below them, whose bound is
/// wanted and that is accepted, or null. `wanted` takes an Offer and must hold for every offer that
/// covers one for which it holds. `accept` takes a page, and the leaf and place of its bound, which
/// it may lower.
template <class Wanted, class Accept>
HeapPage* RingFirstIn(RingNode& node, std::uint64_t places, const Wanted& wanted,
                      const Accept& accept) {
    for (std::uint64_t left = Candidates(node, wanted) & places; left != 0; left &= left - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(left));
        if (!wanted(node.Bound(i))) {
            continue;
        }
        const RingNode::Entry entry = node.entries[i];
        if (node.isLeaf) {
            if (accept(entry.page, node, i)) {
                return entry.page;
            }
            continue;
        }
        if (HeapPage* page = RingFirstIn(*entry.node, kAllPlaces, wanted, accept);
            page != nullptr) {
            return page;
        }
        node.SetBound(i, RingBound(*entry.node));
    }
    return nullptr;
}

/// The first such page behind `page` in the ring, `page` itself last; or null.
template <class Wanted, class Accept>
HeapPage* RingPageBehind(HeapPage* page, const Wanted& wanted, const Accept& accept) {
    auto [node, place] = PlaceOf(page);
    if (node == nullptr) {
        return wanted(OfferOf(page->link)) ? page : nullptr;
    }
    HeapPage* found = RingFirstIn(*node, PlacesBehind(place), wanted, accept);
    while (found == nullptr && node->parent != nullptr) {
        place = node->place;
        node = node->parent;
        found = RingFirstIn(*node, PlacesBehind(place), wanted, accept);
    }
    return found != nullptr ? found : RingFirstIn(*node, kAllPlaces, wanted, accept);
}

/// The page that the bounds alone tell, of which nothing is read.
template <class Wanted>
HeapPage* RingLikelyBehind(HeapPage* page, const Wanted& wanted) {
    return RingPageBehind(page, wanted,
                          [](const HeapPage*, const RingNode&, unsigned) { return true; });
}

/// The first link behind `link` in the ring that offers what is wanted, `link` itself last; or
/// null.
template <class Wanted>
PageLink* RingFirstBehind(const PageLink* link, const Wanted& wanted) {
    const HeapPage* found = RingPageBehind(
        link->page, wanted, [&wanted](const HeapPage* page, RingNode& leaf, unsigned at) {
            const Offer offer = OfferOf(page->link);
            leaf.SetBound(at, offer);
            SetHinted(&leaf, at, offer.hint != 0);
            return wanted(offer);
        });
    return found != nullptr ? found->link : nullptr;
}

/// The same, with `link` itself first.
template <class Wanted>
PageLink* RingFirstFrom(PageLink* link, const Wanted& wanted) {
    return wanted(OfferOf(link)) ? link : RingFirstBehind(link, wanted);
}

/// Whether tree and ring of `head` hold the same links in the same cyclic order, the tree's
/// invariants hold, and no bound is too low.
HeapFault RingIndexFault(const PageLink* head);

}  // namespace veldt::heap
