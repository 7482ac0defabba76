// Owners, locks and a memory resource over the instance's pointers and handles. None may outlive
// the instance: XMemExitInstance ends every block.
#pragma once

#include <veldt20/memory.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <memory_resource>
#include <new>

/// Disposes what _XNewPtr gave.
struct XPtrDeleter {
    /// Disposes `p`, which is a live pointer.
    void operator()(char* p) const noexcept { XDisposePtr(p); }
};
/// Disposes what _XNewHandle gave, locked or not.
struct XHandleDeleter {
    /// What the owner holds is the handle itself.
    using pointer = char**;
    /// Disposes `h`, which is a live handle.
    void operator()(char** h) const noexcept { XDisposeHandle(h); }
};

///     XOwnedPtr bytes(_XNewPtr(80));
using XOwnedPtr = std::unique_ptr<char[], XPtrDeleter>;
///     XOwnedHandle line(_XNewHandle(80));
///     if (line) std::memset(*line, ' ', 80);    // *line is the block, for the moment
using XOwnedHandle = std::unique_ptr<char*, XHandleDeleter>;

/// Locks a handle for a scope, and then gives it the lock count that it had before. XHLock and
/// XHUnlock alone don't nest: one XHUnlock takes all locks off. The locks of a handle end in the
/// reverse order of their beginning, and the handle isn't disposed meanwhile.
class XHandleLock {
  public:
    /// Adds a lock to `h`, which must be a live handle.
    explicit XHandleLock(char** h) noexcept : handle_(h), state_(XHGetState(h)) {
        // The highest state stands for any higher count as well, and such a block stays put anyway.
        if (state_ != kHighestState) XHLock(handle_);
    }
    ~XHandleLock() {
        if (state_ != kHighestState) XHSetState(handle_, state_);
    }
    XHandleLock(const XHandleLock&) = delete;
    XHandleLock& operator=(const XHandleLock&) = delete;

    /// The block, which stays where it is until the lock ends or the handle is resized.
    char* Get() const noexcept { return *handle_; }

  private:
    static constexpr char kHighestState = 127;

    char** handle_;
    char state_;
};

/// The instance's pointers for the containers of std::pmr. Blocks have any alignment that is asked
/// for; beyond a pointer's width it costs up to that many bytes more a block. Throws std::bad_alloc
/// when memory runs out. All objects of the class are equal. It has no lock, as the memory calls.
class XMemoryResource : public std::pmr::memory_resource {
  protected:
    /// A new pointer at the alignment asked for.
    void* do_allocate(std::size_t bytes, std::size_t alignment) override {
        if (alignment <= kNatural) return NewPtr(bytes, 0);
        // Room to move up to the next boundary, and below that for the block's own address.
        char* block = NewPtr(bytes, alignment);
        char* aligned = block + (alignment - reinterpret_cast<std::uintptr_t>(block) % alignment);
        std::memcpy(aligned - sizeof block, &block, sizeof block);
        return aligned;
    }

    /// Disposes what do_allocate gave for the same alignment.
    void do_deallocate(void* p, std::size_t, std::size_t alignment) override {
        char* block = static_cast<char*>(p);
        if (alignment > kNatural) std::memcpy(&block, block - sizeof block, sizeof block);
        XDisposePtr(block);
    }

    /// True for every object of this class.
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
        return dynamic_cast<const XMemoryResource*>(&other) != nullptr;
    }

  private:
    /// What every pointer is aligned to.
    static constexpr std::size_t kNatural = sizeof(void*);
    static constexpr std::size_t kLargest = 0xFFFFFFFD;

    static char* NewPtr(std::size_t bytes, std::size_t extra) {
        if (extra > kLargest || bytes > kLargest - extra) throw std::bad_alloc();
        char* block = _XNewPtr(static_cast<std::int32_t>(bytes + extra));
        if (block == nullptr) throw std::bad_alloc();
        return block;
    }
};

/// The resource, for all who need one.
inline std::pmr::memory_resource* XGetMemoryResource() noexcept {
    static XMemoryResource resource;
    return &resource;
}
