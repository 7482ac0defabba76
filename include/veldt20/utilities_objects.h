// Reference counts, counters, slots filled on demand and small identifiers.
//
// Nothing here allocates, fails or locks. Every change is a plain read, change and write: an object
// that threads share needs the caller's lock. Counts wrap at 32 bits.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// A base class whose objects end when their last owner leaves. A new object has no owner: whoever
/// makes it with `new` calls AddReference first.
///
/// The destructor is protected, so that nothing but RemoveReference ends an object. The class only
/// keeps the mark of an unshareable object; heeding it is for the derived class and its users.
class VELDT20_API XRCObject {
  public:
    /// Adds one owner.
    void AddReference();
    /// Takes one owner away. From 1 to 0 it deletes the object; on an object that has no owner it
    /// gives a count of -1 and deletes nothing.
    void RemoveReference();
    /// 1 until MarkUnshareable, then 0.
    int IsShareable() const;
    /// 1 with two owners or more, else 0.
    int IsShared() const;
    /// For good. Counting goes on as before.
    void MarkUnshareable();

  protected:
    XRCObject();
    /// A copy is a new object: no owners yet, and shareable.
    XRCObject(const XRCObject&);
    /// Changes nothing: owners and mark belong to the object, not to its value.
    XRCObject& operator=(const XRCObject&);
    virtual ~XRCObject();

  private:
    std::int32_t refCount_;
    std::int32_t shareable_;
};

/// Counts up and down from 0. Copies count on by themselves.
class VELDT20_API XCounter {
  public:
    /// Begins at 0.
    XCounter();

    /// Both give the new value.
    std::int32_t Increment();
    std::int32_t Decrement();

  private:
    std::int32_t count_;
};

/// A slot for one pointer that is filled when it is first wanted. What it points to isn't owned: it
/// is neither freed here nor told apart from what SetData put in. A copy names the same thing.
class VELDT20_API XRTObject {
  public:
    XRTObject();

    /// What the slot holds. An empty slot is filled with what `create` gives first; if that is
    /// null, the next call asks again.
    void* GetData(void* (*create)());
    /// What the slot holds, null if nothing; never calls anything.
    void* GetDataNA();
    /// Stores `data`, and null empties the slot. What was there is forgotten.
    void SetData(void* data);

  private:
    void* data_;
};

/// Hands out up to 32 identifiers from a base on, the lowest free one first. A copy has the same
/// base and the same ones taken, and goes on by itself.
class VELDT20_API XIDSet {
  public:
    /// Identifiers `base` to `base` + 31, all free; beyond 32 bits they wrap.
    explicit XIDSet(std::int32_t base);

    /// Takes the lowest free identifier. Gives 1, or 0 with all 32 taken, and then `id` stays as
    /// it was.
    int GetNextID(std::int32_t& id);
    /// Makes `id` free; a free one stays free. One outside the range isn't refused: it frees the
    /// identifier that lies a multiple of 32 away.
    void ReleaseID(std::int32_t id);

  protected:
    /// These take an index, the distance from the base, modulo 32. IsIDUsed gives 0 or the bit
    /// itself, which for index 31 is negative.
    int IsIDUsed(unsigned char index);
    void SetIDUsed(unsigned char index);
    void ClearIDUsed(unsigned char index);

  private:
    std::int32_t base_;
    std::uint32_t used_;
};
