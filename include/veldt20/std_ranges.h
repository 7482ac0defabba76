// Lists and handle arrays as ranges.
//
//     for (void*& value : pointers) ...                      // an XSinglePtrList
//     for (Job& job : XElements<Job>(jobs)) ...              // an intrusive list of Job
//     for (XNPoint& point : XRecords<XNPoint>(points)) ...   // an XHandleArray of XNPoint
//
// An iterator into a list is valid until its element is removed. One into an XHandleArray goes by
// its index and stays valid through every change, but what it gives is a reference into the
// handle's block: good until the next call that may move that.
#pragma once

#include <veldt20/collections.h>

#include <compare>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <type_traits>
#include <utility>

/// A walk along a list. `Element` says what stands at a position. It goes backwards where the list
/// does, from the end too.
template <class List, class Element>
class XListIterator {
    static constexpr bool kBothWays = requires(const List& list) { list.GetTailPosition(); };
    using Direction =
        std::conditional_t<kBothWays, std::bidirectional_iterator_tag, std::forward_iterator_tag>;

  public:
    using value_type = typename Element::Value;
    using reference = typename Element::Reference;
    using pointer = void;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = Direction;
    using iterator_category =
        std::conditional_t<std::is_reference_v<reference>, Direction, std::input_iterator_tag>;

    constexpr XListIterator() noexcept = default;
    /// Null for `position` is the end.
    constexpr XListIterator(List& list, __XPOSITION* position) noexcept
        : list_(&list), position_(position) {}

    reference operator*() const noexcept { return Element::At(*list_, position_); }
    XListIterator& operator++() noexcept {
        list_->GetNext(position_);
        return *this;
    }
    XListIterator operator++(int) noexcept {
        XListIterator before = *this;
        ++*this;
        return before;
    }
    XListIterator& operator--() noexcept requires kBothWays {
        if (position_ == nullptr) {
            position_ = list_->GetTailPosition();
        } else {
            list_->GetPrev(position_);
        }
        return *this;
    }
    XListIterator operator--(int) noexcept requires kBothWays {
        XListIterator before = *this;
        --*this;
        return before;
    }

    /// For the list's own calls; null at the end.
    constexpr __XPOSITION* Position() const noexcept { return position_; }
    constexpr bool operator==(const XListIterator& other) const noexcept {
        return position_ == other.position_;
    }

  private:
    List* list_ = nullptr;
    __XPOSITION* position_ = nullptr;
};

/// The value in a node of an XSinglePtrList, to read or overwrite.
struct XNodeValue {
    using Value = void*;
    using Reference = void*&;
    static Reference At(XSinglePtrList& list, __XPOSITION* position) noexcept {
        return list.GetAt(position);
    }
};
/// The same, of a list that is only read.
struct XConstNodeValue {
    using Value = void*;
    using Reference = void*;
    static Reference At(const XSinglePtrList& list, __XPOSITION* position) noexcept {
        return list.GetAt(position);
    }
};
/// The address of an element of an intrusive list.
struct XElementAddress {
    using Value = void*;
    using Reference = void*;
    static Reference At(const auto& list, __XPOSITION* position) noexcept {
        return list.GetAt(position);
    }
};
/// An element of an intrusive list.
template <class T>
struct XElement {
    using Value = std::remove_cv_t<T>;
    using Reference = T&;
    static Reference At(const auto& list, __XPOSITION* position) noexcept {
        return *static_cast<T*>(list.GetAt(position));
    }
};

template <class List>
concept XIntrusiveList =
    std::same_as<List, XIntrusiveSingleList> || std::same_as<List, XIntrusiveDoubleList>;

/// The first value of the list.
inline auto begin(XSinglePtrList& list) noexcept {
    return XListIterator<XSinglePtrList, XNodeValue>(list, list.GetHeadPosition());
}
/// Behind the last value.
inline auto end(XSinglePtrList& list) noexcept {
    return XListIterator<XSinglePtrList, XNodeValue>(list, nullptr);
}
/// The first value of the list, to be read.
inline auto begin(const XSinglePtrList& list) noexcept {
    return XListIterator<const XSinglePtrList, XConstNodeValue>(list, list.GetHeadPosition());
}
/// Behind the last value.
inline auto end(const XSinglePtrList& list) noexcept {
    return XListIterator<const XSinglePtrList, XConstNodeValue>(list, nullptr);
}
// Twice, for the standard's own overloads take the better match where only one stands here.
/// The address of the first element.
template <XIntrusiveList List>
auto begin(const List& list) noexcept {
    return XListIterator<const List, XElementAddress>(list, list.GetHeadPosition());
}
/// Behind the last element.
template <XIntrusiveList List>
auto end(const List& list) noexcept {
    return XListIterator<const List, XElementAddress>(list, nullptr);
}
/// The address of the first element.
template <XIntrusiveList List>
auto begin(List& list) noexcept {
    return begin(std::as_const(list));
}
/// Behind the last element.
template <XIntrusiveList List>
auto end(List& list) noexcept {
    return end(std::as_const(list));
}

/// The elements of an intrusive list as what they are. `T` is what their positions point to.
template <class T, XIntrusiveList List>
class XElementRange {
  public:
    /// A view of `list`, which must outlive it.
    explicit constexpr XElementRange(const List& list) noexcept : list_(&list) {}

    /// The first element.
    auto begin() const noexcept { return Iterator(*list_, list_->GetHeadPosition()); }
    /// Behind the last one.
    auto end() const noexcept { return Iterator(*list_, nullptr); }
    /// How many there are.
    std::size_t size() const noexcept { return static_cast<std::size_t>(list_->GetCount()); }

  private:
    using Iterator = XListIterator<const List, XElement<T>>;

    const List* list_;
};

/// The elements of `list` as `T`; the list must outlive the view.
template <class T, XIntrusiveList List>
constexpr XElementRange<T, List> XElements(const List& list) noexcept {
    return XElementRange<T, List>(list);
}

/// What an XHandleArray can hold: bytes that are copied as such, at a block's alignment.
template <class T>
concept XRecord = std::is_trivially_copyable_v<T> && alignof(T) <= alignof(void*);

/// Goes by index, and asks the array anew at each access where its records are.
template <XRecord T>
class XRecordIterator {
  public:
    using value_type = std::remove_cv_t<T>;
    using reference = T&;
    using pointer = T*;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::random_access_iterator_tag;

    constexpr XRecordIterator() noexcept = default;
    constexpr XRecordIterator(const XHandleArray& array, difference_type index) noexcept
        : array_(&array), index_(index) {}

    reference operator*() const noexcept { return *operator->(); }
    pointer operator->() const noexcept {
        return reinterpret_cast<T*>(array_->GetArrayPtr()) + index_;
    }
    reference operator[](difference_type n) const noexcept { return *(*this + n); }

    constexpr XRecordIterator& operator+=(difference_type n) noexcept {
        index_ += n;
        return *this;
    }
    constexpr XRecordIterator& operator-=(difference_type n) noexcept { return *this += -n; }
    constexpr XRecordIterator& operator++() noexcept { return *this += 1; }
    constexpr XRecordIterator& operator--() noexcept { return *this -= 1; }
    constexpr XRecordIterator operator++(int) noexcept { return {*array_, index_++}; }
    constexpr XRecordIterator operator--(int) noexcept { return {*array_, index_--}; }

    friend constexpr XRecordIterator operator+(XRecordIterator at, difference_type n) noexcept {
        return at += n;
    }
    friend constexpr XRecordIterator operator+(difference_type n, XRecordIterator at) noexcept {
        return at += n;
    }
    friend constexpr XRecordIterator operator-(XRecordIterator at, difference_type n) noexcept {
        return at -= n;
    }
    friend constexpr difference_type operator-(const XRecordIterator& a,
                                               const XRecordIterator& b) noexcept {
        return a.index_ - b.index_;
    }
    constexpr bool operator==(const XRecordIterator& other) const noexcept {
        return index_ == other.index_;
    }
    constexpr auto operator<=>(const XRecordIterator& other) const noexcept {
        return index_ <=> other.index_;
    }

  private:
    const XHandleArray* array_ = nullptr;
    difference_type index_ = 0;
};

/// The records of an array whose element size is that of `T`.
template <XRecord T>
class XRecords {
  public:
    /// A view of `array`, which must outlive it.
    explicit constexpr XRecords(const XHandleArray& array) noexcept : array_(&array) {}

    /// The first record, by its index.
    auto begin() const noexcept { return XRecordIterator<T>(*array_, 0); }
    /// Behind the last one.
    auto end() const noexcept { return XRecordIterator<T>(*array_, array_->GetNumElements()); }
    /// How many there are.
    std::size_t size() const noexcept { return static_cast<std::size_t>(array_->GetNumElements()); }
    /// A reference into the block: good until the next call that may move it.
    T& operator[](std::size_t index) const noexcept {
        return begin()[static_cast<std::ptrdiff_t>(index)];
    }

  private:
    const XHandleArray* array_;
};

/// The same, locked for a scope: contiguous, and staying where it is until the array is resized.
template <XRecord T>
class XLockedRecords {
  public:
    /// Locks `array`, which must outlive the lock.
    explicit XLockedRecords(const XHandleArray& array) noexcept
        : array_(&array), first_(reinterpret_cast<T*>(array.Lock())) {}
    ~XLockedRecords() { array_->Unlock(); }
    XLockedRecords(const XLockedRecords&) = delete;
    XLockedRecords& operator=(const XLockedRecords&) = delete;

    /// The first record.
    T* begin() const noexcept { return first_; }
    /// Behind the last one.
    T* end() const noexcept { return first_ + array_->GetNumElements(); }
    /// The first record.
    T* data() const noexcept { return first_; }
    /// How many there are.
    std::size_t size() const noexcept { return static_cast<std::size_t>(array_->GetNumElements()); }
    /// `index` is below size().
    T& operator[](std::size_t index) const noexcept { return first_[index]; }

  private:
    const XHandleArray* array_;
    T* first_;
};

// Their iterators refer to the collection itself.
template <class T, class List>
inline constexpr bool std::ranges::enable_borrowed_range<XElementRange<T, List>> = true;
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<XRecords<T>> = true;
