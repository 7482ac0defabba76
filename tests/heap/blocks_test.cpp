// The three disciplines, and the pool operations that send requests to them.
#include "heap/fixed_blocks.h"
#include "heap/regions.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

/// The size to ask for to get a block of `total` bytes without a trailer, in 4-byte terms.
constexpr std::uint32_t ForBlockOf(std::uint32_t total) {
    return total * kScale - kHeaderSize;
}

TEST(VariableBlocks, SearchGoesOnWhereItEnded) {
    TestPool pool;  // with blocks of 20: a rest of 20 is kept, one of 24 is split off
    const auto take = [&pool](std::uint32_t size, std::uint32_t flags = AllocLowEnd) {
        return VariableAlloc(pool, flags | AllocNoNewPage | AllocNoLarge, ForBlockOf(size));
    };
    PoolPreallocate(pool, 1, 4);
    std::vector<char*> blocks;
    for (const std::uint32_t size : {44, 16, 44, 16, 40, 16}) blocks.push_back(take(size));
    while (take(64) != nullptr || take(16) != nullptr) {
    }
    HeapPage* page = PageBase(blocks[0]);
    EXPECT_EQ(page->rover, page->sentinel) << "the last free block is gone";
    EXPECT_EQ(page->link->freeHint, 0);
    for (const std::size_t i : {0U, 2U, 4U}) PoolFree(blocks[i]);

    EXPECT_EQ(take(40), blocks[4]) << "the newest stands next to the root";
    EXPECT_EQ(page->rover, HeaderOfData(blocks[2]));
    EXPECT_EQ(take(20, 0), blocks[2] + 24 * kScale) << "the high end";
    EXPECT_EQ(page->rover, HeaderOfData(blocks[0]));
    EXPECT_EQ(take(24), blocks[0]);
    EXPECT_EQ(page->rover, page->sentinel) << "no rest";
    EXPECT_EQ(page->link->freeHint, 44 * kScale);
    EXPECT_EQ(take(28), nullptr);
    EXPECT_EQ(page->link->freeHint, 24 * kScale) << "what the walk has seen";
    EXPECT_EQ(take(24), blocks[2]);
}

TEST(VariableBlocks, ResizeInPlace) {
    struct Row {
        const char* before;
        std::uint32_t size;  // of the first block, afterwards
        const char* after;
    };
    const Row rows[] = {
        {"u40 f40 l16", 60, "u60 f20 l16"}, {"u40 f40 l16", 64, "u64 f16 l16"},
        {"u40 f40 l16", 68, "u80 l16"},     {"u40 f40 l16", 84, nullptr},
        {"u40 l16 f40", 44, nullptr},       {"u40 f40", 80, "u80"},
        {"u40 l16", 24, "u24 f16 l16"},     {"u40 l16", 28, "u40 l16"},
        {"u40 f40 l16", 20, "u20 f60 l16"}, {"u40 f40 l16", 28, "u40 f40 l16"},
    };
    for (const Row& row : rows) {
        for (const bool roverAbove : {false, true}) {
            TestPool pool;
            WrittenPage page(pool, row.before);
            HandleSlot* slot = page.Slot(0);
            char* above = BlockAfter(HeaderOfData(slot->block));
            if (roverAbove && !InUse(above)) page->rover = above;
            const RaisedErrors errors;
            const std::uint32_t size = row.size * kScale - kHeaderSize - kTrailerSize;
            EXPECT_EQ(RelocResize(slot, size, ResizeNoMove), row.after != nullptr ? slot : nullptr);
            EXPECT_TRUE(Intact(pool)) << row.before << " to " << row.size;
            EXPECT_EQ(page.Read(), row.after != nullptr ? row.after : row.before) << row.size;
        }
    }
}

TEST(FixedBlocks, FillAPageAndGiveItBack) {
    TestPool pool;
    constexpr std::uint32_t kBlocks = FixedBlockCount(16384, 20 * kScale);
    ExpectFigure(kBlocks, 817);
    std::vector<char*> blocks;
    for (std::uint32_t i = 0; i < kBlocks; ++i) blocks.push_back(PoolAlloc(pool, 1, 0));
    EXPECT_EQ(blocks[0], reinterpret_cast<char*>(PageBase(blocks[0])) + kPageHeader);
    EXPECT_TRUE(std::is_sorted(blocks.begin(), blocks.end())) << "upwards through a fresh page";
    EXPECT_EQ(pool->footprint, 4096U + 16384);
    PoolFree(PoolAlloc(pool, 20 * kScale, 0));
    EXPECT_EQ(pool->footprint, 4096U + 16384) << "emptied pages go at once";

    pool->floor = pool->footprint;
    for (char* block : blocks) PoolFree(block);
    EXPECT_EQ(PoolCompact(pool), 0U) << "the floor keeps an empty page";
    EXPECT_EQ(PoolAlloc(pool, 7, 0), blocks.back()) << "last in, first out";
    pool->floor = 0;
    PoolFree(blocks.back());
    EXPECT_EQ(pool->footprint, 4096U);
}

TEST(LargeBlocks, GrowAndShrink) {
    struct Row {
        std::uint32_t from, to, flags;
        bool works, moves;
        PageKind kind;
    };
    const std::uint32_t full = 65536 - kPageHeader;
    const Row rows[] = {
        {10000, full, ResizeNoMove, true, false, kKindLarge},
        {10000, full + 1, ResizeNoMove, false, false, kKindLarge},
        {full, full + 1, 0, true, true, kKindLarge},
        {100000, 4097, 0, true, false, kKindLarge},
        {100000, 4096, 0, true, true, kKindVariable},
        {100000, 10, 0, true, true, kKindFixed},
        {100000, 10, ResizeNoMove, true, false, kKindLarge},
    };
    for (const Row& row : rows) {
        TestPool pool;
        RaisedErrors errors;
        char* block = PoolAlloc(pool, row.from, 0);
        char* resized = PoolResize(block, row.to, row.flags);
        EXPECT_EQ(resized != nullptr, row.works) << row.from << " to " << row.to;
        EXPECT_EQ(errors.Take(), row.works ? Raised{} : Raised{MEM_RESIZE_FAILED});
        EXPECT_EQ(row.works && resized != block, row.moves);
        EXPECT_EQ(KindOf(PageBase(row.works ? resized : block)), row.kind);
        const std::uint32_t held = (row.works ? row.to : row.from) + kPageHeader;
        EXPECT_EQ(pool->footprint,
                  4096 + (row.kind == kKindLarge ? RoundUp(held, kCommitStep) : 16384));
    }
}

TEST(LargeBlocks, SizesThatNoAddressSpaceHolds) {
    TestPool pool;
    char* block = PoolAlloc(pool, 10000, 0);
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 10000);
    const std::uint32_t footprint = pool->footprint;
    const RaisedErrors errors;
    for (const std::uint32_t size :
         {0xFFFFFFFFU, 0xFFFFFFF9U, 0xFFFFFFF0U, 0U - kPageHeader, 0xFFFFF800U, 0xFFFFE000U}) {
        for (const std::uint32_t flags : {0U, 0U + AllocRelocatable, 0U + ResizeNoMove}) {
            EXPECT_EQ(PoolAlloc(pool, size, flags), nullptr) << size;
            EXPECT_EQ(PoolResize(block, size, flags), nullptr) << size;
            EXPECT_EQ(RelocAlloc(pool, flags, size), nullptr) << size;
            EXPECT_EQ(RelocResize(slot, size, flags), nullptr) << size;
        }
    }
    EXPECT_EQ(pool->footprint, footprint);
    EXPECT_EQ(PoolBlockSize(block), 12288 - kPageHeader);
    EXPECT_EQ(RelocSize(slot), 12288 - kPageHeader);
    // One of these may fit into a wide address space; both would overrun the footprint's 32 bits.
    PoolResize(block, 0xC0000000, 0);
    EXPECT_EQ(RelocResize(slot, 0xC0000000, 0), nullptr);
}

TEST(PoolOperations, Refusals) {
    TestPool pool;
    TestPool unfixed(0);
    RaisedErrors errors;
    for (HeapPool* any : {pool.operator HeapPool*(), unfixed.operator HeapPool*()}) {
        EXPECT_EQ(PoolAlloc(any, 0, 0), nullptr);
        EXPECT_EQ(errors.Take(), Raised{MEM_ALLOC_ZERO});
        EXPECT_EQ(errors.LastPool(), any);
    }
    EXPECT_EQ(PoolPreallocate(unfixed, 100, 1), -1);
    char* block = PoolAlloc(pool, 100, 0);
    char* small = PoolAlloc(pool, 10, 0);
    EXPECT_EQ(PoolResize(block, 0, 0), nullptr);
    EXPECT_EQ(PoolResize(block, 0, ResizeNoMove), nullptr);
    EXPECT_EQ(RelocResize(RelocAlloc(pool, 0, 10), 0, 0), nullptr);
    EXPECT_EQ(RelocAlloc(pool, 0, 0), nullptr);
    EXPECT_EQ(errors.Take(), Raised(5, MEM_ALLOC_ZERO));
    EXPECT_EQ(PoolResize(small, 20 * kScale, ResizeNoMove), small);
    EXPECT_EQ(PoolResize(small, 20 * kScale + 1, ResizeNoMove), nullptr);
    EXPECT_EQ(errors.Take(), Raised{MEM_RESIZE_FAILED});
    EXPECT_EQ(PoolPreallocate(pool, 100, 3), -1);
    EXPECT_EQ(PoolPreallocate(pool, 0, 4), 0);
    EXPECT_EQ(errors.Take(), Raised{});
    EXPECT_EQ(PoolIsValid(pool), 1);
    EXPECT_EQ(PoolIsValid(nullptr), 0);

    pool->signature = 0;  // as that of a pool that is no more
    EXPECT_EQ(PoolAlloc(pool, 10, 0), nullptr);
    EXPECT_EQ(RelocAlloc(pool, 0, 10), nullptr);
    EXPECT_EQ(PoolSetFixedSize(pool, 8), 0);
    EXPECT_EQ(PoolPreallocate(pool, 100, 4), -1);
    EXPECT_EQ(PoolCompact(pool), kNoSize);
    EXPECT_EQ(PoolDestroy(pool), 0);
    EXPECT_EQ(errors.Take(), Raised(6, MEM_BAD_MEM_POOL));
    EXPECT_EQ(errors.LastPool(), nullptr);
    EXPECT_EQ(PoolIsValid(pool), 0);
    pool->signature = kPoolSignature;
}

TEST(PoolOperations, NothingGoesAboveTheCeiling) {
    TestPool pool;
    RaisedErrors errors;
    RelocAlloc(pool, AllocRelocatable, 100);
    pool->ceiling = pool->footprint + 4096;
    EXPECT_EQ(KindOf(PageBase(PoolAlloc(pool, 3000, 0))), kKindLarge) << "for want of a page";
    EXPECT_EQ(pool->footprint, pool->ceiling);
    EXPECT_EQ(errors.Take(), Raised{MEM_EXCEEDED_CEILING});
    for (const std::uint32_t room : {0U, 4096U}) {
        pool->ceiling = pool->footprint + room;
        EXPECT_EQ(PoolAlloc(pool, 5000, 0), nullptr);
        EXPECT_EQ(errors.Take(), Raised{MEM_EXCEEDED_CEILING}) << "once, and no further error";
        EXPECT_EQ(PoolAlloc(pool, 10, 0), nullptr);
        EXPECT_EQ(PoolPreallocate(pool, 1, 1), 0);
        EXPECT_EQ(errors.Take(), (Raised{MEM_EXCEEDED_CEILING, MEM_EXCEEDED_CEILING}));
    }
}

TEST(PoolOperations, FixedSize) {
    RaisedErrors errors;
    const std::uint32_t most = (16384 - kPageHeader) & ~(kGranule - 1);
    ExpectFigure(most, 16356);
    for (const std::uint32_t size : {1U, 20U, most, most + 1, 65534U, 65535U}) {
        const auto wanted = static_cast<std::uint16_t>(size);
        const bool fits = size <= most;
        TestPool pool(0);
        EXPECT_EQ(PoolSetFixedSize(pool, wanted), fits) << size;
        EXPECT_EQ(pool->fixedSize, fits ? RoundUp(size, kGranule) : 0);
        EXPECT_TRUE(fits || PoolCreate(wanted, 1, 0) == nullptr);
        EXPECT_EQ(errors.Take(), fits ? Raised{} : Raised(2, MEM_BLOCK_TOO_BIG));
    }
    TestPool pool;
    PoolFree(PoolAlloc(pool, 1, 0));
    EXPECT_EQ(PoolSetFixedSize(pool, 40), 1) << "no page is left";
    PoolAlloc(pool, 1, 0);
    EXPECT_EQ(PoolSetFixedSize(pool, 80), 0);
    EXPECT_EQ(pool->fixedSize, 40U);
    HeapPool* provided = PoolCreate(20, 1000, 0);
    EXPECT_EQ(RingOf(provided->pageLists[kKindFixed]).size(), 2U);
    PoolDestroy(provided);
    EXPECT_EQ(errors.Take(), Raised{});
}

TEST(PoolOperations, CompactGivesBackPages) {
    TestPool pool;
    for (const std::uint32_t size : {100U, 200U, 300U}) {
        PageAcquire(pool, kKindRelocatable, pool->pageSize, 0);
        HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, size);
        if (size == 100) RelocLock(slot);
    }
    pool->floor = pool->footprint;
    EXPECT_EQ(PoolCompact(pool), 0U) << "emptied, and kept";
    for (const std::uint32_t type : {1U, 2U, 4U}) PoolPreallocate(pool, 2 * 16384, type);
    PoolAlloc(pool, 100, 0);
    pool->floor = pool->footprint - 3 * 16384;
    EXPECT_EQ(PoolCompact(pool), 3U * 16384) << "down to the floor";
    pool->floor = 0;
    EXPECT_EQ(PoolCompact(pool), 4U * 16384);
    EXPECT_EQ(RingOf(pool->pageLists[kKindRelocatable]).size(), 1U);
    EXPECT_EQ(PoolCompact(pool), 0U);
}

TEST(PoolOperations, RegionsZeroTheirTails) {
    char* region = RegionAlloc(12288, 0);
    std::memset(region, 'x', 12288);
    EXPECT_EQ(RegionResize(region, 6000, RegionZero), 1);
    EXPECT_TRUE(AllAre(region, 0, 6000, 'x') && AllAre(region, 6000, 8192, 0));
    EXPECT_EQ(RegionSize(region), 8192U);
    EXPECT_EQ(RegionResize(region, 65536, RegionZero), 1);
    EXPECT_TRUE(AllAre(region, 8192, 65536, 0));
    EXPECT_EQ(RegionResize(region, 65537, 0), 0) << "the unit is full";
    RegionFree(region);
    char* cut = RegionAlloc(70000, RegionUnder64K);
    EXPECT_EQ(RegionSize(cut), 65536U);
    RegionFree(cut);
}

}  // namespace
