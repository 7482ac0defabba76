#include <veldt20/collections_intrusive_list.h>

#include "collections/links.h"

using veldt::collections::Follow;
using veldt::collections::LinkAt;
using veldt::collections::PositionOf;
using veldt::collections::ReadLink;
using veldt::collections::WriteLink;

XIntrusiveSingleList::XIntrusiveSingleList(unsigned int nextOffset) {
    Construct(nextOffset);
}

XIntrusiveSingleList::~XIntrusiveSingleList() {
    RemoveAll();
}

void XIntrusiveSingleList::Construct(unsigned int nextOffset) {
    head_ = nullptr;
    nextOffset_ = nextOffset;
    count_ = 0;
}

int XIntrusiveSingleList::IsEmpty() const {
    return head_ == nullptr;
}

int XIntrusiveSingleList::GetCount() const {
    return count_;
}

void* XIntrusiveSingleList::GetHead() const {
    return head_;
}

__XPOSITION* XIntrusiveSingleList::GetHeadPosition() const {
    return PositionOf(head_);
}

void* XIntrusiveSingleList::GetNext(__XPOSITION*& position) const {
    void* element = position;
    position = PositionOf(ReadLink(GetNextPtr(element)));
    return element;
}

void* XIntrusiveSingleList::GetAt(__XPOSITION* position) const {
    return position;
}

__XPOSITION* XIntrusiveSingleList::Find(void* element, __XPOSITION*) const {
    return PositionOf(element);
}

__XPOSITION* XIntrusiveSingleList::FindIndex(int index) const {
    return index >= count_ ? nullptr : PositionOf(Follow(head_, nextOffset_, index));
}

__XPOSITION* XIntrusiveSingleList::AddHead(void* element) {
    WriteLink(GetNextPtr(element), head_);
    head_ = element;
    ++count_;
    return PositionOf(element);
}

void* XIntrusiveSingleList::RemoveHead() {
    return RemoveAt(PositionOf(head_));
}

__XPOSITION* XIntrusiveSingleList::InsertAfter(__XPOSITION* position, void* element) {
    if (position == nullptr) {
        return AddHead(element);
    }
    WriteLink(GetNextPtr(element), ReadLink(GetNextPtr(position)));
    WriteLink(GetNextPtr(position), element);
    ++count_;
    return PositionOf(element);
}

void* XIntrusiveSingleList::RemoveAt(__XPOSITION* position) {
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

void XIntrusiveSingleList::RemoveAll() {
    head_ = nullptr;
    count_ = 0;
}

void** XIntrusiveSingleList::GetNextPtr(void* element) const {
    return LinkAt(element, nextOffset_);
}
