// Blocks that stand beside the heap: the standard library's, with an owner, and the operating
// system's global memory blocks. Neither touches what XMemError tells.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// Owns one block of the standard library's heap, or none.
///
///     XAllocator buffer;
///     if (buffer.AllocateClear(80)) fill(static_cast<char*>(*buffer), buffer.GetSize());
///
/// Every `int` is 1 or 0; nothing is thrown.
class VELDT20_API XAllocator {
  public:
    /// Empty: size 0, no block.
    XAllocator();
    /// Free.
    ~XAllocator();
    /// A copy would have to be deep or leave two owners; assignment says which it is.
    XAllocator(const XAllocator&) = delete;
    /// Shallow: from here on both objects name one block, and only one of them may go on to free
    /// it. What this object held before is forgotten, so Free first. Attach hands a block over.
    XAllocator& operator=(const XAllocator& other);

    /// A new block of `size` bytes, contents undefined; there is one for size 0 too. What the
    /// object held is forgotten, so Free first. On failure it holds no block, and GetSize tells the
    /// former size.
    int Allocate(unsigned int size);
    /// The same with every byte zero.
    int AllocateClear(unsigned int size);
    /// Resizes the block, which may move, or makes one if there is none. New bytes are undefined.
    /// On failure block and size are as they were.
    int Reallocate(unsigned int size);
    /// The same, and new bytes are zero: those from the former size on, all if there was no block.
    int ReallocateClear(unsigned int size);
    /// Frees the block, if there is one. GetSize goes on telling its size.
    void Free();

    /// Frees what this object holds and takes over block and size of `other`, which is empty then.
    /// A block that both name already is kept, and has one owner again; to itself, nothing happens.
    void Attach(XAllocator& other);
    /// target.Attach(*this).
    void Detach(XAllocator& target);

    /// The block, or null. Valid until the next call that resizes or frees it.
    void* operator*() const;
    /// The size last asked for, in bytes; whether there is a block is Allocated's to tell.
    unsigned int GetSize() const;
    /// Whether there is a block.
    int Allocated() const;

    /// These do nothing: the block never moves by itself.
    void Lock() const;
    void Unlock() const;

  protected:
    /// Forgets block and size, and frees nothing.
    void Empty();

  private:
    std::uint32_t size_;
    void* block_;
};

/// Has the form of a scoped lock on an allocator, and records it; there is nothing to lock.
class VELDT20_API XAllocatorLocker {
  public:
    /// Records `allocator`, and does nothing with it.
    explicit XAllocatorLocker(XAllocator& allocator);
    ~XAllocatorLocker();
    XAllocatorLocker(const XAllocatorLocker&) = delete;
    XAllocatorLocker& operator=(const XAllocatorLocker&) = delete;

  private:
    [[maybe_unused]] XAllocator* allocator_;
};

/// A new global memory block of at least `size` bytes, zeroed; size 0 is taken as 2. What comes
/// back is its name, not its address: XGlobalLock gives that. The caller ends it with XGlobalFree.
/// Null if there is no memory.
VELDT20_API void* XGlobalAlloc(std::uint32_t size);
/// Ends the block. Null is let be.
VELDT20_API void XGlobalFree(void* block);
/// The block's address, good until the matching XGlobalUnlock. Null for what is no block.
VELDT20_API void* XGlobalLock(void* block);
/// Takes back one XGlobalLock. The address may be out of date from here on.
VELDT20_API void XGlobalUnlock(void* block);
/// The block's size in bytes, perhaps above what was asked for; 0 for what is no block.
VELDT20_API std::uint32_t XGlobalSize(void* block);
/// Resizes the block; size 0 is taken as 2. New bytes are undefined. Gives the block's new name,
/// which may be the old one; or null, and then the old name and its block still stand.
VELDT20_API void* XGlobalReAlloc(void* block, std::uint32_t size);
