#include "heap/ring_index.h"

namespace veldt::heap {

namespace {

using Entry = RingNode::Entry;
constexpr unsigned kPlaces = RingNode::kPlaces;

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

void Put(RingNode& node, unsigned place, Entry entry, const Offer& bound) {
    node.entries[place] = entry;
    node.SetBound(place, bound);
    Settle(node, place);
}

void Move(RingNode& to, unsigned toPlace, const RingNode& from, unsigned fromPlace) {
    Put(to, toPlace, from.entries[fromPlace], from.bounds[fromPlace]);
}

/// Opens a place in a node that is not full.
void PutAt(RingNode& node, unsigned place, Entry entry, const Offer& bound) {
    for (unsigned i = node.count; i > place; --i) {
        Move(node, i, node, i - 1);
    }
    Put(node, place, entry, bound);
    ++node.count;
}

/// Moves the entries from `first` on to the end of another node.
void MoveTail(RingNode& to, RingNode& from, unsigned first) {
    for (unsigned i = first; i < from.count; ++i) {
        Move(to, to.count++, from, i);
    }
    from.count = static_cast<std::uint8_t>(first);
    from.hinted &= static_cast<std::uint16_t>((1U << first) - 1);
}

/// Lets the bounds on the way from a place to the top suffice for `offer`.
void RaiseFrom(RingNode* node, unsigned place, const Offer& offer) {
    while (!Covers(node->bounds[place], offer)) {
        node->SetBound(place, Widest(node->bounds[place], offer));
        if (node->parent == nullptr) {
            return;
        }
        place = node->place;
        node = node->parent;
    }
}

void InsertAt(RingNode* node, unsigned place, Entry entry, const Offer& bound);

/// Makes room in a full node by a new one behind it. A node that grows at its end, as a ring does
/// while nothing else happens, stays full.
RingNode* Split(RingNode& node, unsigned place) {
    if (node.parent == nullptr) {
        RingNode* top = TakeRingNode(false);
        PutAt(*top, 0, {.node = &node}, RingBound(node));
    }
    RingNode* behind = TakeRingNode(node.isLeaf);
    MoveTail(*behind, node, place == kPlaces ? kPlaces : kPlaces / 2);
    InsertAt(node.parent, node.place + 1U, {.node = behind}, RingBound(*behind));
    return behind;
}

/// The neighbour behind a node below the same parent, or null.
RingNode* Next(const RingNode& node) {
    const RingNode* parent = node.parent;
    return parent != nullptr && node.place + 1U < parent->count
               ? parent->entries[node.place + 1U].node
               : nullptr;
}

void PutAndRaise(RingNode* node, unsigned place, Entry entry, const Offer& bound) {
    PutAt(*node, place, entry, bound);
    if (node->parent != nullptr) {
        RaiseFrom(node->parent, node->place, bound);
    }
}

void Tidy(RingNode* node);

void InsertAt(RingNode* node, unsigned place, Entry entry, const Offer& bound) {
    if (node->count < kPlaces) {
        PutAndRaise(node, place, entry, bound);
        return;
    }
    RingNode* next = Next(*node);
    if (place == kPlaces && next != nullptr && next->count < kPlaces) {
        PutAndRaise(next, 0, entry, bound);
        return;
    }
    RingNode* behind = Split(*node, place);
    if (place <= node->count && node->count < kPlaces) {
        PutAndRaise(node, place, entry, bound);
    } else {
        PutAndRaise(behind, place - node->count, entry, bound);
    }
    Tidy(behind);
}

void RemoveAt(RingNode* node, unsigned place);

/// Moves what is in `right`, the next neighbour of `left`, to it.
void Merge(RingNode& left, RingNode& right) {
    const unsigned seam = left.count;
    MoveTail(left, right, 0);
    left.parent->SetBound(left.place, RingBound(left));
    RemoveAt(right.parent, right.place);
    GiveRingNode(&right);
    if (!left.isLeaf) {
        Tidy(left.entries[seam].node);
    }
}

/// Restores the invariants around a node that has lost an entry.
void Tidy(RingNode* node) {
    RingNode* parent = node->parent;
    if (parent == nullptr) {
        if (node->count == 1) {
            const Entry only = node->entries[0];
            if (node->isLeaf) {
                NoteOf(only.page).ringPlace = 0;
            } else {
                only.node->parent = nullptr;
            }
            GiveRingNode(node);
        }
        return;
    }
    const auto fits = [node](const RingNode& other) {
        return node->count + unsigned{other.count} <= kPlaces / 2;
    };
    if (RingNode* next = Next(*node); next != nullptr && fits(*next)) {
        Merge(*node, *next);
    } else if (node->place > 0 && fits(*parent->entries[node->place - 1U].node)) {
        Merge(*parent->entries[node->place - 1U].node, *node);
    }
}

void RemoveAt(RingNode* node, unsigned place) {
    --node->count;
    for (unsigned i = place; i < node->count; ++i) {
        Move(*node, i, *node, i + 1);
    }
    node->hinted &= static_cast<std::uint16_t>((1U << node->count) - 1);
    if (node->count == 0) {
        RemoveAt(node->parent, node->place);
        GiveRingNode(node);
        return;
    }
    Tidy(node);
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

void RingIndexInsert(PageLink* link, const PageLink* before) {
    NoteOf(link->page).ringPlace = 0;
    if (before == nullptr) {
        return;
    }
    if (PlaceOf(before->page).node == nullptr) {
        PutAt(*TakeRingNode(true), 0, {.page = before->page}, OfferOf(before));
    }
    const auto [node, place] = PlaceOf(before->page);
    InsertAt(node, place + 1, {.page = link->page}, OfferOf(link));
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

void RingIndexNote(const HeapPage* page, const Offer& offer) {
    auto [node, place] = PlaceOf(page);
    if (node == nullptr) {
        return;
    }
    node->SetBound(place, offer);
    while (node->parent != nullptr && node->hinted == 0) {
        place = node->place;
        const Offer bound = RingBound(*node);
        node = node->parent;
        node->SetBound(place, bound);
    }
    if (node->parent != nullptr) {
        RaiseFrom(node->parent, node->place, offer);
    }
}

Offer RingBound(const RingNode& node) {
    Offer bound{};
    for (unsigned i = 0; i < node.count; ++i) {
        bound = Widest(bound, node.bounds[i]);
    }
    return bound;
}

Offer RingBound(const PageLink* link) {
    const RingNode* top = Top(link);
    return top != nullptr ? RingBound(*top) : OfferOf(link);
}

namespace {

bool MaskAgrees(const RingNode& node, unsigned place) {
    return (node.hinted >> place & 1U) == (node.bounds[place].hint != 0 ? 1U : 0U);
}

/// Walks the tree in order beside the ring, from `at` on. False at the first disagreement.
bool CheckBelow(const RingNode& node, const PageLink*& at) {
    for (unsigned i = 0; i < node.count; ++i) {
        const Entry entry = node.entries[i];
        if (node.isLeaf) {
            const auto [home, place] = PlaceOf(entry.page);
            if (at->page != entry.page || home != &node || place != i || !MaskAgrees(node, i) ||
                !Covers(node.bounds[i], OfferOf(at))) {
                return false;
            }
            at = at->next;
            continue;
        }
        const RingNode& below = *entry.node;
        const bool spare =
            i > 0 && node.entries[i - 1].node->count + unsigned{below.count} <= kPlaces / 2;
        if (below.parent != &node || below.place != i || spare || !MaskAgrees(node, i) ||
            !Covers(node.bounds[i], RingBound(below)) || !CheckBelow(below, at)) {
            return false;
        }
    }
    return node.count != 0 && node.hinted >> node.count == 0;
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
