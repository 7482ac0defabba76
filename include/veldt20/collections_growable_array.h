// The engine of a growable array of fixed-size elements.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// Elements of one size, one after another in one of the platform's global memory blocks. A derived
/// class says what an element is by four operations; this class says when they happen:
///
///     class Names : public XDynArrayImp {
///       public:
///         Names() : XDynArrayImp(0, sizeof(Name), 16) {}
///         ~Names() override { DeleteAll(); }
///       protected:
///         void CopyConstructElement(const void* source, void* target) override {
///             new (target) Name(*static_cast<const Name*>(source));
///         }
///         ...
///     };
///
/// Elements are moved by copying their bytes, so they must not care where they lie. An insert or
/// removal copies what is behind it. Room grows by a fixed number of elements, the increment, so
/// filling a large array element by element reallocates it often: set a larger increment first, or
/// the capacity. A removal fits the room to what is left, which is one more resize. XHandleArray
/// keeps raw records in a handle instead and shrinks less eagerly.
///
/// Indexes count from 0 and aren't tested. Results of type `int` are 1 on success and 0 on failure.
/// Failure is a want of memory, or more than 2147483647 bytes or elements, and a failed insert
/// leaves the array as it was. No element handed in may lie in the array's own block. There is no
/// lock between threads: an array that they share needs the caller's.
class VELDT20_API XDynArrayImp {
  public:
    /// What a walk calls: `index` is the element at hand, `next` the index that the walk goes to
    /// afterwards, which may be changed, `data` the caller's, `array` the XDynArrayImp.
    using FindProc = int (*)(std::int32_t index, std::int32_t& next, void* data, void* array);

    /// An empty array with room for `initialSize` elements of `elementSize` bytes. `increment` must
    /// be above 0 by the time that elements come. Initialize tells whether there was memory; an
    /// array that is short of its initial room only grows later.
    XDynArrayImp(std::int32_t initialSize, std::int32_t elementSize, std::int32_t increment);
    /// Frees the block. The elements are not destroyed, for by now nobody knows how: a derived
    /// class calls DeleteAll in its own destructor.
    virtual ~XDynArrayImp();

  protected:
    /// Makes a copy of the caller's element at `source` in the raw memory at `target`.
    virtual void CopyConstructElement(const void* source, void* target) = 0;
    /// Makes `count` default elements in the raw memory at `target`.
    virtual void ConstructElements(std::int32_t count, void* target) = 0;
    /// Ends the life of an element.
    virtual void DestructElement(void* element) = 0;
    /// Assigns the caller's element at `source` to the live one at `target`.
    virtual void AssignElement(void* target, const void* source) = 0;

  public:
    /// Shallow: from here on both arrays name one block. Only one may go on to use it, and only one
    /// may be destroyed. What the target of an assignment held before is forgotten, not freed.
    XDynArrayImp(const XDynArrayImp&) = default;
    XDynArrayImp& operator=(const XDynArrayImp&) = default;

    /// 1 if construction got a block, else 0.
    int Initialize();
    /// How many elements there are.
    std::int32_t GetNumElements() const;
    /// 1 or 0.
    int IsEmpty() const;

    /// With an increment below 1 the array has room for just its elements.
    void SetIncrementSize(std::int32_t increment);
    /// Makes room for at least `capacity` elements; never shrinks.
    int SetCapacity(std::int32_t capacity);
    /// Leaves the array as it is: what SetCapacity does with the number of elements.
    void Compact();

    /// Pins the block and gives the address of element 0, null without a block. Locks nest. The
    /// address is good until the matching Unlock, and until anything resizes the array.
    unsigned char* Lock() const;
    /// Takes back one Lock.
    void Unlock() const;
    /// Where the element lies when Lock gave `base`.
    unsigned char* GetAt(unsigned char* base, std::int32_t index) const;

    /// Puts a copy of the caller's element behind the last one, or before the first.
    int Append(const void* element);
    int Prepend(const void* element);
    /// Puts a copy of the caller's element at `index`, 0 to the number of elements.
    int Insert(const void* element, std::int32_t index);
    /// Puts `count` default elements at `index`.
    int InsertBlockElements(std::int32_t index, std::int32_t count);
    /// Assigns the caller's element to the one at `index`.
    void Replace(const void* element, std::int32_t index);

    /// Destroys and removes the elements `first` to `last`, the last one first. The elements are
    /// gone also where the result is 0, which says that the block could not be fitted to what is
    /// left.
    int Delete(std::int32_t first, std::int32_t last);
    /// The same with the one element at `index`.
    int Delete(std::int32_t index);
    /// Destroys and removes every element.
    void DeleteAll();
    /// Takes an element out without destroying it: its bytes are the caller's to have copied.
    void Remove(std::int32_t index);
    /// Forgets all elements without destroying them; the block stays as large as it is.
    void RemoveAll();

    /// Calls `proc` from `start` on. Gives the first index for which it answers other than 0, or -1
    /// once the walk leaves the array. The block isn't locked.
    std::int32_t Find(FindProc proc, std::int32_t start, void* data) const;
    /// Calls `proc` from `start` on. Gives 0 as soon as it answers 0, or 1 once the walk leaves the
    /// array. The block isn't locked.
    int ForEachDo(FindProc proc, std::int32_t start, void* data) const;

  private:
    std::int32_t CalcArraySize(std::int32_t count) const;
    int ReAlloc(std::int32_t capacity, std::int64_t bytes);
    int PrepareArray(std::int32_t index, std::int32_t count);
    void MoveBlock(std::int32_t from, std::int32_t to, std::int32_t count);
    std::int64_t BytesOf(std::int32_t count) const;
    int CloseGap(std::int32_t first, std::int32_t last);

    std::int32_t initialSize_;
    std::int32_t increment_;
    std::int32_t elementSize_;
    std::int32_t count_;
    std::int32_t capacity_;
    void* block_;
};
