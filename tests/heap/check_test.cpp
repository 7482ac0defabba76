// The check of the invariants must see each of them broken, name it, and survive what it finds.
#include "heap/regions.h"
#include "heap/ring_index.h"
#include "heap_fixture.h"

namespace {

using namespace veldt::tests;

class Damage : public testing::Test {
  protected:
    /// Puts `value` at `place`, expects the check to say `what`, and puts things right again.
    template <class T>
    void Expect(const char* what, void* place, std::type_identity_t<T> value) {
        const T before = Load<T>(place);
        Store<T>(place, value);
        const HeapFault fault = PoolFault(pool);
        EXPECT_STREQ(fault.what != nullptr ? fault.what : "nothing", what);
        EXPECT_EQ(PoolCheck(pool), 0);
        Store<T>(place, before);
        ASSERT_TRUE(Intact(pool)) << what;
    }

    using Word = std::uint16_t;
    TestPool pool;
    char* const wild = reinterpret_cast<char*>(std::uintptr_t{0x10});
};

TEST_F(Damage, VariablePages) {
    const WrittenPage page(pool, "u24 f32 u40 f20 l16");
    char* used = page.Block(0);
    char* freeBlock = page.Block(1);
    char* trailer = TrailerOf(used);
    Expect<Word>("blocks do not tile the page", used, 3);
    Expect<Word>("blocks do not tile the page", used, 0xFFFF);
    Expect<Word>("header is wrong about the block before it", used,
                 HeaderOf(used) ^ kPreviousInUse);
    Expect<Word>("tags of a free block disagree", page.Block(2) - 2, 4);
    Expect<Word>("block in a moveable page has no trailer", used, HeaderOf(used) & 0x7FFF);
    Expect<char*>("slot and block do not point at each other", trailer, nullptr);
    Expect<char*>("slot and block do not point at each other", trailer, wild);
    Expect<HandleSlot*>("slot and block do not point at each other", trailer, page.Slot(1));
    Expect<char*>("slot and block do not point at each other", page.Slot(0), used);
    for (char* ring : {freeBlock + kRingNext, freeBlock + kRingPrev, page->sentinel + kRingNext}) {
        for (char* value :
             {static_cast<char*>(nullptr), wild, used, freeBlock, page->sentinel - 2}) {
            Expect<char*>("free ring is broken", ring, value);
        }
    }
    Expect<char*>("rover is not in the ring", &page->rover, used);
    Expect<Word>("blocks in use are miscounted", &page->blockCount, 3);
    Expect<Word>("sentinel is wrong about the block before it", page->sentinel, kBlockInUse);
    Expect<Word>("pinned blocks are miscounted", &page.Link()->linkFlags, 1);
    Expect<std::uint32_t>("pinned blocks are miscounted", &page.Slot(0)->lockCount, 1);

    HeapPage* plain = PageBase(PoolAlloc(pool, 1000, 0));
    Expect<Word>("freeHint hides a free block", &plain->link->freeHint, 800);
    HeapPage* second = PageAcquire(pool, kKindVariable, 4096, 0);
    Expect<Word>("ring index disagrees with the ring", &second->link->freeHint, 0xFFF8);
    Expect<std::uintptr_t>("ring index lacks the ring", &NoteOf(second).ringPlace, 0);
    PageRelease(second, 0);

    HeapPage* third = PageAcquire(pool, kKindRelocatable, 4096, 0);
    const auto [leaf, place] = PlaceOf(third);
    third->link->freeHint = 0;  // of which the index need not hear
    Expect<std::uint64_t>("ring index disagrees with the ring", &leaf->hinted,
                          leaf->hinted & ~(std::uint64_t{1} << place));
    PageRelease(third, 0);

    UnlinkFree(freeBlock);
    EXPECT_STREQ(PoolFault(pool).what, "a free block is not in the ring");
    InsertFree(page.Page(), freeBlock);
}

TEST_F(Damage, FixedAndLargePages) {
    char* block = PoolAlloc(pool, 8, 0);
    HeapPage* page = PageBase(block);
    char* chain = page->freeChain;
    Expect<char*>("free chain leaves the blocks of the page", &page->freeChain, wild);
    Expect<char*>("free chain leaves the blocks of the page", &page->freeChain, block + 2);
    Expect<char*>("free chain leaves the blocks of the page", chain, page->carveEnd);
    Expect<char*>("free chain runs in a circle", chain, chain);
    Expect<char*>("free blocks and blockCount do not add up", chain, nullptr);
    Expect<Word>("free blocks and blockCount do not add up", &page->blockCount, 2);
    Expect<char*>("carved area does not fill the page", &page->carveEnd, block);
    Expect<Word>("freeHint hides a free block", &page->link->freeHint, 0);

    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 9000);
    HeapPage* large = PageBase(slot->block);
    Expect<Word>("large page does not hold one block", &large->blockCount, 0);
    Expect<char*>("slot and large page do not point at each other", &large->ownerSlot, wild);
    Expect<HandleSlot*>("slot and large page do not point at each other", &large->ownerSlot,
                        slot + 1);
    Expect<HandleSlot*>("a slot is lost", &large->ownerSlot, nullptr);
}

TEST_F(Damage, PoolsAndLinks) {
    HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, 100);
    HeapPage* page = PageBase(slot->block);
    HeapPage* other = PageBase(PoolAlloc(pool, 5000, 0));
    PageLink* link = page->link;
    Expect<Word>("not a pool", &pool->signature, 0xBEAF);
    Expect<std::uint32_t>("footprint does not add up", &pool->footprint, pool->footprint + 4096);
    Expect<PageLink*>("a link is lost", &pool->freeLinks, pool->freeLinks->next);
    Expect<PageLink*>("a link is lost", &pool->freeLinks->next, pool->freeLinks);
    Expect<HandleSlot*>("a slot is lost", &pool->freeSlots, nullptr);
    Expect<char*>("chain of free slots is broken", &pool->freeSlots->block, wild);
    Expect<HandleSlot*>("chain of free slots is broken", &pool->freeSlots->block, pool->freeSlots);
    Expect<PageLink*>("ring of links is broken", &link->next, other->link);
    Expect<PageLink*>("page and link do not belong together", &page->link, other->link);
    Expect<HeapPage*>("page and link do not belong together", &link->page, other);
    Expect<Word>("page and link do not belong together", &page->signature, 0xCAD0);
    SetMark(page, MarkOf(kMarkPage, 4096));
    EXPECT_STREQ(PoolFault(pool).what, "address map is wrong about a page");
    SetMark(page, MarkOf(kMarkPage, 16384));
    SetReach(page, 1);
    EXPECT_STREQ(PoolFault(pool).what, "address map is wrong about a page's blocks");
    SetReach(page, ReachOf(page));
}

}  // namespace
