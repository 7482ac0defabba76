// The array of plain records in one handle.
#include <veldt20/bytes.h>
#include <veldt20/collections_handle_array.h>

#include "memory/memory_calls.h"

using namespace veldt::memory;

namespace {

/// Of two numbers that aren't negative: as unsigned ones they don't overflow.
std::uint32_t Sum(std::int32_t a, std::int32_t b) {
    return static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b);
}

}  // namespace

XHandleArray::XHandleArray(int slack, int elementSize)
    : slack_(slack),
      elementSize_(elementSize),
      lockDepth_(0),
      count_(0),
      capacity_(0),
      handle_(_XNewHandle(0)) {}

XHandleArray::~XHandleArray() {
    if (handle_ != nullptr) {
        XDisposeHandle(handle_);
    }
}

int XHandleArray::IHandleArray() {
    return handle_ != nullptr;
}

char** XHandleArray::GetArrayHandle() const {
    return handle_;
}

char* XHandleArray::GetArrayPtr() const {
    return *handle_;
}

std::int32_t XHandleArray::GetNumElements() const {
    return count_;
}

int XHandleArray::ReAlloc(std::int32_t capacity) {
    const std::int64_t size = std::int64_t{elementSize_} * capacity;
    if (size > kLargestSize) {
        SetMemError(kMemFull);
        return 0;
    }
    return _XSetHandleSize(handle_, static_cast<std::int32_t>(size));
}

void XHandleArray::Move(std::int32_t from, std::int32_t to, std::int32_t count) {
    const std::ptrdiff_t size = elementSize_;
    XBlockMove(*handle_ + from * size, *handle_ + to * size,
               static_cast<unsigned int>(count * size));
}

int XHandleArray::GrowTable(std::uint32_t needed) {
    if (needed <= static_cast<std::uint32_t>(capacity_)) {
        return 1;
    }
    const std::int64_t capacity = std::int64_t{needed} + slack_;
    if (capacity > INT32_MAX) {
        SetMemError(kMemFull);
        return 0;
    }
    const auto records = static_cast<std::int32_t>(capacity);
    if (ReAlloc(records) == 0) {
        return 0;
    }
    capacity_ = records;
    return 1;
}

void XHandleArray::ShrinkTable(std::int32_t needed) {
    if (capacity_ - needed > slack_) {
        capacity_ = needed + slack_;
        // If it can't be, the handle has more room than is told here.
        ReAlloc(capacity_);
    }
}

int XHandleArray::Shift(std::int32_t index, std::int32_t delta) {
    if (delta == 0) {
        return 1;
    }
    if (delta > 0 && GrowTable(Sum(count_, delta)) == 0) {
        return 0;
    }
    const std::int32_t tail = count_ - index;
    if (tail > 0) {
        Move(index, index + delta, tail);
    }
    if (delta < 0) {
        ShrinkTable(count_ + delta);
    }
    count_ += delta;
    return 1;
}

int XHandleArray::Grow(std::int32_t count) {
    return count == 0 ? 1 : Shift(count_, count);
}

int XHandleArray::Preflight(std::int32_t count) {
    return count <= 0 ? 1 : GrowTable(Sum(count_, count));
}

void XHandleArray::DeleteAll() {
    if (count_ != 0) {
        ShrinkTable(0);
        count_ = 0;
    }
}

char* XHandleArray::Lock() const {
    if (lockDepth_++ == 0) {
        XHLock(handle_);
    }
    return *handle_;
}

void XHandleArray::Unlock() const {
    if (--lockDepth_ == 0) {
        XHUnlock(handle_);
    }
}
