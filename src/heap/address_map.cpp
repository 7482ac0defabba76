#include "heap/address_map.h"

#include "heap/block_life.h"
#include "heap/regions.h"
#include "platform/platform.h"

namespace veldt::heap {

using namespace platform;

namespace {

/// A 32-bit machine has one zone, which stands in the module's own zeroed data.
AddressZone* NewZone() {
    if constexpr (kZones == 1) {
        static constinit AddressZone whole{};
        return &whole;
    } else {
        constexpr SIZE_T size = RoundUp<SIZE_T>(sizeof(AddressZone), kRegionUnit);
        void* memory = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
        if (memory != nullptr &&
            VirtualAlloc(memory, size, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
            VirtualFree(memory, 0, MEM_RELEASE);
            return nullptr;
        }
        if (memory != nullptr) {
            RegionBegan(static_cast<char*>(memory), size);
            std::memset(memory, 0, offsetof(AddressZone, notes));
        }
        return static_cast<AddressZone*>(memory);
    }
}

void DropZone(AddressZone* zone) {
    if constexpr (kZones > 1) {
        RegionFree(zone);
    }
}

}  // namespace

constinit std::atomic<AddressZone*> addressZones[kZones]{};

bool AddZone(std::uint64_t number) {
    AddressZone* made = number < kZones ? NewZone() : nullptr;
    if (made == nullptr) {
        return false;
    }
    AddressZone* expected = nullptr;
    if (!addressZones[number].compare_exchange_strong(expected, made) && expected != made) {
        DropZone(made);
    }
    return true;
}

void DropZones() {
    for (std::atomic<AddressZone*>& place : addressZones) {
        if (AddressZone* zone = place.load(); zone != nullptr) {
            place.store(nullptr);
            DropZone(zone);
        }
    }
}

}  // namespace veldt::heap
