#include <veldt20/collections_intrusive_list.h>

#include "collections/links.h"

using veldt::collections::Follow;
using veldt::collections::LinkAt;
using veldt::collections::PositionOf;
using veldt::collections::ReadLink;
using veldt::collections::WriteLink;

XIntrusiveSingleList::XIntrusiveSingleList(unsigned int nextOffset) noexcept {
    Construct(nextOffset);
}

XIntrusiveSingleList::~XIntrusiveSingleList() {
    RemoveAll();
}

void XIntrusiveSingleList::Construct(unsigned int nextOffset) noexcept {
    head_ = nullptr;
    nextOffset_ = nextOffset;
    count_ = 0;
}

int XIntrusiveSingleList::IsEmpty() const noexcept {
    return head_ == nullptr;
}

int XIntrusiveSingleList::GetCount() const noexcept {
    return count_;
}

void* XIntrusiveSingleList::GetHead() const noexcept {
    return head_;
}

__XPOSITION* XIntrusiveSingleList::GetHeadPosition() const noexcept {
    return PositionOf(head_);
}

void* XIntrusiveSingleList::GetNext(__XPOSITION*& position) const noexcept {
    void* element = position;
    position = PositionOf(ReadLink(GetNextPtr(element)));
    return element;
}

void* XIntrusiveSingleList::GetAt(__XPOSITION* position) const noexcept {
    return position;
}

__XPOSITION* XIntrusiveSingleList::Find(void* element, __XPOSITION*) const noexcept {
    return PositionOf(element);
}

__XPOSITION* XIntrusiveSingleList::FindIndex(int index) const noexcept {
    return index >= count_ ? nullptr : PositionOf(Follow(head_, nextOffset_, index));
}

__XPOSITION* XIntrusiveSingleList::AddHead(void* element) noexcept {
    WriteLink(GetNextPtr(element), head_);
    head_ = element;
    ++count_;
    return PositionOf(element);
}

void* XIntrusiveSingleList::RemoveHead() noexcept {
    return RemoveAt(PositionOf(head_));
}

__XPOSITION* XIntrusiveSingleList::InsertAfter(__XPOSITION* position, void* element) noexcept {
    if (position == nullptr) {
        return AddHead(element);
    }
    WriteLink(GetNextPtr(element), ReadLink(GetNextPtr(position)));
    WriteLink(GetNextPtr(position), element);
    ++count_;
    return PositionOf(element);
}

void* XIntrusiveSingleList::RemoveAt(__XPOSITION* position) noexcept {
    void* next = ReadLink(GetNextPtr(position));
    if (position == head_) {
        head_ = next;
    } else {
        void** link = GetNextPtr(head_);
        while (ReadLink(link) != position) {
            link = GetNextPtr(ReadLink(link));
        }
        WriteLink(link, next);
    }
    WriteLink(GetNextPtr(position), nullptr);
    --count_;
    return position;
}

void XIntrusiveSingleList::RemoveAll() noexcept {
    head_ = nullptr;
    count_ = 0;
}

void** XIntrusiveSingleList::GetNextPtr(void* element) const noexcept {
    return LinkAt(element, nextOffset_);
}
