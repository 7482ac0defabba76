#include "heap/ring_index.h"

#include "heap/locks.h"

namespace veldt::heap {

namespace {

constexpr unsigned kPlaces = RingNode::kPlaces;

RingItem ItemOf(const PageLink* link) {
    return {.entry = {.page = link->page}, .bound = OfferOf(link), .hinted = link->freeHint != 0};
}

/// Lets the node above know whether a node that has changed has a hinted entry.
void TellAbove(const RingNode& node) {
    if (node.parent != nullptr) {
        SetHinted(node.parent, node.place, node.hinted != 0);
    }
}

/// Lets the bounds on the way from a place to the top suffice for `offer`.
void RaiseFrom(RingNode* node, unsigned place, const Offer& offer) {
    while (!Covers(node->Bound(place), offer)) {
        node->SetBound(place, Widest(node->Bound(place), offer));
        if (node->parent == nullptr) {
            return;
        }
        place = node->place;
        node = node->parent;
    }
}

void InsertAt(RingNode* node, unsigned place, const RingItem& item);

/// Makes room in a full node by a new one behind it. A node that grows at its end, as a ring does
/// while nothing else happens, stays full.
RingNode* Split(RingNode& node, unsigned place) {
    if (node.parent == nullptr) {
        RingPutAt(*TakeRingNode(false), 0, RingItemOf(&node));
    }
    RingNode* behind = TakeRingNode(node.isLeaf);
    RingMoveTail(*behind, node, place == kPlaces ? kPlaces : kPlaces / 2);
    TellAbove(node);
    InsertAt(node.parent, node.place + 1U, RingItemOf(behind));
    return behind;
}

/// The neighbour behind a node below the same parent, or null.
RingNode* Next(const RingNode& node) {
    const RingNode* parent = node.parent;
    return parent != nullptr && node.place + 1U < parent->count
               ? parent->entries[node.place + 1U].node
               : nullptr;
}

void PutAndRaise(RingNode* node, unsigned place, const RingItem& item) {
    RingPutAt(*node, place, item);
    TellAbove(*node);
    if (node->parent != nullptr) {
        RaiseFrom(node->parent, node->place, item.bound);
    }
}

void InsertAt(RingNode* node, unsigned place, const RingItem& item) {
    if (node->count < kPlaces) {
        PutAndRaise(node, place, item);
        return;
    }
    RingNode* next = Next(*node);
    if (place == kPlaces && next != nullptr && next->count < kPlaces) {
        PutAndRaise(next, 0, item);
        return;
    }
    RingNode* behind = Split(*node, place);
    if (place <= node->count && node->count < kPlaces) {
        PutAndRaise(node, place, item);
    } else {
        PutAndRaise(behind, place - node->count, item);
    }
}

/// Takes down tops that have one entry, which need none.
void Unroof(RingNode* top) {
    while (top->count == 1) {
        const RingNode::Entry only = top->entries[0];
        const bool isLeaf = top->isLeaf;
        GiveRingNode(top);
        if (isLeaf) {
            NoteOf(only.page).ringPlace = 0;
            return;
        }
        top = only.node;
        top->parent = nullptr;
    }
}

void RemoveAt(RingNode* node, unsigned place) {
    RingTakeFrom(*node, place);
    if (node->count == 0) {
        RemoveAt(node->parent, node->place);
        GiveRingNode(node);
        return;
    }
    TellAbove(*node);
    if (node->parent == nullptr) {
        Unroof(node);
    }
}

void Drop(RingNode* node) {
    if (!node->isLeaf) {
        for (unsigned i = 0; i < node->count; ++i) {
            Drop(node->entries[i].node);
        }
    }
    GiveRingNode(node);
}

RingNode* Top(const PageLink* link) {
    RingNode* node = PlaceOf(link->page).node;
    while (node != nullptr && node->parent != nullptr) {
        node = node->parent;
    }
    return node;
}

}  // namespace

bool RingIndexInsert(PageLink* link, const PageLink* before) {
    NoteOf(link->page).ringPlace = 0;
    if (before == nullptr) {
        return true;
    }
    const RegistryHold hold;
    if (!RingNodesAtHand()) {
        return false;
    }
    if (PlaceOf(before->page).node == nullptr) {
        RingPutAt(*TakeRingNode(true), 0, ItemOf(before));
    }
    const auto [node, place] = PlaceOf(before->page);
    InsertAt(node, place + 1, ItemOf(link));
    return true;
}

void RingIndexRemove(const PageLink* link) {
    if (const auto [node, place] = PlaceOf(link->page); node != nullptr) {
        RemoveAt(node, place);
    }
}

void RingIndexDrop(const PageLink* head) {
    if (RingNode* top = Top(head); top != nullptr) {
        Drop(top);
    }
}

void RingIndexNote(const PageLink* link) {
    const auto [node, place] = PlaceOf(link->page);
    if (node == nullptr) {
        return;
    }
    const Offer offer = OfferOf(link);
    node->SetBound(place, offer);
    SetHinted(node, place, offer.hint != 0);
    if (node->parent != nullptr) {
        RaiseFrom(node->parent, node->place, offer);
    }
}

Offer RingBound(const PageLink* link) {
    const RingNode* top = Top(link);
    return top != nullptr ? RingBound(*top) : OfferOf(link);
}

namespace {

/// Whether what the node says of an entry holds for what the entry itself offers. Of a page of
/// fixed blocks the index hears whether it has a hint, and that alone; of others it may not have
/// heard yet that an offer has shrunk.
bool Agrees(const RingNode& node, unsigned place, const RingItem& actual) {
    const RingItem known = RingItemAt(node, place);
    const bool hasBound = !node.isLeaf || KindOf(actual.entry.page) != kKindFixed;
    const bool hinted = node.isLeaf && hasBound ? known.bound.hint != 0 : actual.hinted;
    return known.hinted == hinted && (!hasBound || Covers(known.bound, actual.bound));
}

/// Walks the tree in order beside the ring, from `at` on. False at the first disagreement.
bool CheckBelow(const RingNode& node, const PageLink*& at) {
    for (unsigned i = 0; i < node.count; ++i) {
        const RingNode::Entry entry = node.entries[i];
        if (node.isLeaf) {
            const auto [home, place] = PlaceOf(entry.page);
            if (at->page != entry.page || home != &node || place != i ||
                !Agrees(node, i, ItemOf(at))) {
                return false;
            }
            at = at->next;
            continue;
        }
        const RingNode& below = *entry.node;
        if (below.parent != &node || below.place != i || !Agrees(node, i, RingItemOf(entry.node)) ||
            !CheckBelow(below, at)) {
            return false;
        }
    }
    return node.count != 0 && (node.hinted & PlacesBehind(node.count - 1U)) == 0;
}

const PageLink* FirstBelow(const RingNode& node) {
    return node.isLeaf ? node.entries[0].page->link : FirstBelow(*node.entries[0].node);
}

}  // namespace

HeapFault RingIndexFault(const PageLink* head) {
    const RingNode* top = Top(head);
    if (top == nullptr) {
        return head->next == head ? HeapFault{} : HeapFault{"ring index lacks the ring", head};
    }
    const PageLink* first = FirstBelow(*top);
    const PageLink* at = first;
    if (top->count < 2 || !CheckBelow(*top, at) || at != first) {
        return {"ring index disagrees with the ring", at};
    }
    return {};
}

}  // namespace veldt::heap
