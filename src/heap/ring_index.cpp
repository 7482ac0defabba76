#include "heap/ring_index.h"

#include <algorithm>

#include "heap/locks.h"

namespace veldt::heap {

namespace {

constexpr unsigned kPlaces = RingNode::kPlaces;

/// An entry of a node with what the node knows of it.
struct Item {
    RingNode::Entry entry;
    Offer bound;
    bool hinted;
};

Item ItemOf(const PageLink* link) {
    return {.entry = {.page = link->page}, .bound = OfferOf(link), .hinted = link->freeHint != 0};
}

Item ItemOf(RingNode* below) {
    return {.entry = {.node = below}, .bound = RingBound(*below), .hinted = below->hinted != 0};
}

Item ItemAt(const RingNode& node, unsigned place) {
    return {.entry = node.entries[place],
            .bound = node.Bound(place),
            .hinted = (node.hinted >> place & 1) != 0};
}

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

void Put(RingNode& node, unsigned place, const Item& item) {
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

/// Opens a place in a node that is not full.
void PutAt(RingNode& node, unsigned place, const Item& item) {
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

/// Closes a place.
void TakeFrom(RingNode& node, unsigned place) {
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

/// Forgets the entries from `first` on.
void Truncate(RingNode& node, unsigned first) {
    node.count = static_cast<std::uint8_t>(first);
    node.hinted &= PlacesBefore(first);
}

/// Moves the entries from `first` on to the end of another node.
void MoveTail(RingNode& to, RingNode& from, unsigned first) {
    for (unsigned i = first; i < from.count; ++i) {
        Put(to, to.count++, ItemAt(from, i));
    }
    if (first < from.count) {
        Truncate(from, first);
    }
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

/// The nodes around which a change may have broken the invariants. They are looked at one by one
/// when all else is done, so that none that is still to be looked at can have been given away.
class Untidy {
  public:
    void Add(RingNode* node) {
        Forget(node);
        node->nextUntidy = first_;
        first_ = node;
    }
    void Forget(const RingNode* node) {
        RingNode** at = &first_;
        while (*at != nullptr && *at != node) {
            at = &(*at)->nextUntidy;
        }
        if (*at != nullptr) {
            *at = node->nextUntidy;
        }
    }
    /// Null if there is none.
    RingNode* Take() {
        RingNode* node = first_;
        if (node != nullptr) {
            first_ = node->nextUntidy;
        }
        return node;
    }

  private:
    RingNode* first_ = nullptr;
};

void InsertAt(RingNode* node, unsigned place, const Item& item, Untidy& untidy);

/// Makes room in a full node by a new one behind it. A node that grows at its end, as a ring does
/// while nothing else happens, stays full.
RingNode* Split(RingNode& node, unsigned place, Untidy& untidy) {
    if (node.parent == nullptr) {
        PutAt(*TakeRingNode(false), 0, ItemOf(&node));
    }
    RingNode* behind = TakeRingNode(node.isLeaf);
    MoveTail(*behind, node, place == kPlaces ? kPlaces : kPlaces / 2);
    TellAbove(node);
    InsertAt(node.parent, node.place + 1U, ItemOf(behind), untidy);
    return behind;
}

/// The neighbour behind a node below the same parent, or null.
RingNode* Next(const RingNode& node) {
    const RingNode* parent = node.parent;
    return parent != nullptr && node.place + 1U < parent->count
               ? parent->entries[node.place + 1U].node
               : nullptr;
}

void PutAndRaise(RingNode* node, unsigned place, const Item& item) {
    PutAt(*node, place, item);
    TellAbove(*node);
    if (node->parent != nullptr) {
        RaiseFrom(node->parent, node->place, item.bound);
    }
}

void InsertAt(RingNode* node, unsigned place, const Item& item, Untidy& untidy) {
    if (node->count < kPlaces) {
        PutAndRaise(node, place, item);
        return;
    }
    RingNode* next = Next(*node);
    if (place == kPlaces && next != nullptr && next->count < kPlaces) {
        PutAndRaise(next, 0, item);
        return;
    }
    RingNode* behind = Split(*node, place, untidy);
    if (place <= node->count && node->count < kPlaces) {
        PutAndRaise(node, place, item);
    } else {
        PutAndRaise(behind, place - node->count, item);
    }
    untidy.Add(behind);
}

void RemoveAt(RingNode* node, unsigned place, Untidy& untidy) {
    TakeFrom(*node, place);
    if (node->count == 0) {
        RemoveAt(node->parent, node->place, untidy);
        untidy.Forget(node);
        GiveRingNode(node);
        return;
    }
    TellAbove(*node);
    untidy.Add(node);
}

/// Moves what is in `right`, the next neighbour of `left`, to it. The entries at the seam have
/// become neighbours.
void Merge(RingNode& left, RingNode& right, Untidy& untidy) {
    const unsigned seam = left.count;
    MoveTail(left, right, 0);
    TellAbove(left);
    left.parent->SetBound(left.place, RingBound(left));
    RemoveAt(right.parent, right.place, untidy);
    untidy.Forget(&right);
    GiveRingNode(&right);
    untidy.Add(&left);
    if (!left.isLeaf) {
        untidy.Add(left.entries[seam].node);
    }
}

/// Takes down a top that has one entry, which needs none.
void Unroof(RingNode* top, Untidy& untidy) {
    const RingNode::Entry only = top->entries[0];
    if (top->isLeaf) {
        NoteOf(only.page).ringPlace = 0;
    } else {
        only.node->parent = nullptr;
        untidy.Add(only.node);
    }
    GiveRingNode(top);
}

/// Restores the invariants around a node.
void Tidy(RingNode* node, Untidy& untidy) {
    RingNode* parent = node->parent;
    if (parent == nullptr) {
        if (node->count == 1) {
            Unroof(node, untidy);
        }
        return;
    }
    const auto fits = [node](const RingNode& other) {
        return node->count + unsigned{other.count} <= kPlaces / 2;
    };
    if (RingNode* next = Next(*node); next != nullptr && fits(*next)) {
        Merge(*node, *next, untidy);
    } else if (node->place > 0 && fits(*parent->entries[node->place - 1U].node)) {
        Merge(*parent->entries[node->place - 1U].node, *node, untidy);
    }
}

void TidyAll(Untidy& untidy) {
    while (RingNode* node = untidy.Take()) {
        Tidy(node, untidy);
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
        PutAt(*TakeRingNode(true), 0, ItemOf(before));
    }
    const auto [node, place] = PlaceOf(before->page);
    Untidy untidy;
    InsertAt(node, place + 1, ItemOf(link), untidy);
    TidyAll(untidy);
    return true;
}

void RingIndexRemove(const PageLink* link) {
    if (const auto [node, place] = PlaceOf(link->page); node != nullptr) {
        Untidy untidy;
        RemoveAt(node, place, untidy);
        TidyAll(untidy);
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

Offer RingBound(const RingNode& node) {
    Offer bound{};
    for (unsigned i = 0; i < node.count; ++i) {
        bound = Widest(bound, node.Bound(i));
    }
    return bound;
}

Offer RingBound(const PageLink* link) {
    const RingNode* top = Top(link);
    return top != nullptr ? RingBound(*top) : OfferOf(link);
}

namespace {

/// Whether what the node says of an entry holds for what the entry itself offers. Of a page whose
/// hint has fallen to 0 the index may not have heard; of one of fixed blocks it hears that alone.
bool Knows(const RingNode& node, unsigned place, const Item& actual) {
    const bool hinted = ItemAt(node, place).hinted;
    const bool hasBound = !node.isLeaf || KindOf(actual.entry.page) != kKindFixed;
    return (!hasBound || Covers(node.Bound(place), actual.bound)) &&
           (hinted == actual.hinted || (node.isLeaf && hinted));
}

/// Walks the tree in order beside the ring, from `at` on. False at the first disagreement.
bool CheckBelow(const RingNode& node, const PageLink*& at) {
    for (unsigned i = 0; i < node.count; ++i) {
        const RingNode::Entry entry = node.entries[i];
        if (node.isLeaf) {
            const auto [home, place] = PlaceOf(entry.page);
            if (at->page != entry.page || home != &node || place != i ||
                !Knows(node, i, ItemOf(at))) {
                return false;
            }
            at = at->next;
            continue;
        }
        const RingNode& below = *entry.node;
        const bool spare =
            i > 0 && node.entries[i - 1].node->count + unsigned{below.count} <= kPlaces / 2;
        if (below.parent != &node || below.place != i || spare ||
            !Knows(node, i, ItemOf(entry.node)) || !CheckBelow(below, at)) {
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
