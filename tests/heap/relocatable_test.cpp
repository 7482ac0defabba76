// Handles: their places, counts and moves, and compaction.
#include "heap/locks.h"
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

constexpr std::uint32_t kLarge = 9000;

HandleSlot* Make(HeapPool* pool, std::uint32_t size, std::uint32_t flags = AllocRelocatable) {
    HandleSlot* slot = RelocAlloc(pool, flags, size);
    std::memset(slot->block, 0x5A, size);
    return slot;
}

bool Kept(const HandleSlot* slot, std::uint32_t size) {
    return std::count(slot->block, slot->block + size, 0x5A) == static_cast<std::ptrdiff_t>(size);
}

PageKind KindOfPage(const HandleSlot* slot) {
    return KindOf(PageBase(slot->block));
}

TEST(Handles, PlacesAndCounts) {
    struct Step {
        char call;  // L lock, U unlock, F fix, V unfix
        bool works;
        std::uint32_t count;
        bool moveable;
    };
    struct Row {
        std::uint32_t flags;
        std::vector<Step> steps;
    };
    const Row rows[] = {
        {AllocRelocatable,
         {{'U', false, 0, true},
          {'V', false, 0, true},
          {'L', true, 1, true},
          {'L', true, 2, true},
          {'F', false, 2, true},
          {'U', true, 1, true},
          {'U', true, 0, true},
          {'F', true, 1, false},
          {'L', false, 1, false},
          {'U', false, 1, false},
          {'F', true, 2, false},
          {'V', true, 1, false},
          {'V', true, 0, true},
          {'L', true, 1, true}}},
        {0,
         {{'L', false, 1, false},
          {'F', true, 2, false},
          {'V', true, 1, false},
          {'V', true, 0, true},
          {'V', false, 0, true}}},
    };
    for (const Row& row : rows) {
        for (const std::uint32_t size : {100U, kLarge}) {
            TestPool pool;
            RaisedErrors errors;
            HandleSlot* slot = Make(pool, size, row.flags);
            char* block = slot->block;
            for (const Step& step : row.steps) {
                const std::uint32_t before = RelocLockCount(slot);
                if (step.call == 'L' || step.call == 'F') {
                    char* locked = step.call == 'L' ? RelocLock(slot) : RelocFix(slot);
                    EXPECT_EQ(locked, step.works ? slot->block : nullptr);
                } else {
                    const std::uint32_t left =
                        step.call == 'U' ? RelocUnlock(slot) : RelocUnfix(slot);
                    EXPECT_EQ(left, step.works ? before - 1 : kNoCount);
                }
                EXPECT_EQ(errors.Take(), step.works ? Raised{} : Raised{MEM_LOCK_ERROR});
                EXPECT_EQ(RelocLockCount(slot), step.count) << step.call;
                EXPECT_EQ(RelocIsMoveable(slot), step.moveable) << step.call;
                const PageKind small = step.moveable ? kKindRelocatable : kKindVariable;
                EXPECT_EQ(KindOfPage(slot), size == kLarge ? kKindLarge : small);
                EXPECT_TRUE(size != kLarge || slot->block == block) << "a large block stays";
                EXPECT_TRUE(Kept(slot, size));
                EXPECT_TRUE(Intact(pool));
            }
        }
    }
}

TEST(Handles, CountEndsAt255) {
    TestPool pool;
    RaisedErrors errors;
    HandleSlot* locked = Make(pool, 10);
    HandleSlot* fixed = Make(pool, 10);
    for (int i = 0; i < 255; ++i) {
        EXPECT_EQ(RelocLock(locked), locked->block);
        EXPECT_EQ(RelocFix(fixed), fixed->block);
    }
    EXPECT_EQ(errors.Take(), Raised{});
    EXPECT_EQ(RelocLock(locked), nullptr);
    EXPECT_EQ(RelocFix(fixed), nullptr);
    EXPECT_EQ(errors.Take(), (Raised{MEM_LOCK_ERROR, MEM_LOCK_ERROR}));
    EXPECT_EQ(RelocLockCount(locked), 255U);
    EXPECT_EQ(RelocLockCount(fixed), 255U);
    EXPECT_EQ(RelocFree(locked), 1) << "locked or not";
}

TEST(Handles, ResizeKeepsFamilyAndCount) {
    struct Row {
        bool fixed;
        std::uint32_t locks, from, to, flags;
        bool works;
        PageKind kind;
    };
    const Row rows[] = {
        {false, 0, 100, 3000, 0, true, kKindRelocatable},
        {false, 1, 100, 3000, 0, false, kKindRelocatable},
        {false, 2, 100, 3000, AllocRelocatable, true, kKindRelocatable},
        {false, 2, 100, 3000, AllocRelocatable | ResizeNoMove, false, kKindRelocatable},
        {true, 0, 100, 3000, 0, false, kKindVariable},
        {true, 0, 100, 3000, AllocRelocatable, true, kKindVariable},
        {false, 1, 100, kLarge, AllocRelocatable, true, kKindLarge},
        {true, 0, 100, kLarge, AllocRelocatable, true, kKindLarge},
        {false, 1, kLarge, 200, AllocRelocatable, true, kKindRelocatable},
        {true, 0, kLarge, 200, AllocRelocatable, true, kKindVariable},
        {false, 1, kLarge, 200000, AllocRelocatable, true, kKindLarge},
        {false, 1, kLarge, 200000, 0, false, kKindLarge},
        {false, 1, kLarge, 200, 0, true, kKindLarge},
        {true, 0, kLarge, 200000, AllocRelocatable | AllocZero, true, kKindLarge},
    };
    for (const Row& row : rows) {
        TestPool pool;
        RaisedErrors errors;
        const std::uint32_t family = row.fixed ? 0U : AllocRelocatable;
        HandleSlot* below = Make(pool, 50, family);
        HandleSlot* slot = Make(pool, row.from, family);
        HandleSlot* above = Make(pool, 50, family);
        for (std::uint32_t i = 0; i < row.locks; ++i) RelocLock(slot);
        const std::uint32_t count = RelocLockCount(slot);
        char* block = slot->block;
        EXPECT_EQ(RelocResize(slot, row.to, row.flags), row.works ? slot : nullptr);
        EXPECT_EQ(errors.Take(), row.works ? Raised{} : Raised{MEM_RESIZE_FAILED});
        EXPECT_TRUE(row.works || slot->block == block);
        EXPECT_EQ(KindOfPage(slot), row.kind);
        EXPECT_EQ(RelocIsMoveable(slot), !row.fixed);
        EXPECT_EQ(RelocLockCount(slot), count);
        EXPECT_GE(RelocSize(slot), row.works ? row.to : row.from);
        EXPECT_TRUE(Kept(slot, std::min(row.from, row.to)));
        EXPECT_TRUE(Kept(below, 50) && Kept(above, 50));
        EXPECT_TRUE(Intact(pool));
        EXPECT_EQ(RelocResize(slot, 0, 0), nullptr);
        EXPECT_EQ(errors.Take(), Raised{MEM_ALLOC_ZERO});
        EXPECT_EQ(RelocFree(slot), 1);
        EXPECT_TRUE(Intact(pool)) << "the pin goes with the block";
    }
}

TEST(Handles, InvalidOnes) {
    TestPool pool;
    RaisedErrors errors;
    HandleSlot* slot = Make(pool, 10);
    HandleSlot* other = Make(pool, 10);
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
    EXPECT_TRUE(Kept(other, 10));
    EXPECT_EQ(RelocAlloc(pool, 0, 0), nullptr);
    EXPECT_EQ(Make(pool, 8), slot) << "the slot given back last";
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
        {"f32 u24 f40 l16", 65535, "u24 f72 l16", 72, true},
        {"f32 u24 u16 f40 l16", 65535, "u24 u16 f72 l16", 72, true},
        {"f32 u24 l16 f20 l16", 65535, "f32 u24 l16 f20 l16", 32, true},
        {"f32 l16 u24 f40", 65535, "f32 l16 u24 f40", 40, true},
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
        {{"f32 u24 f40 l16", "f32 l16"}, 64, {"u24 f72 l16", "f32 l16"}, 0},
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
        const std::vector<WrittenPage> pages = {
            {pool, "~u24 u32 l16"}, {pool, "~u40 f20 u20"}, {pool, "~u100 f24 u16"}};
        pool->floor = atFloor ? pool->footprint : 0;
        EXPECT_EQ(PoolCompact(pool), atFloor ? 0U : 2 * 16384U);
        EXPECT_EQ(RingLength(pool->pageLists[kKindRelocatable]), atFloor ? 3U : 1U);
        for (const WrittenPage& page : pages) EXPECT_TRUE(page.HoldsItsBytes());
        EXPECT_TRUE(Intact(pool));
    }
}

TEST(Compaction, EmptiedPageStaysForAnyOtherNeed) {
    TestPool pool;
    const WrittenPage page(pool, "~u40 f20 u20");
    const WrittenPage other(pool, "~u24 l16");
    const std::uint16_t whole = EmptyPageBlock(16384);
    EXPECT_EQ(CompactMoveablePages(pool, whole), whole);
    EXPECT_EQ(page->blockCount, 0);
    EXPECT_EQ(other->blockCount, 4);
    EXPECT_EQ(page->rover, FirstBlock(page.Page()));
    EXPECT_EQ(pool->pageLists[kKindRelocatable], page.Link());
    EXPECT_TRUE(page.HoldsItsBytes() && other.HoldsItsBytes());
}

std::vector<std::string> hookCalls;

TEST(Compaction, HooksAreAskedBeforeMoreMemory) {
    TestPool pool;
    const WrittenPage page(pool, "f20 l16 f24 l16");
    pool->compactPool = [](HeapPool*, std::uint16_t need) -> std::uint16_t {
        hookCalls.push_back("pool " + std::to_string(need / kScale));
        return 0;
    };
    pool->compactPage = [](HeapPage*, std::uint16_t need, char* start) -> std::uint16_t {
        hookCalls.push_back((start == nullptr ? "page " : "part ") + std::to_string(need / kScale));
        return 0;
    };
    struct Row {
        std::uint32_t flags, hint;
        std::vector<std::string> calls;
        std::uint32_t hintAfter;
    };
    constexpr std::uint32_t kOnlyHere = AllocNoNewPage | AllocNoLarge;
    for (const Row& row :
         {Row{AllocRelocatable, 40, {"page 40", "pool 40"}, 24},
          Row{AllocRelocatable, 36, {"pool 40"}, 36},
          Row{AllocRelocatable | AllocNoCompact, 40, {}, 24}, Row{0, 40, {}, 40}}) {
        hookCalls.clear();
        SetFreeHint(page.Link(), static_cast<std::uint16_t>(row.hint * kScale));
        EXPECT_EQ(VariableAlloc(pool, row.flags | kOnlyHere, 40 * kScale - kHeaderSize), nullptr);
        EXPECT_EQ(hookCalls, row.calls) << row.flags;
        EXPECT_EQ(page.Link()->freeHint, row.hintAfter * kScale);
    }
}

}  // namespace
