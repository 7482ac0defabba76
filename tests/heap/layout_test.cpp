// Where things stand in memory, and how the heap's own tables grow.
#include "heap/regions.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

/// Grows a table through the sizes of one region, of which `before` bytes are counted already, and
/// takes all free records at each size, so that it must grow again. A region of records alone names
/// the one before it.
template <class Record, class Next>
void ExpectGrowth(HeapPool* pool, int (*grow)(HeapPool*), char*& region, std::size_t header,
                  Record*& chain, const Next& next, std::uint32_t before = 0) {
    std::uint32_t records = 0;
    const char* former = region;
    const std::uint32_t footprint = pool->footprint - before;
    for (const std::uint32_t size : {4096U, 8192U, 16384U, 32768U, 49152U, 65536U}) {
        ASSERT_EQ(grow(pool), 1);
        EXPECT_EQ(RegionSize(region), size);
        EXPECT_EQ(pool->footprint, footprint + size);
        for (Record* record = std::exchange(chain, nullptr); record != nullptr; ++records) {
            Record* lower = next(record);
            EXPECT_TRUE(lower == nullptr || lower < record) << "the highest comes first";
            record = lower;
        }
        EXPECT_EQ(records, (size - header) / sizeof(Record));
    }
    EXPECT_TRUE(header != kPointer || Load<char*>(region) == former);
}

TEST(Layout, TablesGrow) {
    HeapPool* pool = PoolCreate(0, 0, 0);
    EXPECT_EQ(heapRegistry.pools, pool);
    const auto nextLink = [](PageLink* link) { return link->next; };
    const auto nextSlot = [](HandleSlot* slot) {
        return reinterpret_cast<HandleSlot*>(slot->block);
    };
    const auto growOwn = [](HeapPool* grown) {
        static HeapPage page{};
        const int done = PageLinkGrow(grown);
        grown->firstLink.page = &page;
        return done;
    };
    auto* own = reinterpret_cast<char*>(pool);
    ExpectGrowth(pool, growOwn, own, offsetof(HeapPool, firstLink), pool->freeLinks, nextLink,
                 4096);
    for (int region = 0; region < 2; ++region) {
        ExpectGrowth(pool, PageLinkGrow, pool->linkRegions, kPointer, pool->freeLinks, nextLink);
        ExpectGrowth(pool, SlotTableGrow, pool->slotRegions, kPointer, pool->freeSlots, nextSlot);
    }
    EXPECT_EQ(PoolDestroy(pool), 1);
}

TEST(Layout, SizesOfBlocks) {
    struct Row {
        std::uint32_t fixedSize, request;
        PageKind kind;  // with 4-byte pointers, as the next one
        std::uint32_t size;
    };
    const Row rows[] = {
        {0, 1, kKindVariable, 14},       {0, 14, kKindVariable, 14},   {0, 15, kKindVariable, 18},
        {0, 19, kKindVariable, 22},      {20, 20, kKindFixed, 20},     {20, 21, kKindVariable, 22},
        {20, 4096, kKindVariable, 4098}, {20, 4097, kKindLarge, 8164}, {20, 8164, kKindLarge, 8164},
        {20, 8165, kKindLarge, 12260},
    };
    for (const Row& row : rows) {
        TestPool pool(row.fixedSize);
        char* block = PoolAlloc(pool, row.request, 0);
        EXPECT_GE(PoolBlockSize(block), row.request);
        ExpectFigure(KindOf(PageBase(block)), row.kind);
        ExpectFigure(PoolBlockSize(block), row.size);
        if (KindOf(PageBase(block)) == kKindLarge) {
            EXPECT_EQ(OffsetInUnit(block), kPageHeader);
            EXPECT_EQ(RegionSize(PageBase(block)), RoundUp(row.request + kPageHeader, kCommitStep));
        }
        PoolFree(block);
        EXPECT_EQ(pool->footprint, 4096U) << "emptied pages go at once";
    }
}

}  // namespace
