// The owner of one block of the standard library's heap.
#include <veldt20/allocator.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

/// What is asked of the standard library, for which 0 bytes may or may not be a block.
std::size_t Requested(unsigned int size) {
    constexpr unsigned int kLeastBlock = 4;
    return std::max(size, kLeastBlock);
}

}  // namespace

XAllocator::XAllocator() : size_(0), block_(nullptr) {}

XAllocator::~XAllocator() {
    Free();
}

XAllocator& XAllocator::operator=(const XAllocator& other) = default;

int XAllocator::Allocate(unsigned int size) {
    block_ = std::malloc(Requested(size));
    if (block_ == nullptr) {
        return 0;
    }
    size_ = size;
    return 1;
}

int XAllocator::AllocateClear(unsigned int size) {
    if (Allocate(size) == 0) {
        return 0;
    }
    std::memset(block_, 0, size);
    return 1;
}

int XAllocator::Reallocate(unsigned int size) {
    void* block = std::realloc(block_, Requested(size));
    if (block == nullptr) {
        return 0;
    }
    block_ = block;
    size_ = size;
    return 1;
}

int XAllocator::ReallocateClear(unsigned int size) {
    const unsigned int former = block_ != nullptr ? size_ : 0;
    if (Reallocate(size) == 0) {
        return 0;
    }
    if (size > former) {
        std::memset(static_cast<char*>(block_) + former, 0, size - former);
    }
    return 1;
}

void XAllocator::Free() {
    if (block_ != nullptr) {
        std::free(block_);
        block_ = nullptr;
    }
}

void XAllocator::Empty() {
    size_ = 0;
    block_ = nullptr;
}

void XAllocator::Attach(XAllocator& other) {
    if (&other == this) {
        return;
    }
    // Assignment may have given both the same block, which must survive its transfer.
    if (block_ != other.block_) {
        Free();
    }
    *this = other;
    other.Empty();
}

void XAllocator::Detach(XAllocator& target) {
    target.Attach(*this);
}

void* XAllocator::operator*() const {
    return block_;
}

unsigned int XAllocator::GetSize() const {
    return size_;
}

int XAllocator::Allocated() const {
    return block_ != nullptr;
}

void XAllocator::Lock() const {}

void XAllocator::Unlock() const {}

XAllocatorLocker::XAllocatorLocker(XAllocator& allocator) : allocator_(&allocator) {}

XAllocatorLocker::~XAllocatorLocker() {}
