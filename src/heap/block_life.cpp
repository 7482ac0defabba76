#include "heap/block_life.h"

#include "heap/pools.h"
#include "heap/regions.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

#if VELDT20_STRESS || VELDT20_ANNOTATE

namespace {

/// Bytes up to the data of whatever follows: what the sanitizer, which thinks in whole words, can
/// close behind the last byte in use.
std::uint32_t Extent(char* data) {
    const bool tiled = (KindOf(PageBase(data)) & ~unsigned{kKindRelocatable}) == kKindVariable;
    return tiled ? UsedSize(HeaderOfData(data)) : UsableSize(data);
}

void Fill(char* data, std::size_t size, int byte) {
    if (kStress) {
        std::memset(data, byte, size);
    }
}

/// Gives the program a block from an offset on. What stands behind it was written by the heap.
void OpenFrom(char* data, std::uint32_t from) {
    SetAccess(data + from, Extent(data) - from, Access::kWritten);
    SetAccess(data + from, UsableSize(data) - from, Access::kFresh);
}

/// Ends the program's use of a block.
void Close(char* data, int fill) {
    SetAccess(data, UsableSize(data), Access::kWritten);
    Fill(data, UsableSize(data), fill);
    SetAccess(data, Extent(data), Access::kNone);
}

/// Copies up or down over memory in any state.
VELDT20_EXEMPT void CopyRaw(char* to, const char* from, std::size_t size) {
    const Exempt exempt;
    auto* target = static_cast<volatile char*>(to);
    const auto* source = static_cast<const volatile char*>(from);
    for (std::size_t i = 0; i < size; ++i) {
        target[i] = source[i];
    }
}

}  // namespace

void RegionBegan(char* from, std::size_t size) {
    SetAccess(from, size, Access::kWritten);
}

void RegionEnds(char* base) {
    SetAccess(base, RegionSize(base), Access::kNone);
}

void AddressesGo(char* from, std::size_t size) {
    SetAccess(from, size, Access::kWritten);
}

void PageBegan(HeapPage* page, std::uint32_t committed) {
    if (KindOf(page) != kKindLarge) {
        SetAccess(reinterpret_cast<char*>(page) + kPageHeader, committed - kPageHeader,
                  Access::kNone);
    }
}

void BlockBorn(char* data, std::uint32_t flags) {
    if ((flags & AllocZero) != 0 && KindOf(PageBase(data)) == kKindLarge) {
        return;  // the region came zeroed
    }
    OpenFrom(data, 0);
    Fill(data, UsableSize(data), kFreshFill);
    OpenFrom(data, 0);
}

void BlockDies(char* data) {
    Close(data, kFreedFill);
}

void BlockLeft(char* data) {
    Close(data, kMovedFill);
}

void BlockHolds(char* data, std::uint32_t logical) {
    const std::size_t held = AccessibleSize(data, Extent(data));
    if (logical > held) {
        SetAccess(data + held, logical - held, Access::kFresh);
    }
    SetAccess(data + logical, Extent(data) - logical, Access::kNone);
}

HeldBytes BlockOpens(char* data) {
    const HeldBytes held = AccessibleSize(data, UsableSize(data));
    SetAccess(data + held, Extent(data) - held, Access::kWritten);
    return held;
}

void BlockCloses(char* data, HeldBytes held) {
    if (held < UsableSize(data)) {
        SetAccess(data + held, Extent(data) - held, Access::kNone);
    }
}

void BlockResized(char* data, std::uint32_t former) {
    const std::uint32_t usable = UsableSize(data);
    if (usable < former) {
        SetAccess(data + Extent(data), former - usable, Access::kNone);
    } else {
        OpenFrom(data, former);
    }
}

void MoveBlock(char* to, char* from, std::uint32_t size) {
    const std::size_t held = AccessibleSize(from, size);
    std::memcpy(to, from, held);
    if (held < size) {
        SetAccess(to + held, Extent(to) - held, Access::kNone);
    }
    BlockLeft(from);
}

void SlideBlocks(char* to, char* from, std::size_t size) {
    CopyRaw(to, from, size);
    const std::size_t distance = static_cast<std::size_t>(from - to);
    // Upwards, so that what is told of a block never reaches where a later one stood.
    for (char* block = to; block != to + size; block = BlockAfter(block)) {
        char* data = DataOf(block);
        const std::size_t held = AccessibleSize(data + distance, DataSize(block));
        SetAccess(data, held, Access::kWritten);
        SetAccess(data + held, UsedSize(block) - held, Access::kNone);
    }
    char* vacated = DataOf(to + size);
    SetAccess(vacated, distance, Access::kWritten);
    Fill(vacated, distance - kHeaderSize, kMovedFill);
    SetAccess(vacated, distance, Access::kNone);
}

#endif

}  // namespace veldt::heap
