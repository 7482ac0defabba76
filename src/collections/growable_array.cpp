#include <veldt20/collections_growable_array.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/platform.h"

using namespace veldt::platform;

namespace {

// A block of no bytes would be a discarded one, which has no address.
constexpr std::int64_t kSmallestBlock = 2;
constexpr std::int64_t kMostBytes = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMostElements = std::numeric_limits<std::int32_t>::max();

/// Holds the block where it is while elements are being worked on.
class PinnedBlock {
  public:
    explicit PinnedBlock(const XDynArrayImp& array) : array_(array), base_(array.Lock()) {}
    ~PinnedBlock() { array_.Unlock(); }
    PinnedBlock(const PinnedBlock&) = delete;
    PinnedBlock& operator=(const PinnedBlock&) = delete;

    unsigned char* Element(std::int32_t index) const { return array_.GetAt(base_, index); }

  private:
    const XDynArrayImp& array_;
    unsigned char* base_;
};

}  // namespace

XDynArrayImp::XDynArrayImp(std::int32_t initialSize, std::int32_t elementSize,
                           std::int32_t increment)
    : initialSize_(initialSize),
      increment_(increment),
      elementSize_(elementSize),
      count_(0),
      capacity_(0),
      block_(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT | GMEM_SHARE, kSmallestBlock)) {
    SetCapacity(initialSize);
}

XDynArrayImp::~XDynArrayImp() {
    if (block_ != nullptr) {
        GlobalFree(block_);
    }
}

int XDynArrayImp::Initialize() {
    return block_ != nullptr;
}

std::int32_t XDynArrayImp::GetNumElements() const {
    return count_;
}

int XDynArrayImp::IsEmpty() const {
    return count_ == 0;
}

void XDynArrayImp::SetIncrementSize(std::int32_t increment) {
    increment_ = increment;
}

int XDynArrayImp::SetCapacity(std::int32_t capacity) {
    return capacity <= capacity_ ? 1 : ReAlloc(capacity, BytesOf(capacity));
}

void XDynArrayImp::Compact() {
    SetCapacity(count_);
}

unsigned char* XDynArrayImp::Lock() const {
    return static_cast<unsigned char*>(GlobalLock(block_));
}

void XDynArrayImp::Unlock() const {
    GlobalUnlock(block_);
}

unsigned char* XDynArrayImp::GetAt(unsigned char* base, std::int32_t index) const {
    return base + static_cast<std::ptrdiff_t>(BytesOf(index));
}

int XDynArrayImp::Append(const void* element) {
    return Insert(element, count_);
}

int XDynArrayImp::Prepend(const void* element) {
    return Insert(element, 0);
}

int XDynArrayImp::Insert(const void* element, std::int32_t index) {
    if (!PrepareArray(index, 1)) {
        return 0;
    }
    const PinnedBlock pinned(*this);
    CopyConstructElement(element, pinned.Element(index));
    ++count_;
    return 1;
}

int XDynArrayImp::InsertBlockElements(std::int32_t index, std::int32_t count) {
    if (!PrepareArray(index, count)) {
        return 0;
    }
    const PinnedBlock pinned(*this);
    ConstructElements(count, pinned.Element(index));
    count_ += count;
    return 1;
}

void XDynArrayImp::Replace(const void* element, std::int32_t index) {
    const PinnedBlock pinned(*this);
    AssignElement(pinned.Element(index), element);
}

int XDynArrayImp::Delete(std::int32_t first, std::int32_t last) {
    {
        const PinnedBlock pinned(*this);
        for (std::int32_t index = last; index >= first; --index) {
            DestructElement(pinned.Element(index));
        }
    }
    return CloseGap(first, last);
}

int XDynArrayImp::Delete(std::int32_t index) {
    return Delete(index, index);
}

void XDynArrayImp::DeleteAll() {
    if (count_ > 0) {
        Delete(0, count_ - 1);
    }
}

void XDynArrayImp::Remove(std::int32_t index) {
    CloseGap(index, index);
}

void XDynArrayImp::RemoveAll() {
    count_ = 0;
}

std::int32_t XDynArrayImp::Find(FindProc proc, std::int32_t start, void* data) const {
    auto* array = const_cast<XDynArrayImp*>(this);
    std::int32_t index = start;
    while (index >= 0 && index < count_) {
        std::int32_t next = index + 1;
        if (proc(index, next, data, array)) {
            return index;
        }
        index = next;
    }
    return -1;
}

int XDynArrayImp::ForEachDo(FindProc proc, std::int32_t start, void* data) const {
    auto* array = const_cast<XDynArrayImp*>(this);
    std::int32_t index = start;
    while (index >= 0 && index < count_) {
        std::int32_t next = index + 1;
        if (!proc(index, next, data, array)) {
            return 0;
        }
        index = next;
    }
    return 1;
}

// The room that the policy wants for `count` elements, at most what an index can count.
std::int32_t XDynArrayImp::CalcArraySize(std::int32_t count) const {
    if (count == 0) {
        return std::max(initialSize_, 0);
    }
    if (increment_ < 1) {
        return count;
    }
    const std::int64_t steps = (std::int64_t{count} + increment_ - 1) / increment_;
    return static_cast<std::int32_t>(std::min(steps * increment_, kMostElements));
}

int XDynArrayImp::ReAlloc(std::int32_t capacity, std::int64_t bytes) {
    if (bytes < 0 || bytes > kMostBytes) {
        return 0;
    }
    void* resized = GlobalReAlloc(block_, static_cast<SIZE_T>(bytes == 0 ? kSmallestBlock : bytes),
                                  GMEM_MOVEABLE | GMEM_SHARE);
    if (resized == nullptr) {
        return 0;
    }
    block_ = resized;
    capacity_ = capacity;
    return 1;
}

// Opens a gap at `index`; the elements in it aren't alive yet and don't count yet.
int XDynArrayImp::PrepareArray(std::int32_t index, std::int32_t count) {
    const std::int64_t needed = std::int64_t{count_} + count;
    if (needed > kMostElements) {
        return 0;
    }
    if (needed > capacity_ && !SetCapacity(CalcArraySize(static_cast<std::int32_t>(needed)))) {
        return 0;
    }
    if (index < count_) {
        MoveBlock(index, index + count, count_ - index);
    }
    return 1;
}

void XDynArrayImp::MoveBlock(std::int32_t from, std::int32_t to, std::int32_t count) {
    const PinnedBlock pinned(*this);
    std::memmove(pinned.Element(to), pinned.Element(from),
                 static_cast<std::size_t>(BytesOf(count)));
}

std::int64_t XDynArrayImp::BytesOf(std::int32_t count) const {
    return std::int64_t{elementSize_} * count;
}

// Moves what is behind the elements `first` to `last` down over them and fits the room.
int XDynArrayImp::CloseGap(std::int32_t first, std::int32_t last) {
    if (last < count_ - 1) {
        MoveBlock(last + 1, first, count_ - last - 1);
    }
    count_ -= last - first + 1;
    const std::int32_t fitting = CalcArraySize(count_);
    return capacity_ == fitting ? 1 : ReAlloc(fitting, BytesOf(fitting));
}
