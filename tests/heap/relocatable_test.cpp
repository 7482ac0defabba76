// What is no block or handle, and compaction. What becomes of those in use is in workers_test.cpp.
#include "heap/ring_index.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

TEST(Addresses, StaleAndWildOnesAreRefused) {
    TestPool pool;
    RaisedErrors errors;
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 10);
    HandleSlot* large = RelocAlloc(pool, AllocRelocatable, 9000);
    HandleSlot* gone = RelocAlloc(pool, AllocRelocatable, 10);
    char* freed = PoolAlloc(pool, 100, 0);
    char* plain = PoolAlloc(pool, 100, 0);
    char* page = PoolAlloc(pool, 9000, 0);
    char* const wild = reinterpret_cast<char*>(std::uintptr_t{0x10});
    EXPECT_TRUE(PoolFree(freed) == 1 && PoolFree(page) == 1 && RelocFree(gone) == 1);
    for (char* block : {slot->block, large->block, freed, page, plain + 1, wild}) {
        EXPECT_EQ(PoolFree(block), 0);
        EXPECT_EQ(PoolResize(block, 10, 0), nullptr);
        EXPECT_EQ(errors.Take(), Raised(2, MEM_BAD_POINTER));
    }
    for (char* block : {freed, page, wild}) EXPECT_EQ(PoolBlockSize(block), kNoSize);
    EXPECT_EQ(errors.Take(), Raised(3, MEM_BAD_POINTER));
    for (void* any : std::initializer_list<void*>{gone, plain, wild, large->block}) {
        auto* handle = static_cast<HandleSlot*>(any);
        EXPECT_EQ(RelocFree(handle), 0);
        EXPECT_EQ(RelocResize(handle, 10, 0), nullptr);
        EXPECT_EQ(RelocLock(handle), nullptr);
        EXPECT_EQ(RelocUnlock(handle), kNoCount);
        EXPECT_EQ(RelocFix(handle), nullptr);
        EXPECT_EQ(RelocUnfix(handle), kNoCount);
        EXPECT_EQ(RelocLockCount(handle), kNoCount);
        EXPECT_EQ(RelocIsMoveable(handle), 0);
        EXPECT_EQ(RelocSize(handle), kNoSize);
        EXPECT_EQ(errors.Take(), Raised(9, MEM_BAD_HANDLE));
        EXPECT_EQ(errors.LastPool(), nullptr);
    }
    EXPECT_EQ(RelocAlloc(pool, 0, 8), gone) << "the slot given back last";
}

TEST(Compaction, SlidesOnlyWhatMergesAndEmptiesThePageThatIsWorthIt) {
    struct Row {
        const char* before;  // the last page made is the head of the ring
        std::uint32_t need;
        const char* after;
        std::uint32_t reached;
        bool done;  // nothing to slide any more
        std::size_t head;
    };
    constexpr std::uint32_t kMore = 20000;  // than a page holds
    const Row rows[] = {
        // A page alone keeps its blocks.
        {"f32 u24 u16 f40 l16", kMore, "u24 u16 f72 l16", 72, true, 0},
        {"f32 u24 l16 f20 l16", kMore, "f32 u24 l16 f20 l16", 32, true, 0},
        {"f32 l16 f20 u24", kMore, "f32 l16 f20 u24", 32, true, 0},
        {"f32 u24 f40 u16 f20 l16", 72, "u24 f72 u16 f20 l16", 72, false, 0},
        {"f32 u24 f40 u16 f20 l16", 76, "u24 u16 f92 l16", 92, true, 0},
        {"f32 u24 f40 u16 f20", kMore, "u24 u16 f92", 92, true, 0},
        {"f16 u20 l16 f24 u16 f28 u32 f36 u40", kMore, "f16 u20 l16 u16 u32 f88 u40", 88, true, 0},
        // The first page that reaches the need by sliding ends the search.
        {"f32 u24 f40 l16 | f32 l16", 72, "u24 f72 l16 | f32 l16", 72, true, 0},
        // The page with fewer pinned blocks is emptied, as far as needed.
        {"f32 u24 l16 f20 l16 | f24 l16 f20 l16 l16", 56, "f56 l16 f20 l16 | u24 l16 f20 l16 l16",
         56, true, 0},
        // Among equals the one with the larger free block.
        {"f32 u24 l16 | f28 u20 l16", 56, "f56 l16 | u28 u20 l16", 56, true, 0},
        // A block that finds no room bars those of its size, not smaller ones.
        {"f20 l16 l16 l16 l16 | u24 l16 f16 u24 l16 f32 u20 l16", 56,
         "u20 l16 l16 l16 l16 | u24 l16 f16 u24 l16 f52 l16", 52, true, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        TestPool pool;
        std::vector<WrittenPage> pages;
        std::istringstream before(row.before);
        for (std::string page; std::getline(before, page, '|');) pages.emplace_back(pool, page);
        const WrittenPage& head = pages[row.head];
        const auto need = static_cast<std::uint16_t>(row.need * kScale);
        EXPECT_EQ(CompactMoveablePages(pool, need), row.reached * kScale);
        EXPECT_EQ(pool->pageLists[kKindRelocatable], head.Link());
        EXPECT_EQ(head.Link()->freeHint, row.reached * kScale);
        EXPECT_EQ(FreeSize(head->rover), row.reached * kScale);
        EXPECT_EQ((head.Link()->linkFlags & kNothingToSlide) != 0, row.done);
        std::string after;
        for (const WrittenPage& page : pages) after += (after.empty() ? "" : " | ") + page.Read();
        EXPECT_EQ(after, row.after);
        EXPECT_TRUE(Intact(pool));
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
