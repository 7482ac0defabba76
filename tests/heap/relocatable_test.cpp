// What is no handle, and compaction. What becomes of handles in use is in workers_test.cpp.
#include "heap/ring_index.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

TEST(Handles, InvalidOnes) {
    TestPool pool;
    RaisedErrors errors;
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 10);
    EXPECT_EQ(RelocResize(slot, 0, 0), nullptr);
    EXPECT_EQ(RelocAlloc(pool, 0, 0), nullptr);
    EXPECT_EQ(errors.Take(), (Raised{MEM_ALLOC_ZERO, MEM_ALLOC_ZERO}));
    RelocFree(slot);
    EXPECT_EQ(RelocFree(slot), 0);
    EXPECT_EQ(RelocResize(slot, 10, 0), nullptr);
    EXPECT_EQ(RelocLock(slot), nullptr);
    EXPECT_EQ(RelocUnlock(slot), kNoCount);
    EXPECT_EQ(RelocFix(slot), nullptr);
    EXPECT_EQ(RelocUnfix(slot), kNoCount);
    EXPECT_EQ(RelocLockCount(slot), kNoCount);
    EXPECT_EQ(RelocIsMoveable(slot), 0);
    EXPECT_EQ(RelocSize(slot), kNoSize);
    EXPECT_EQ(errors.Take(), Raised(9, MEM_BAD_HANDLE));
    EXPECT_EQ(errors.LastPool(), nullptr);
    EXPECT_EQ(RelocAlloc(pool, 0, 8), slot) << "the slot given back last";
}

TEST(Compaction, SlidesOnlyWhatMerges) {
    struct Row {
        const char* before;
        std::uint32_t need;
        const char* after;
        std::uint32_t reached;
        bool done;  // nothing to slide any more
    };
    const Row rows[] = {
        {"f32 u24 u16 f40 l16", 65535, "u24 u16 f72 l16", 72, true},
        {"f32 u24 l16 f20 l16", 65535, "f32 u24 l16 f20 l16", 32, true},
        {"f32 l16 f20 u24", 65535, "f32 l16 f20 u24", 32, true},
        {"f32 u24 f40 u16 f20 l16", 72, "u24 f72 u16 f20 l16", 72, false},
        {"f32 u24 f40 u16 f20 l16", 76, "u24 u16 f92 l16", 92, true},
        {"f32 u24 f40 u16 f20", 65535, "u24 u16 f92", 92, true},
        {"u24 f32 l16 u16", 65535, "u24 f32 l16 u16", 32, true},
        {"f16 u20 l16 f24 u16 f28 u32 f36 u40", 65535, "f16 u20 l16 u16 u32 f88 u40", 88, true},
    };
    for (const Row& row : rows) {
        TestPool pool;
        const WrittenPage page(pool, row.before);
        const std::uint32_t need = row.need == 65535 ? row.need : row.need * kScale;
        EXPECT_EQ(SlidePage(page.Page(), static_cast<std::uint16_t>(need), nullptr),
                  row.reached * kScale)
            << row.before;
        EXPECT_EQ(page.Read(), row.after);
        EXPECT_EQ(FreeSize(page->rover), row.reached * kScale);
        EXPECT_EQ((page.Link()->linkFlags & kNothingToSlide) != 0, row.done) << row.before;
        EXPECT_TRUE(Intact(pool)) << row.before;
    }
}

TEST(Compaction, EmptiesThePageThatIsWorthIt) {
    struct Row {
        std::vector<const char*> before;  // the last page made is the head of the ring
        std::uint32_t need;
        std::vector<const char*> after;
        std::size_t head;
    };
    const Row rows[] = {
        // A page alone keeps its blocks.
        {{"f32 u24 l16 f40"}, 48, {"f32 u24 l16 f40"}, 0},
        // The first page that reaches the need by sliding ends the search.
        {{"f32 u24 f40 l16", "f32 l16"}, 72, {"u24 f72 l16", "f32 l16"}, 0},
        // The page with fewer pinned blocks is emptied, as far as needed.
        {{"f32 u24 l16 f20 l16", "f24 l16 f20 l16 l16"},
         56,
         {"f56 l16 f20 l16", "u24 l16 f20 l16 l16"},
         0},
        // Among equals the one with the larger free block.
        {{"f32 u24 l16", "f28 u20 l16"}, 56, {"f56 l16", "u28 u20 l16"}, 0},
        // A block that finds no room bars those of its size, not smaller ones.
        {{"f20 l16 l16 l16 l16", "u24 l16 f16 u24 l16 f32 u20 l16"},
         56,
         {"u20 l16 l16 l16 l16", "u24 l16 f16 u24 l16 f52 l16"},
         1},
    };
    for (const Row& row : rows) {
        TestPool pool;
        std::vector<WrittenPage> pages;
        for (const char* text : row.before) pages.emplace_back(pool, text);
        const auto need = static_cast<std::uint16_t>(row.need * kScale);
        const std::uint16_t reached = CompactMoveablePages(pool, need);
        EXPECT_EQ(pool->pageLists[kKindRelocatable], pages[row.head].Link()) << row.before[0];
        EXPECT_EQ(reached, pages[row.head].Link()->freeHint);
        EXPECT_EQ(reached, FreeSize(pages[row.head]->rover));
        for (std::size_t i = 0; i < pages.size(); ++i) EXPECT_EQ(pages[i].Read(), row.after[i]);
        EXPECT_TRUE(Intact(pool)) << row.before[0];
    }
}

TEST(Compaction, GivesBackEmptiedPages) {
    for (const bool atFloor : {false, true}) {
        TestPool pool;
        for (const std::uint32_t size : {100U, 200U, 300U}) {
            PageAcquire(pool, kKindRelocatable, pool->pageSize, 0);
            HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, size);
            if (size == 100) RelocLock(slot);
        }
        pool->floor = atFloor ? pool->footprint : 0;
        EXPECT_EQ(PoolCompact(pool), atFloor ? 0U : 2 * 16384U);
        EXPECT_EQ(RingOf(pool->pageLists[kKindRelocatable]).size(), atFloor ? 3U : 1U);
    }
}

TEST(Compaction, HintKeptLowIsRaisedByTheNextAllocation) {
    TestPool pool;
    const WrittenPage page(pool, "u24 f40 l16");
    const WrittenPage full(pool, "l16 l16");
    SetFreeHint(page.Link(), 16 * kScale);
    RingIndexNote(page.Link());
    RelocAlloc(pool, AllocRelocatable, 16 * kScale - kHeaderSize - kTrailerSize);
    EXPECT_EQ(page.Link()->freeHint, 24 * kScale);
    EXPECT_TRUE(Intact(pool)) << "the index knows";
}

}  // namespace
