// Lists that chain the caller's objects through link fields inside them.
//
//     struct Job {
//         const char* name;
//         void* next;
//         void* prev;
//     };
//     XIntrusiveDoubleList jobs(offsetof(Job, next), offsetof(Job, prev));
//     jobs.AddTail(&job);
//
// An element's position is its own address. Each list is told where in an element its link fields
// stand, as byte offsets; an element that has several sets of them can be on as many lists. A link
// field is one pointer wide and needs no alignment.
//
// Nothing here allocates, fails or frees an element, and there is no lock: a list that threads
// share needs the caller's. Positions and the preconditions told below aren't tested. Where
// elements can't hold links, XSinglePtrList keeps nodes of its own.
#pragma once

#include <veldt20/collections_position.h>
#include <veldt20/export.h>

/// One link an element. Everything is O(1) but RemoveAt other than at the head and FindIndex, which
/// walk from the head; where elements leave from anywhere, take XIntrusiveDoubleList.
class VELDT20_API XIntrusiveSingleList {
  public:
    /// An empty list whose elements have their next link at byte `nextOffset`.
    explicit XIntrusiveSingleList(unsigned int nextOffset) noexcept;
    /// RemoveAll: the elements live on.
    ~XIntrusiveSingleList();
    /// Shallow, as the assignment.
    XIntrusiveSingleList(const XIntrusiveSingleList&) = default;
    /// Shallow: both lists then name one chain, and a change through one leaves the other's head
    /// and count out of date.
    XIntrusiveSingleList& operator=(const XIntrusiveSingleList&) = default;
    /// Does what the constructor does, for zeroed or raw memory that no constructor ran on. A chain
    /// that the list has is forgotten.
    void Construct(unsigned int nextOffset) noexcept;

    /// 1 or 0.
    int IsEmpty() const noexcept;
    /// How many elements there are.
    int GetCount() const noexcept;
    /// Null on an empty list.
    void* GetHead() const noexcept;
    /// The same as a position.
    __XPOSITION* GetHeadPosition() const noexcept;
    /// The element at `position`, which moves on to the next element, null behind the last. The
    /// element just passed may be removed before the walk goes on.
    void* GetNext(__XPOSITION*& position) const noexcept;
    /// The element at `position`.
    void* GetAt(__XPOSITION* position) const noexcept;
    /// The position of `element`, which is `element` itself: no walk, and no test of whether it is
    /// on the list. `after` isn't looked at.
    __XPOSITION* Find(void* element, __XPOSITION* after) const noexcept;
    /// The element `index` steps from the head, null from the count on. `index` must not be
    /// negative.
    __XPOSITION* FindIndex(int index) const noexcept;

    /// Puts `element` in front. Gives its position.
    __XPOSITION* AddHead(void* element) noexcept;
    /// Takes the head away and clears its link. The list must not be empty.
    void* RemoveHead() noexcept;
    /// Puts `element` behind `position`; at the head if that is null.
    __XPOSITION* InsertAfter(__XPOSITION* position, void* element) noexcept;
    /// Takes the element at `position` away, clears its link and gives it.
    void* RemoveAt(__XPOSITION* position) noexcept;
    /// Forgets all elements. Their links stay as they are.
    void RemoveAll() noexcept;

  protected:
    /// Where the element's next link stands.
    void** GetNextPtr(void* element) const noexcept;

  private:
    void* head_;
    unsigned int nextOffset_;
    int count_;
};

/// Two links an element, and everything O(1) but FindIndex, which walks from the head.
///
/// An element must come with both links null. AddHead doesn't write its prev link, nor AddTail its
/// next link, and to an empty list neither writes any. Every removal but RemoveAll leaves the
/// element's links null again; after RemoveAll the caller clears them before the element goes on
/// another list.
class VELDT20_API XIntrusiveDoubleList {
  public:
    /// An empty list whose elements have their links at the byte offsets given.
    XIntrusiveDoubleList(unsigned int nextOffset, unsigned int prevOffset) noexcept;
    /// RemoveAll: the elements live on.
    ~XIntrusiveDoubleList();
    /// Shallow, as the assignment.
    XIntrusiveDoubleList(const XIntrusiveDoubleList&) = default;
    /// Shallow: both lists then name one chain, and a change through one leaves the other's ends
    /// and count out of date.
    XIntrusiveDoubleList& operator=(const XIntrusiveDoubleList&) = default;

    /// 1 or 0.
    int IsEmpty() const noexcept;
    /// How many elements there are.
    int GetCount() const noexcept;
    /// Each of these gives null on an empty list.
    void* GetHead() const noexcept;
    void* GetTail() const noexcept;
    __XPOSITION* GetHeadPosition() const noexcept;
    __XPOSITION* GetTailPosition() const noexcept;
    /// The element at `position`, which moves on to the next element, null behind the last. The
    /// element just passed may be removed before the walk goes on.
    void* GetNext(__XPOSITION*& position) const noexcept;
    /// The same towards the head.
    void* GetPrev(__XPOSITION*& position) const noexcept;
    /// The element at `position`.
    void* GetAt(__XPOSITION* position) const noexcept;
    /// The position of `element`, which is `element` itself: no walk, and no test of whether it is
    /// on the list. `after` isn't looked at.
    __XPOSITION* Find(void* element, __XPOSITION* after) const noexcept;
    /// The element `index` steps from the head, null from the count on. `index` must not be
    /// negative.
    __XPOSITION* FindIndex(int index) const noexcept;

    /// Puts `element` in front, or at the end. Gives its position.
    __XPOSITION* AddHead(void* element) noexcept;
    __XPOSITION* AddTail(void* element) noexcept;
    /// Each takes an end away and clears its links. The list must not be empty.
    void* RemoveHead() noexcept;
    void* RemoveTail() noexcept;
    /// Puts `element` in front of `position`; at the head if that is null.
    __XPOSITION* InsertBefore(__XPOSITION* position, void* element) noexcept;
    /// Puts `element` behind `position`; at the tail if that is null, the opposite end from
    /// XIntrusiveSingleList's.
    __XPOSITION* InsertAfter(__XPOSITION* position, void* element) noexcept;
    /// Takes the element at `position` away, clears its links and gives it.
    void* RemoveAt(__XPOSITION* position) noexcept;
    /// Forgets all elements. Their links stay as they are.
    void RemoveAll() noexcept;

  protected:
    /// Where the element's links stand.
    void** GetNextPtr(void* element) const noexcept;
    void** GetPrevPtr(void* element) const noexcept;

  private:
    /// The end of every removal: clears the links of what the chain no longer reaches.
    void* Unlinked(void* element) noexcept;

    void* head_;
    void* tail_;
    unsigned int nextOffset_;
    unsigned int prevOffset_;
    int count_;
};
