#include <veldt20/collections_intrusive_list.h>

#include "collections/links.h"

using veldt::collections::Follow;
using veldt::collections::LinkAt;
using veldt::collections::PositionOf;
using veldt::collections::ReadLink;
using veldt::collections::WriteLink;

XIntrusiveDoubleList::XIntrusiveDoubleList(unsigned int nextOffset,
                                           unsigned int prevOffset) noexcept
    : head_(nullptr), tail_(nullptr), nextOffset_(nextOffset), prevOffset_(prevOffset), count_(0) {}

XIntrusiveDoubleList::~XIntrusiveDoubleList() {
    RemoveAll();
}

int XIntrusiveDoubleList::IsEmpty() const noexcept {
    return head_ == nullptr;
}

int XIntrusiveDoubleList::GetCount() const noexcept {
    return count_;
}

void* XIntrusiveDoubleList::GetHead() const noexcept {
    return head_;
}

void* XIntrusiveDoubleList::GetTail() const noexcept {
    return tail_;
}

__XPOSITION* XIntrusiveDoubleList::GetHeadPosition() const noexcept {
    return PositionOf(head_);
}

__XPOSITION* XIntrusiveDoubleList::GetTailPosition() const noexcept {
    return PositionOf(tail_);
}

void* XIntrusiveDoubleList::GetNext(__XPOSITION*& position) const noexcept {
    void* element = position;
    position = PositionOf(ReadLink(GetNextPtr(element)));
    return element;
}

void* XIntrusiveDoubleList::GetPrev(__XPOSITION*& position) const noexcept {
    void* element = position;
    position = PositionOf(ReadLink(GetPrevPtr(element)));
    return element;
}

void* XIntrusiveDoubleList::GetAt(__XPOSITION* position) const noexcept {
    return position;
}

__XPOSITION* XIntrusiveDoubleList::Find(void* element, __XPOSITION*) const noexcept {
    return PositionOf(element);
}

__XPOSITION* XIntrusiveDoubleList::FindIndex(int index) const noexcept {
    return index >= count_ ? nullptr : PositionOf(Follow(head_, nextOffset_, index));
}

__XPOSITION* XIntrusiveDoubleList::AddHead(void* element) noexcept {
    if (head_ == nullptr) {
        tail_ = element;
    } else {
        WriteLink(GetNextPtr(element), head_);
        WriteLink(GetPrevPtr(head_), element);
    }
    head_ = element;
    ++count_;
    return PositionOf(element);
}

__XPOSITION* XIntrusiveDoubleList::AddTail(void* element) noexcept {
    if (tail_ == nullptr) {
        head_ = element;
    } else {
        WriteLink(GetPrevPtr(element), tail_);
        WriteLink(GetNextPtr(tail_), element);
    }
    tail_ = element;
    ++count_;
    return PositionOf(element);
}

void* XIntrusiveDoubleList::RemoveHead() noexcept {
    void* element = head_;
    head_ = ReadLink(GetNextPtr(element));
    if (head_ == nullptr) {
        tail_ = nullptr;
    } else {
        WriteLink(GetPrevPtr(head_), nullptr);
    }
    return Unlinked(element);
}

void* XIntrusiveDoubleList::RemoveTail() noexcept {
    void* element = tail_;
    tail_ = ReadLink(GetPrevPtr(element));
    if (tail_ == nullptr) {
        head_ = nullptr;
    } else {
        WriteLink(GetNextPtr(tail_), nullptr);
    }
    return Unlinked(element);
}

__XPOSITION* XIntrusiveDoubleList::InsertBefore(__XPOSITION* position, void* element) noexcept {
    if (position == nullptr) {
        return AddHead(element);
    }
    void* prev = ReadLink(GetPrevPtr(position));
    if (prev == nullptr) {
        head_ = element;
    } else {
        WriteLink(GetNextPtr(prev), element);
    }
    WriteLink(GetPrevPtr(position), element);
    WriteLink(GetPrevPtr(element), prev);
    WriteLink(GetNextPtr(element), position);
    ++count_;
    return PositionOf(element);
}

__XPOSITION* XIntrusiveDoubleList::InsertAfter(__XPOSITION* position, void* element) noexcept {
    if (position == nullptr) {
        return AddTail(element);
    }
    void* next = ReadLink(GetNextPtr(position));
    if (next == nullptr) {
        tail_ = element;
    } else {
        WriteLink(GetPrevPtr(next), element);
    }
    WriteLink(GetNextPtr(position), element);
    WriteLink(GetNextPtr(element), next);
    WriteLink(GetPrevPtr(element), position);
    ++count_;
    return PositionOf(element);
}

// The ends are told by head and tail, not by null links: at an end the outer link isn't read.
void* XIntrusiveDoubleList::RemoveAt(__XPOSITION* position) noexcept {
    void* next = ReadLink(GetNextPtr(position));
    void* prev = ReadLink(GetPrevPtr(position));
    if (position == head_) {
        head_ = next;
    } else {
        WriteLink(GetNextPtr(prev), next);
    }
    if (position == tail_) {
        tail_ = prev;
    } else {
        WriteLink(GetPrevPtr(next), prev);
    }
    return Unlinked(position);
}

void* XIntrusiveDoubleList::Unlinked(void* element) noexcept {
    WriteLink(GetNextPtr(element), nullptr);
    WriteLink(GetPrevPtr(element), nullptr);
    --count_;
    return element;
}

void XIntrusiveDoubleList::RemoveAll() noexcept {
    head_ = nullptr;
    tail_ = nullptr;
    count_ = 0;
}

void** XIntrusiveDoubleList::GetNextPtr(void* element) const noexcept {
    return LinkAt(element, nextOffset_);
}

void** XIntrusiveDoubleList::GetPrevPtr(void* element) const noexcept {
    return LinkAt(element, prevOffset_);
}
