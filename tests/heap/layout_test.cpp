// Where things stand in memory, and how the heap's own tables grow.
#include "heap/fixed_blocks.h"
#include "heap/large_blocks.h"
#include "heap/regions.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

/// Adds up the chain of free records and takes them all, so that the table must grow again.
template <class Record, class Next>
std::uint32_t TakeAll(Record*& chain, const Next& next) {
    std::uint32_t count = 0;
    for (Record* record = chain; record != nullptr; record = next(record)) {
        Record* lower = next(record);
        EXPECT_TRUE(lower == nullptr || lower < record) << "the highest comes first";
        ++count;
    }
    chain = nullptr;
    return count;
}

constexpr std::uint32_t kGrownSizes[] = {4096, 8192, 16384, 32768, 49152, 65536};

TEST(Layout, LinkRegionsGrow) {
    HeapPool* pool = PoolCreate(0, 0, 0);
    EXPECT_EQ(heapRegistry.pools, pool);
    const auto next = [](PageLink* link) { return link->next; };
    HeapPage page{};
    std::uint32_t footprint = 4096;
    std::uint32_t before = 0;
    std::uint32_t links = 0;
    for (const std::uint32_t size : kGrownSizes) {
        ASSERT_EQ(PageLinkGrow(pool), 1);
        footprint += before != 0 ? size - before : 0;
        EXPECT_EQ(RegionSize(pool), size);
        EXPECT_EQ(pool->footprint, footprint);
        links += TakeAll(pool->freeLinks, next);
        EXPECT_EQ(links, (size - offsetof(HeapPool, firstLink)) / sizeof(PageLink));
        if (size == 4096) ExpectFigure(links, 249);
        pool->firstLink.page = &page;
        before = size;
    }
    for (int region = 0; region < 2; ++region) {
        before = 0;
        links = 0;
        for (const std::uint32_t size : kGrownSizes) {
            ASSERT_EQ(PageLinkGrow(pool), 1);
            footprint += size - before;
            EXPECT_EQ(RegionSize(pool->linkRegions), size);
            EXPECT_EQ(pool->footprint, footprint);
            links += TakeAll(pool->freeLinks, next);
            EXPECT_EQ(links, (size - kPointer) / sizeof(PageLink));
            if (size == 4096) ExpectFigure(links, 255);
            before = size;
        }
    }
    EXPECT_NE(Load<char*>(pool->linkRegions), nullptr) << "chained to the one before";
    EXPECT_EQ(PoolDestroy(pool), 1);
}

TEST(Layout, SlotRegionsGrow) {
    HeapPool* pool = PoolCreate(0, 0, 0);
    const auto next = [](HandleSlot* slot) { return reinterpret_cast<HandleSlot*>(slot->block); };
    std::uint32_t footprint = 4096;
    char* first = nullptr;
    for (int region = 0; region < 2; ++region) {
        std::uint32_t slots = 0;
        std::uint32_t before = 0;
        for (const std::uint32_t size : kGrownSizes) {
            ASSERT_EQ(SlotTableGrow(pool), 1);
            footprint += size - before;
            EXPECT_EQ(RegionSize(pool->slotRegions), size);
            EXPECT_EQ(pool->footprint, footprint);
            slots += TakeAll(pool->freeSlots, next);
            EXPECT_EQ(slots, (size - kPointer) / sizeof(HandleSlot));
            if (size == 4096) ExpectFigure(slots, 341);
            if (size == 65536) ExpectFigure(slots, 5461);
            before = size;
        }
        EXPECT_EQ(Load<char*>(pool->slotRegions), first);
        first = pool->slotRegions;
    }
    EXPECT_EQ(PoolDestroy(pool), 1);
}

TEST(Layout, FirstBlocksOfAPage) {
    TestPool pool(0);
    char* high = PoolAlloc(pool, kSmallestBlock - kHeaderSize, 0);
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 1);
    HeapPage* fixedPage = PageBase(high);
    HeapPage* moveablePage = PageBase(slot->block);
    const std::uint32_t whole = EmptyPageBlock(16384);

    EXPECT_EQ(DataOf(fixedPage->sentinel) - high, kSmallestBlock);
    EXPECT_EQ(FreeSize(FirstBlock(fixedPage)), whole - kSmallestBlock);
    EXPECT_EQ(fixedPage->link->freeHint, whole);

    EXPECT_EQ(HeaderOfData(slot->block), FirstBlock(moveablePage));
    EXPECT_EQ(moveablePage->rover, FirstBlock(moveablePage) + kSmallestBlock);
    EXPECT_EQ(FreeSize(moveablePage->rover), whole - kSmallestBlock);
    EXPECT_EQ(SlotOf(FirstBlock(moveablePage)), slot);
    EXPECT_EQ(RelocSize(slot), kSmallestBlock - 2 - kTrailerSize);

    for (char* data : {high, slot->block}) EXPECT_EQ(OffsetInUnit(data) % kGranule, 0U);
    ExpectFigure(whole, 16340);
    ExpectFigure(OffsetInUnit(high), 16356);
    ExpectFigure(OffsetInUnit(fixedPage->sentinel), 16370);
    ExpectFigure(OffsetInUnit(HeaderOfData(slot->block)), 30);
    ExpectFigure(OffsetInUnit(moveablePage->rover), 46);
    ExpectFigure(RelocSize(slot), 8);
}

TEST(Layout, SizesOfBlocks) {
    TestPool plain(0);
    TestPool withFixed;
    struct Row {
        HeapPool* pool;
        std::uint32_t request;
        PageKind kind;  // with 4-byte pointers, as the next one
        std::uint32_t size;
    };
    const Row rows[] = {
        {plain, 1, kKindVariable, 14},        {plain, 14, kKindVariable, 14},
        {plain, 15, kKindVariable, 18},       {plain, 18, kKindVariable, 18},
        {plain, 19, kKindVariable, 22},       {withFixed, 1, kKindFixed, 20},
        {withFixed, 20, kKindFixed, 20},      {withFixed, 21, kKindVariable, 22},
        {withFixed, 22, kKindVariable, 22},   {withFixed, 4096, kKindVariable, 4098},
        {withFixed, 4097, kKindLarge, 8164},  {withFixed, 8164, kKindLarge, 8164},
        {withFixed, 8165, kKindLarge, 12260}, {withFixed, 70000, kKindLarge, 73700},
    };
    for (const Row& row : rows) {
        char* block = PoolAlloc(row.pool, row.request, 0);
        ASSERT_NE(block, nullptr);
        EXPECT_GE(PoolBlockSize(block), row.request);
        ExpectFigure(KindOf(PageBase(block)), row.kind);
        ExpectFigure(PoolBlockSize(block), row.size);
        if (KindOf(PageBase(block)) == kKindLarge) {
            EXPECT_EQ(OffsetInUnit(block), kPageHeader);
            EXPECT_EQ(RegionSize(PageBase(block)), RoundUp(row.request + kPageHeader, kCommitStep));
        }
        EXPECT_EQ(PoolFree(block), 1);
    }
    EXPECT_EQ(plain->footprint, 4096U) << "emptied pages go at once";
    EXPECT_EQ(withFixed->footprint, 4096U);
}

}  // namespace
