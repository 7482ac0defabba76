#include "heap/ring_index.h"

namespace veldt::heap {

namespace {

/// Random heap order of the treap: a bijection on 32-bit words, so no two units are equal.
std::uint32_t Priority(Unit unit) {
    std::uint32_t word = unit;
    word = (word ^ (word >> 16)) * 0x85EBCA6BU;
    word = (word ^ (word >> 13)) * 0xC2B2AE35U;
    return word ^ (word >> 16);
}

void SetParent(Unit child, Unit parent) {
    if (child != 0) {
        NodeOf(child).parent = parent;
    }
}

void ReplaceChild(Unit parent, Unit child, Unit replacement) {
    if (parent != 0) {
        RingNode& node = NodeOf(parent);
        (node.left == child ? node.left : node.right) = replacement;
    }
    SetParent(replacement, parent);
}

/// Puts `unit` in the place of its parent, which becomes its child; the order stays.
void RotateUp(Unit unit) {
    RingNode& node = NodeOf(unit);
    const Unit parent = node.parent;
    RingNode& above = NodeOf(parent);
    ReplaceChild(above.parent, parent, unit);
    if (above.left == unit) {
        above.left = node.right;
        SetParent(node.right, parent);
        node.right = parent;
    } else {
        above.right = node.left;
        SetParent(node.left, parent);
        node.left = parent;
    }
    above.parent = unit;
    node.bound = Widest(node.bound, above.bound);
    RingRefit(above);
}

Unit Leftmost(Unit unit) {
    while (NodeOf(unit).left != 0) {
        unit = NodeOf(unit).left;
    }
    return unit;
}

}  // namespace

RingNode& RingIndexTop(const PageLink* link) {
    Unit unit = UnitOf(link->page);
    while (NodeOf(unit).parent != 0) {
        unit = NodeOf(unit).parent;
    }
    return NodeOf(unit);
}

void RingIndexRaise(const PageLink* link) {
    const Offer offer = OfferOf(link);
    for (Unit unit = UnitOf(link->page); unit != 0;) {
        RingNode& node = NodeOf(unit);
        if (Covers(node.bound, offer)) {
            return;
        }
        node.bound = Widest(node.bound, offer);
        unit = node.parent;
    }
}

void RingIndexInsert(PageLink* link, const PageLink* before) {
    const Unit unit = UnitOf(link->page);
    RingNode& node = NodeOf(unit);
    node = {.link = link, .parent = 0, .left = 0, .right = 0, .bound = {}};
    if (before != nullptr) {
        const Unit place = UnitOf(before->page);
        if (const Unit right = NodeOf(place).right; right != 0) {
            node.parent = Leftmost(right);
            NodeOf(node.parent).left = unit;
        } else {
            node.parent = place;
            NodeOf(place).right = unit;
        }
    }
    RingIndexRaise(link);
    while (node.parent != 0 && Priority(node.parent) < Priority(unit)) {
        RotateUp(unit);
    }
}

void RingIndexRemove(const PageLink* link) {
    const Unit unit = UnitOf(link->page);
    RingNode& node = NodeOf(unit);
    while (node.left != 0 && node.right != 0) {
        RotateUp(Priority(node.left) > Priority(node.right) ? node.left : node.right);
    }
    ReplaceChild(node.parent, unit, node.left != 0 ? node.left : node.right);
}

namespace {

/// Walks the tree in order beside the ring, from `at` on. False at the first disagreement.
bool CheckBelow(Unit unit, Unit parent, const PageLink*& at) {
    if (unit == 0) {
        return true;
    }
    const RingNode& node = NodeOf(unit);
    if (node.parent != parent || !CheckBelow(node.left, unit, at)) {
        return false;
    }
    if (node.link != at || UnitOf(at->page) != unit || !Covers(node.bound, OfferOf(at))) {
        return false;
    }
    at = at->next;
    return CheckBelow(node.right, unit, at) &&
           (node.left == 0 || Covers(node.bound, NodeOf(node.left).bound)) &&
           (node.right == 0 || Covers(node.bound, NodeOf(node.right).bound)) &&
           (parent == 0 || Priority(parent) > Priority(unit));
}

}  // namespace

HeapFault RingIndexFault(const PageLink* head) {
    const Unit top = UnitOf(RingIndexTop(head).link->page);
    const PageLink* first = NodeOf(Leftmost(top)).link;
    const PageLink* at = first;
    if (!CheckBelow(top, 0, at) || at != first) {
        return {"ring index disagrees with the ring", at};
    }
    return {};
}

}  // namespace veldt::heap
