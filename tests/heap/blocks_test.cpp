// The three disciplines, and the pool operations that send requests to them.
#include <numeric>

#include "heap/fixed_blocks.h"
#include "heap/large_blocks.h"
#include "heap/regions.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

/// The size to ask for to get a block of `total` bytes without a trailer, in 4-byte terms.
constexpr std::uint32_t ForBlockOf(std::uint32_t total) {
    return total * kScale - kHeaderSize;
}

void Fill(char* block, std::uint32_t size) {
    std::iota(block, block + size, char{1});
}

bool Holds(const char* block, std::uint32_t size) {
    for (std::uint32_t i = 0; i < size; ++i) {
        if (block[i] != static_cast<char>(i + 1)) return false;
    }
    return true;
}

bool IsZero(const char* block, std::uint32_t from, std::uint32_t to) {
    return std::all_of(block + from, block + to, [](char byte) { return byte == 0; });
}

TEST(VariableBlocks, FreeBlockIsUsedWholeIfTheRestIsTooSmall) {
    struct Row {
        std::uint32_t freeBlock, need, given;
    };
    // The threshold is 23: a rest of 20 is kept, one of 24 is split off.
    for (const Row row : {Row{40, 20, 40}, Row{44, 20, 20}, Row{24, 24, 24}}) {
        TestPool pool;
        VariableAlloc(pool, 0, ForBlockOf(16));
        char* block = VariableAlloc(pool, 0, ForBlockOf(row.freeBlock));
        VariableAlloc(pool, 0, ForBlockOf(16));
        PoolFree(block);
        HeapPage* page = PageBase(block);
        page->rover = HeaderOfData(block);
        char* given = VariableAlloc(pool, 0, ForBlockOf(row.need));
        EXPECT_EQ(PoolBlockSize(given), ForBlockOf(row.given));
        EXPECT_EQ(given - block, (row.freeBlock - row.given) * kScale) << "the high end";
    }
}

TEST(VariableBlocks, FreedNeighboursMerge) {
    struct Row {
        const char* before;
        std::size_t freed;  // of the blocks not free
        const char* after;
        bool roverMerges;
    };
    const Row rows[] = {
        {"l16 u24 l16", 1, "l16 f24 l16", false},
        {"l16 f20 u24 l16", 1, "l16 f44 l16", false},
        {"l16 u24 f20 l16", 1, "l16 f44 l16", true},
        {"l16 f20 u24 f28 l16", 1, "l16 f72 l16", true},
        {"l16 u24", 1, "l16 f24", false},
        {"u24 f20", 0, "f44", true},
    };
    for (const Row& row : rows) {
        TestPool pool;
        WrittenPage page(pool, row.before);
        HandleSlot* slot = page.Slot(row.freed);
        char* above = BlockAfter(HeaderOfData(slot->block));
        if (row.roverMerges) page->rover = above;
        page.Link()->freeHint = 0;
        page.Free(row.freed);
        EXPECT_EQ(page.Read(), row.after);
        EXPECT_GT(page.Link()->freeHint, 0);
        EXPECT_TRUE(!row.roverMerges || page->rover != above) << row.before;
        EXPECT_TRUE(Intact(pool)) << row.before;
    }
}

TEST(VariableBlocks, SearchGoesOnWhereItEnded) {
    TestPool pool(0);
    const auto take = [&pool](std::uint32_t size, std::uint32_t flags = AllocLowEnd) {
        return VariableAlloc(pool, flags | AllocNoNewPage | AllocNoLarge, ForBlockOf(size));
    };
    PoolPreallocate(pool, 1, 4);
    std::vector<char*> blocks;
    for (const std::uint32_t size : {40, 16, 40, 16, 40, 16}) blocks.push_back(take(size));
    while (take(64) != nullptr || take(16) != nullptr) {
    }
    HeapPage* page = PageBase(blocks[0]);
    EXPECT_EQ(page->rover, page->sentinel) << "the last free block is gone";
    EXPECT_EQ(page->link->freeHint, 0);
    for (const std::size_t i : {0U, 2U, 4U}) PoolFree(blocks[i]);

    EXPECT_EQ(take(40), blocks[4]) << "the newest stands next to the root";
    EXPECT_EQ(page->rover, HeaderOfData(blocks[2]));
    EXPECT_EQ(take(20, 0), blocks[2] + 20 * kScale) << "the high end";
    EXPECT_EQ(page->rover, HeaderOfData(blocks[0]));
    EXPECT_EQ(take(28), blocks[0]) << "a rest of 12 is kept";
    EXPECT_EQ(page->rover, page->sentinel);
    EXPECT_EQ(page->link->freeHint, 40 * kScale);
    EXPECT_EQ(take(24), nullptr);
    EXPECT_EQ(page->link->freeHint, 20 * kScale) << "what the walk has seen";
    EXPECT_EQ(take(20), blocks[2]);
}

TEST(VariableBlocks, ResizeInPlace) {
    struct Row {
        const char* before;
        std::uint32_t size;  // of the first block, afterwards
        const char* after;
        bool roverAbove;
    };
    const Row rows[] = {
        {"u40 f40 l16", 60, "u60 f20 l16", true},
        {"u40 f40 l16", 64, "u64 f16 l16", false},
        {"u40 f40 l16", 68, "u80 l16", true},
        {"u40 f40 l16", 80, "u80 l16", false},
        {"u40 f40 l16", 84, nullptr, true},
        {"u40 l16 f40", 44, nullptr, false},
        {"u40 f40", 64, "u64 f16", true},
        {"u40 f40", 72, "u80", true},
        {"u40 l16", 24, "u24 f16 l16", false},
        {"u40 l16", 28, "u40 l16", false},
        {"u40 f40 l16", 20, "u20 f60 l16", true},
        {"u40 f40 l16", 28, "u40 f40 l16", true},
        {"u40", 16, "u16 f24", false},
        {"u40 f40 l16", 40, "u40 f40 l16", false},
    };
    for (const Row& row : rows) {
        TestPool pool;
        WrittenPage page(pool, row.before);
        HandleSlot* slot = page.Slot(0);
        char* block = slot->block;
        const RaisedErrors errors;
        if (row.roverAbove) page->rover = BlockAfter(HeaderOfData(block));
        const std::uint32_t size = row.size * kScale - kHeaderSize - kTrailerSize;
        EXPECT_EQ(RelocResize(slot, size, ResizeNoMove), row.after != nullptr ? slot : nullptr);
        EXPECT_EQ(slot->block, block);
        EXPECT_TRUE(Intact(pool)) << row.before << " to " << row.size;
        EXPECT_EQ(page.Read(), row.after != nullptr ? row.after : row.before) << row.size;
    }
}

TEST(FixedBlocks, FillAPageAndGiveItBack) {
    TestPool pool;
    constexpr std::uint32_t kBlocks = FixedBlockCount(16384, 20 * kScale);
    ExpectFigure(kBlocks, 817);
    std::vector<char*> blocks;
    for (std::uint32_t i = 0; i < kBlocks; ++i) blocks.push_back(PoolAlloc(pool, 1, 0));
    HeapPage* page = PageBase(blocks[0]);
    EXPECT_EQ(blocks[0], reinterpret_cast<char*>(page) + kPageHeader);
    EXPECT_TRUE(std::is_sorted(blocks.begin(), blocks.end())) << "upwards through a fresh page";
    EXPECT_EQ(page->link->freeHint, 1) << "not yet known to be full";

    char* beyond = PoolAlloc(pool, 20 * kScale, AllocZero);
    EXPECT_TRUE(IsZero(beyond, 0, 20 * kScale));
    EXPECT_EQ(page->link->freeHint, 0);
    EXPECT_EQ(pool->pageLists[kKindFixed], PageBase(beyond)->link);
    EXPECT_EQ(pool->footprint, 4096U + 2 * 16384);

    for (const int i : {5, 3, 9}) EXPECT_EQ(PoolFree(blocks[static_cast<std::size_t>(i)]), 1);
    EXPECT_EQ(page->link->freeHint, 1);
    EXPECT_EQ(PoolFree(beyond), 1);
    EXPECT_EQ(pool->footprint, 4096U + 16384);
    for (const int i : {9, 3, 5}) {
        EXPECT_EQ(PoolAlloc(pool, 20, 0), blocks[static_cast<std::size_t>(i)])
            << "last in first out";
    }
    PageLink* link = page->link;
    for (char* block : blocks) PoolFree(block);
    EXPECT_EQ(pool->footprint, 4096U);
    EXPECT_EQ(pool->freeLinks, link);
}

TEST(FixedBlocks, FloorKeepsAnEmptyPage) {
    TestPool pool;
    char* block = PoolAlloc(pool, 7, 0);
    pool->floor = pool->footprint;
    PoolFree(block);
    EXPECT_EQ(pool->footprint, 4096U + 16384);
    EXPECT_EQ(PoolCompact(pool), 0U);
    EXPECT_EQ(PoolAlloc(pool, 7, 0), block);
    PoolFree(block);
    pool->floor = 0;
    EXPECT_EQ(PoolCompact(pool), 16384U);
}

TEST(LargeBlocks, GrowAndShrink) {
    struct Row {
        std::uint32_t from, to, flags;
        bool moves, fails;
        PageKind kind;
    };
    const std::uint32_t full = 65536 - kPageHeader;
    const Row rows[] = {
        {10000, 60000, 0, false, false, kKindLarge},
        {10000, 70000, 0, true, false, kKindLarge},
        {10000, 70000, ResizeNoMove, false, true, kKindLarge},
        {full, full + 1, 0, true, false, kKindLarge},
        {full, full + 1, ResizeNoMove, false, true, kKindLarge},
        {100000, 5000, 0, false, false, kKindLarge},
        {100000, 4097, 0, false, false, kKindLarge},
        {100000, 4096, 0, true, false, kKindVariable},
        {100000, 10, 0, true, false, kKindFixed},
        {100000, 10, ResizeNoMove, false, false, kKindLarge},
    };
    for (const Row& row : rows) {
        TestPool pool;
        RaisedErrors errors;
        char* block = PoolAlloc(pool, row.from, 0);
        Fill(block, row.from);
        char* resized = PoolResize(block, row.to, row.flags);
        EXPECT_EQ(resized == nullptr, row.fails) << row.from << " to " << row.to;
        EXPECT_EQ(errors.Take(), row.fails ? Raised{MEM_RESIZE_FAILED} : Raised{});
        EXPECT_TRUE(row.fails || (resized != block) == row.moves);
        block = row.fails ? block : resized;
        EXPECT_EQ(KindOf(PageBase(block)), row.kind);
        EXPECT_TRUE(Holds(block, row.fails ? row.from : std::min(row.from, row.to)));
        const std::uint32_t wanted = (row.fails ? row.from : row.to) + kPageHeader;
        EXPECT_EQ(pool->footprint,
                  4096 + (row.kind == kKindLarge ? RoundUp(wanted, kCommitStep) : 16384));
        EXPECT_TRUE(Intact(pool));
    }
}

TEST(LargeBlocks, SizesThatNoAddressSpaceHolds) {
    TestPool pool;
    RaisedErrors errors;
    char* block = PoolAlloc(pool, 10000, 0);
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 10000);
    const std::uint32_t footprint = pool->footprint;
    for (const std::uint32_t size :
         {0xFFFFFFFFU, 0xFFFFFFF9U, 0xFFFFFFF0U, 0U - kPageHeader, 0xFFFFF800U, 0xFFFFE000U}) {
        for (const std::uint32_t flags : {0U, 0U + AllocRelocatable, 0U + ResizeNoMove}) {
            EXPECT_EQ(PoolAlloc(pool, size, flags), nullptr) << size;
            EXPECT_EQ(PoolResize(block, size, flags), nullptr) << size;
            EXPECT_EQ(RelocAlloc(pool, flags, size), nullptr) << size;
            EXPECT_EQ(RelocResize(slot, size, flags), nullptr) << size;
        }
    }
    EXPECT_EQ(PoolBlockSize(block), 12288 - kPageHeader);
    EXPECT_EQ(RelocSize(slot), 12288 - kPageHeader);
    EXPECT_EQ(pool->footprint - footprint, 0U);
    // One of these may fit into a wide address space; both would overrun the footprint's 32 bits.
    PoolResize(block, 0xC0000000, 0);
    EXPECT_EQ(RelocResize(slot, 0xC0000000, 0), nullptr);
}

TEST(PoolOperations, ZeroedBytes) {
    TestPool pool;
    struct Row {
        std::uint32_t from, to, flags;
    };
    for (const Row row : {Row{200, 300, 0}, Row{200, 90, 0}, Row{200, 2000, 0}, Row{15, 400, 0},
                          Row{5000, 9000, 0}, Row{60000, 90000, 0}, Row{9000, 5000, 0},
                          Row{200, 300, ResizeNoMove}, Row{9000, 20000, ResizeNoMove}}) {
        char* block = PoolAlloc(pool, row.from, AllocZero | AllocLowEnd);
        EXPECT_TRUE(IsZero(block, 0, row.from));
        std::memset(block, 0x55, PoolBlockSize(block));
        const std::uint32_t kept = std::min(row.to, PoolBlockSize(block));
        block = PoolResize(block, row.to, row.flags | AllocZero);
        ASSERT_NE(block, nullptr) << row.from;
        EXPECT_EQ(std::count(block, block + kept, 0x55), kept);
        EXPECT_TRUE(IsZero(block, kept, row.to)) << row.from << " to " << row.to;
        PoolFree(block);
    }
}

TEST(PoolOperations, Refusals) {
    TestPool pool;
    TestPool unfixed(0);
    RaisedErrors errors;
    for (HeapPool* any : {static_cast<HeapPool*>(pool), static_cast<HeapPool*>(unfixed)}) {
        EXPECT_EQ(PoolAlloc(any, 0, 0), nullptr);
        EXPECT_EQ(errors.Take(), Raised{MEM_ALLOC_ZERO});
        EXPECT_EQ(errors.LastPool(), any);
    }
    char* block = PoolAlloc(pool, 100, 0);
    char* small = PoolAlloc(pool, 10, 0);
    Fill(block, 100);
    EXPECT_EQ(PoolResize(block, 0, 0), nullptr);
    EXPECT_EQ(PoolResize(block, 0, ResizeNoMove), nullptr);
    EXPECT_EQ(errors.Take(), (Raised{MEM_ALLOC_ZERO, MEM_ALLOC_ZERO}));
    EXPECT_EQ(PoolResize(small, 20 * kScale, ResizeNoMove), small);
    EXPECT_EQ(PoolResize(small, 20 * kScale + 1, ResizeNoMove), nullptr);
    EXPECT_EQ(errors.Take(), Raised{MEM_RESIZE_FAILED});
    EXPECT_TRUE(Holds(block, 100));

    HeapPool* dead = PoolCreate(0, 0, 0);
    EXPECT_EQ(PoolPreallocate(dead, 100, 1), -1);
    EXPECT_EQ(errors.Take(), Raised{MEM_ALLOC_ZERO});
    dead->signature = 0;
    EXPECT_EQ(PoolAlloc(dead, 10, 0), nullptr);
    EXPECT_EQ(RelocAlloc(dead, 0, 10), nullptr);
    EXPECT_EQ(PoolSetFixedSize(dead, 8), 0);
    EXPECT_EQ(PoolPreallocate(dead, 100, 4), -1);
    EXPECT_EQ(PoolCompact(dead), kNoSize);
    EXPECT_EQ(PoolDestroy(dead), 0);
    EXPECT_EQ(errors.Take(), Raised(6, MEM_BAD_MEM_POOL));
    EXPECT_EQ(errors.LastPool(), nullptr);
    EXPECT_EQ(PoolIsValid(dead), 0);
    EXPECT_EQ(PoolIsValid(nullptr), 0);
    EXPECT_EQ(PoolIsValid(pool), 1);
    dead->signature = 0xBEAD;
    EXPECT_EQ(PoolDestroy(dead), 1);

    EXPECT_EQ(PoolPreallocate(pool, 100, 3), -1);
    EXPECT_EQ(PoolPreallocate(pool, 0, 4), 0);
    EXPECT_EQ(errors.Take(), Raised{});
    pool->ceiling = pool->footprint;
    EXPECT_EQ(PoolAlloc(pool, 5000, 0), nullptr);
    EXPECT_EQ(errors.Take(), Raised{MEM_EXCEEDED_CEILING}) << "once, and no further error";
    EXPECT_EQ(PoolPreallocate(pool, 1, 1), 0);
    EXPECT_EQ(errors.Take(), Raised{MEM_EXCEEDED_CEILING});
    PoolFree(small);
    pool->ceiling = pool->footprint + 4096;
    EXPECT_EQ(PoolAlloc(pool, 10, 0), nullptr);
    EXPECT_EQ(errors.Take(), Raised{MEM_EXCEEDED_CEILING});
}

TEST(PoolOperations, FixedSize) {
    struct Row {
        std::uint16_t size;
        bool accepted;
        std::uint32_t rounded;
    };
    RaisedErrors errors;
    const auto most = static_cast<std::uint16_t>((16384 - kPageHeader) & ~(kGranule - 1));
    ExpectFigure(most, 16356);
    for (const Row row :
         {Row{0, true, 0}, Row{1, true, kGranule}, Row{20, true, RoundUp(20U, kGranule)},
          Row{most, true, most}, Row{static_cast<std::uint16_t>(most + 1), false, 0},
          Row{65534, false, 0}, Row{65535, false, 0}}) {
        TestPool pool(0);
        EXPECT_EQ(PoolSetFixedSize(pool, row.size), row.accepted) << row.size;
        EXPECT_EQ(pool->fixedSize, row.rounded);
        EXPECT_EQ(errors.Take(), row.accepted ? Raised{} : Raised{MEM_BLOCK_TOO_BIG});
        HeapPool* made = PoolCreate(row.size, 1, 0);
        EXPECT_EQ(made != nullptr, row.accepted);
        if (made != nullptr) PoolDestroy(made);
        errors.Take();
    }
    TestPool pool;
    PoolFree(PoolAlloc(pool, 1, 0));
    EXPECT_EQ(PoolSetFixedSize(pool, 40), 1) << "no page is left";
    PoolAlloc(pool, 1, 0);
    EXPECT_EQ(PoolSetFixedSize(pool, 80), 0);
    EXPECT_EQ(pool->fixedSize, 40U);
    EXPECT_EQ(errors.Take(), Raised{});
    HeapPool* provided = PoolCreate(20, 1000, 0);
    EXPECT_EQ(provided->footprint, 4096U + 2 * 16384);
    EXPECT_EQ(RingLength(provided->pageLists[kKindFixed]), 2U);
    EXPECT_EQ(PoolCompact(provided), 2U * 16384);
    PoolDestroy(provided);
}

TEST(PoolOperations, CompactGivesBackEmptyPages) {
    TestPool pool;
    EXPECT_EQ(PoolCompact(pool), 0U);
    PoolPreallocate(pool, 3 * 16384, 4);
    PoolPreallocate(pool, 2 * 16384, 1);
    PoolPreallocate(pool, 2 * 16384, 2);
    char* block = PoolAlloc(pool, 100, 0);
    const std::uint32_t footprint = pool->footprint;
    pool->floor = footprint - 3 * 16384;
    EXPECT_EQ(PoolCompact(pool), 3U * 16384) << "down to the floor";
    pool->floor = 0;
    EXPECT_EQ(PoolCompact(pool), 3U * 16384);
    EXPECT_EQ(pool->footprint, 4096U + 16384);
    EXPECT_EQ(PageBase(block)->blockCount, 1);
    EXPECT_TRUE(Intact(pool));
}

TEST(PoolOperations, RegionsZeroTheirTails) {
    char* region = RegionAlloc(12288, RegionZero);
    std::memset(region, 0x55, 12288);
    EXPECT_EQ(RegionResize(region, 6000, RegionZero), 1);
    EXPECT_EQ(RegionSize(region), 8192U);
    EXPECT_TRUE(IsZero(region, 6000, 8192));
    EXPECT_EQ(region[5999], 0x55);
    EXPECT_EQ(RegionResize(region, 65536, RegionZero), 1);
    EXPECT_TRUE(IsZero(region, 8192, 65536));
    EXPECT_EQ(RegionResize(region, 65537, 0), 0) << "the reservation is used up";
    std::memset(region, 0x55, 65536);
    char* moved = RegionRelocate(region, 100000, RegionZero, [](char*, char*) {});
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(std::count(moved, moved + 65536, 0x55), 65536);
    EXPECT_TRUE(IsZero(moved, 65536, 100000));
    RegionFree(moved);
    char* cut = RegionAlloc(70000, RegionUnder64K);
    EXPECT_EQ(RegionSize(cut), 65536U);
    RegionFree(cut);
}

}  // namespace
