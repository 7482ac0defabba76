// A singly linked list of untyped pointers that owns its nodes.
#pragma once

#include <veldt20/collections_position.h>
#include <veldt20/export.h>

/// A short list of things that can't carry links of their own: values are untyped pointers, null
/// among them, each in a node from `operator new`. What the values point to belongs to the caller.
///
/// Adding, removing the head and reading are O(1); RemoveAt other than at the head, FindIndex and
/// Find walk from the front. There is no way to the end but by walking. Where elements can hold the
/// links themselves, the intrusive lists need no memory and XIntrusiveDoubleList removes in O(1).
///
/// No lock: a list that threads share needs the caller's. Positions and the preconditions told
/// below aren't tested.
class VELDT20_API XSinglePtrList {
  public:
    /// An empty list; takes no memory.
    XSinglePtrList();
    /// RemoveAll.
    ~XSinglePtrList();
    /// A copy would have to be deep or leave two owners; assignment says which it is.
    XSinglePtrList(const XSinglePtrList&) = delete;
    /// Shallow: from here on both lists name the same nodes, and only one may go on to remove them.
    /// Assign an empty list to the other, which forgets its nodes and frees none. The nodes that
    /// this list held before are forgotten in the same way, so RemoveAll first.
    XSinglePtrList& operator=(const XSinglePtrList&) = default;

    /// 1 or 0.
    int IsEmpty() const;
    /// How many values there are.
    int GetCount() const;

    /// Null on an empty list.
    __XPOSITION* GetHeadPosition() const;
    /// The first value, to read or overwrite. The list must not be empty.
    void*& GetHead();
    void* GetHead() const;
    /// The value at `position`, which moves on to the next node, null behind the last:
    ///
    ///     for (__XPOSITION* p = list.GetHeadPosition(); p != nullptr;) use(list.GetNext(p));
    ///
    /// The node just passed may be removed before the walk goes on.
    void*& GetNext(__XPOSITION*& position);
    void* GetNext(__XPOSITION*& position) const;
    /// The value at `position`, to read or overwrite.
    void*& GetAt(__XPOSITION* position);
    void* GetAt(__XPOSITION* position) const;
    /// Overwrites the value at `position`.
    void SetAt(__XPOSITION* position, void* value);

    /// Puts `value` in front. Null if there is no memory, and then the list is as it was.
    __XPOSITION* AddHead(void* value);
    /// Takes the first node away and gives its value. The list must not be empty.
    void* RemoveHead();
    /// Puts `value` behind `position`, at the head if that is null. Null if there is no memory, and
    /// then the list is as it was.
    __XPOSITION* InsertAfter(__XPOSITION* position, void* value);
    /// Takes the node at `position` away and gives its value. Other positions stay valid.
    void* RemoveAt(__XPOSITION* position);
    /// Frees every node.
    void RemoveAll();

    /// The node `index` steps from the head, null from the count on. `index` must not be negative.
    __XPOSITION* FindIndex(int index) const;
    /// The first node behind `after`, or from the head if that is null, that holds `value`; null if
    /// there is none. Pass a hit as `after` to find the next.
    __XPOSITION* Find(void* value, __XPOSITION* after) const;

  protected:
    /// Frees what `other` held and moves the nodes behind `position` there, all of them if that is
    /// null. The nodes themselves stay, and positions with them. O(nodes moved).
    void SplitAfter(__XPOSITION* position, XSinglePtrList& other);

  private:
    struct Node;

    static Node* NodeAt(__XPOSITION* position);
    static __XPOSITION* PositionOf(Node* node);

    Node* head_;
    int count_;
};
