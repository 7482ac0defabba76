#include <veldt20/collections_pointer_list.h>

#include <new>

struct XSinglePtrList::Node {
    Node* next;
    void* value;
};

XSinglePtrList::Node* XSinglePtrList::NodeAt(__XPOSITION* position) {
    return reinterpret_cast<Node*>(position);
}

__XPOSITION* XSinglePtrList::PositionOf(Node* node) {
    return reinterpret_cast<__XPOSITION*>(node);
}

XSinglePtrList::XSinglePtrList() : head_(nullptr), count_(0) {}

XSinglePtrList::~XSinglePtrList() {
    RemoveAll();
}

int XSinglePtrList::IsEmpty() const {
    return count_ == 0;
}

int XSinglePtrList::GetCount() const {
    return count_;
}

__XPOSITION* XSinglePtrList::GetHeadPosition() const {
    return PositionOf(head_);
}

void*& XSinglePtrList::GetHead() {
    return head_->value;
}

void* XSinglePtrList::GetHead() const {
    return head_->value;
}

void*& XSinglePtrList::GetNext(__XPOSITION*& position) {
    Node* node = NodeAt(position);
    position = PositionOf(node->next);
    return node->value;
}

void* XSinglePtrList::GetNext(__XPOSITION*& position) const {
    Node* node = NodeAt(position);
    position = PositionOf(node->next);
    return node->value;
}

void*& XSinglePtrList::GetAt(__XPOSITION* position) {
    return NodeAt(position)->value;
}

void* XSinglePtrList::GetAt(__XPOSITION* position) const {
    return NodeAt(position)->value;
}

void XSinglePtrList::SetAt(__XPOSITION* position, void* value) {
    NodeAt(position)->value = value;
}

__XPOSITION* XSinglePtrList::AddHead(void* value) {
    Node* node = new (std::nothrow) Node{head_, value};
    if (node == nullptr) {
        return nullptr;
    }
    head_ = node;
    ++count_;
    return PositionOf(node);
}

void* XSinglePtrList::RemoveHead() {
    return RemoveAt(PositionOf(head_));
}

__XPOSITION* XSinglePtrList::InsertAfter(__XPOSITION* position, void* value) {
    if (position == nullptr) {
        return AddHead(value);
    }
    Node* before = NodeAt(position);
    Node* node = new (std::nothrow) Node{before->next, value};
    if (node == nullptr) {
        return nullptr;
    }
    before->next = node;
    ++count_;
    return PositionOf(node);
}

void* XSinglePtrList::RemoveAt(__XPOSITION* position) {
    Node* node = NodeAt(position);
    Node** link = &head_;
    while (*link != node) {
        link = &(*link)->next;
    }
    *link = node->next;
    --count_;
    void* value = node->value;
    delete node;
    return value;
}

void XSinglePtrList::RemoveAll() {
    while (head_ != nullptr) {
        Node* next = head_->next;
        delete head_;
        head_ = next;
    }
    count_ = 0;
}

__XPOSITION* XSinglePtrList::FindIndex(int index) const {
    if (index >= count_) {
        return nullptr;
    }
    Node* node = head_;
    for (int step = 0; step < index; ++step) {
        node = node->next;
    }
    return PositionOf(node);
}

__XPOSITION* XSinglePtrList::Find(void* value, __XPOSITION* after) const {
    Node* node = after == nullptr ? head_ : NodeAt(after)->next;
    while (node != nullptr && node->value != value) {
        node = node->next;
    }
    return PositionOf(node);
}

void XSinglePtrList::SplitAfter(__XPOSITION* position, XSinglePtrList& other) {
    other.RemoveAll();
    if (position == nullptr) {
        other = *this;
        head_ = nullptr;
        count_ = 0;
        return;
    }
    other.head_ = NodeAt(position)->next;
    NodeAt(position)->next = nullptr;
    for (const Node* node = other.head_; node != nullptr; node = node->next) {
        ++other.count_;
        --count_;
    }
}
