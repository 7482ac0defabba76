#include "support/refusing_new.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

long requestsUntilRefusal = 0;  // 0: none is refused
bool refused = false;
std::atomic<long> liveBlocks = 0;  // threads may end, and free, at any time

void* Request(std::size_t size) {
    if (requestsUntilRefusal > 0 && --requestsUntilRefusal == 0) {
        refused = true;
        return nullptr;
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    liveBlocks += block != nullptr;
    return block;
}

void GiveBack(void* block) {
    liveBlocks -= block != nullptr;
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    void* block = Request(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Request(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Request(size);
}
void operator delete(void* block) noexcept {
    GiveBack(block);
}
void operator delete[](void* block) noexcept {
    GiveBack(block);
}
void operator delete(void* block, std::size_t) noexcept {
    GiveBack(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    GiveBack(block);
}

namespace veldt::tests {

RefusedNew::RefusedNew(long nth) {
    requestsUntilRefusal = nth;
    refused = false;
}

RefusedNew::~RefusedNew() {
    requestsUntilRefusal = 0;
}

bool RefusedNew::Happened() const {
    return refused;
}

long LiveBlocks() {
    return liveBlocks;
}

}  // namespace veldt::tests
