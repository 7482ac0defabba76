#include <veldt20/utilities_objects.h>

#include <bit>

namespace {

constexpr std::uint32_t kAllUsed = 0xFFFFFFFF;
constexpr std::uint32_t kMinusOne = 0xFFFFFFFF;

constexpr std::uint32_t IdBit(unsigned int index) {
    return std::uint32_t{1} << (index & 31);
}

// The interface's counts wrap; signed arithmetic of the language doesn't.
constexpr std::int32_t WrappingSum(std::int32_t a, std::uint32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + b);
}

}  // namespace

XRCObject::XRCObject() : refCount_(0), shareable_(1) {}

XRCObject::XRCObject(const XRCObject&) : XRCObject() {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
XRCObject& XRCObject::operator=(const XRCObject&) {
    return *this;
}

XRCObject::~XRCObject() = default;

void XRCObject::AddReference() {
    refCount_ = WrappingSum(refCount_, 1);
}

void XRCObject::RemoveReference() {
    refCount_ = WrappingSum(refCount_, kMinusOne);
    if (refCount_ == 0) {
        delete this;
    }
}

int XRCObject::IsShareable() const {
    return shareable_;
}

int XRCObject::IsShared() const {
    return refCount_ > 1;
}

void XRCObject::MarkUnshareable() {
    shareable_ = 0;
}

XCounter::XCounter() : count_(0) {}

std::int32_t XCounter::Increment() {
    return count_ = WrappingSum(count_, 1);
}

std::int32_t XCounter::Decrement() {
    return count_ = WrappingSum(count_, kMinusOne);
}

XRTObject::XRTObject() : data_(nullptr) {}

void* XRTObject::GetData(void* (*create)()) {
    if (data_ == nullptr) {
        data_ = create();
    }
    return data_;
}

void* XRTObject::GetDataNA() {
    return data_;
}

void XRTObject::SetData(void* data) {
    data_ = data;
}

XIDSet::XIDSet(std::int32_t base) : base_(base), used_(0) {}

int XIDSet::GetNextID(std::int32_t& id) {
    if (used_ == kAllUsed) {
        return 0;
    }
    const auto index = static_cast<std::uint32_t>(std::countr_one(used_));
    used_ |= IdBit(index);
    id = WrappingSum(base_, index);
    return 1;
}

void XIDSet::ReleaseID(std::int32_t id) {
    used_ &= ~IdBit(static_cast<std::uint32_t>(id) - static_cast<std::uint32_t>(base_));
}

int XIDSet::IsIDUsed(unsigned char index) {
    return static_cast<int>(used_ & IdBit(index));
}

void XIDSet::SetIDUsed(unsigned char index) {
    used_ |= IdBit(index);
}

void XIDSet::ClearIDUsed(unsigned char index) {
    used_ &= ~IdBit(index);
}
