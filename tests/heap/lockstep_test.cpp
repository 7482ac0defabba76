// The ring index must find the link that the plain walk of the ring finds: on rings made up at
// random, and in a whole heap that runs in step with one that walks.
#include "heap/locks.h"
#include "heap/quick_calls.h"
#include "heap/ring_index.h"
#include "heap_fixture.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

template <class Wanted>
PageLink* WalkFrom(PageLink* head, const Wanted& wanted) {
    PageLink* link = head;
    do {
        if (wanted(OfferOf(link))) return link;
        link = link->next;
    } while (link != head);
    return nullptr;
}

/// Searches from `link` and from behind it for offers of every kind.
void ExpectSameAsWalk(PageLink* link, std::uint32_t hint) {
    const auto largeEnough = [hint](const Offer& offer) { return offer.hint >= hint; };
    const auto slidable = [hint](const Offer& offer) { return offer.hint >= hint || offer.unslid; };
    const auto unpinned = [hint](const Offer& offer) { return offer.unpinnedHint > hint; };
    const auto check = [link](const auto& wanted) {
        EXPECT_EQ(RingFirstFrom(link, wanted), WalkFrom(link, wanted));
        EXPECT_EQ(RingFirstBehind(link, wanted), WalkFrom(link->next, wanted));
    };
    check(largeEnough);
    check(slidable);
    check(unpinned);
    check(HintOf{static_cast<std::uint16_t>(hint + 1)});
    // The search has told the index of the hints on its way that had fallen to 0.
    const PageLink* hinted = RingFirstBehind(link, HintOf{1});
    if (link->next != link) {
        EXPECT_EQ(RingHintedBehind(link->page), hinted != nullptr ? hinted->page : nullptr);
    }
}

TEST(RingIndex, MadeUpRings) {
    Random random(Seed());
    for (int round = 0; round < 30; ++round) {
        HeapPool* pool = PoolCreate(0, 0, 0);
        PageLink*& head = pool->pageLists[kKindVariable];
        // A deep index that grows in all places and is taken down again, or a shallow one.
        const bool deep = round % 6 == 0;
        const std::uint32_t most = 1 + random.Below(deep ? 1000 : 20);
        std::vector<PageLink*> links;
        for (std::uint32_t step = 0; step < (deep ? 3000 : 400); ++step) {
            const bool growing = links.size() < most && (!deep || step < most);
            const std::uint32_t action = growing && deep ? 0 : random.Below(deep ? 4 : 8);
            if (links.empty() || (growing && action == 0)) {
                links.push_back(PageAcquire(pool, kKindVariable, 4096, 0)->link);
                if (random.Below(4) == 0) head = links[random.Below(links.size())];
                continue;
            }
            PageLink*& place = links[random.Below(links.size())];
            PageLink* link = place;
            if (action == 1) {
                PageRelease(link->page, 0);
                place = links.back();
                links.pop_back();
                continue;
            }
            if (action == 2) {
                head = link;
            } else if (action == 3) {
                link->linkFlags =
                    static_cast<std::uint16_t>(random.Below(2) * kNothingToSlide + random.Below(3));
                RingIndexNote(link);
            } else {
                SetFreeHint(link, static_cast<std::uint16_t>(random.Below(20) * kGranule));
            }
            ExpectSameAsWalk(link, random.Below(21) * kGranule);
            const HeapFault fault = RingIndexFault(link);
            ASSERT_FALSE(fault) << fault.what;
        }
        PoolDestroy(pool);
    }
}

// What a heap without the index does, step by step
// -------------------------------------------------

PageLink* WalkBest(PageLink* head, std::uint16_t need) {
    PageLink* best = head;
    for (PageLink* link : RingOf(head)) {
        if ((link->linkFlags & kNothingToSlide) == 0) {
            SetFreeHint(link, SlidePage(link->page, need, nullptr));
        }
        const int pinned = link->linkFlags & kPinnedMask;
        const int bestPinned = best->linkFlags & kPinnedMask;
        if (pinned < bestPinned || (pinned == bestPinned && link->freeHint > best->freeHint))
            best = link;
        if (link->freeHint >= need) return link;
    }
    return best;
}

std::uint16_t WalkCompact(HeapPool* pool, std::uint16_t need) {
    PageLink*& head = pool->pageLists[kKindRelocatable];
    if (head == nullptr) return 0;
    const HandleHold hold;
    PageLink* best = WalkBest(head, need);
    while (best->freeHint < need && best->next != best) {
        head = best->next;
        best->freeHint = 0;
        const std::uint16_t reached = EvacuatePage(best->page, need);
        if (reached != kPageGone) {
            SetFreeHint(best, reached);
            break;
        }
        best = head;
    }
    head = best;
    return best->freeHint;
}

char* WalkAlloc(HeapPool* pool, std::uint32_t flags, std::uint32_t size) {
    const auto kind = static_cast<PageKind>(flags & AllocRelocatable);
    const std::uint16_t need = BlockSizeFor(size);
    PageLink*& head = pool->pageLists[kind];
    for (PageLink* link : RingOf(head)) {
        if (need > link->freeHint) continue;
        if (char* block = VariablePageAlloc(link->page, need, flags)) {
            head = link;
            return block;
        }
    }
    for (;;) {
        if (kind == kKindRelocatable && (flags & AllocNoCompact) == 0 &&
            WalkCompact(pool, need) >= need) {
            flags |= AllocNoCompact;
        } else {
            PageAcquire(pool, kind, pool->pageSize, 0);
        }
        if (need > head->freeHint) continue;
        if (char* block = VariablePageAlloc(head->page, need, flags)) return block;
    }
}

char* WalkFixed(HeapPool* pool) {
    PageLink*& head = pool->pageLists[kKindFixed];
    PageLink* link = head;
    while (link != nullptr && link->page->freeChain == nullptr) {
        link->freeHint = 0;
        RingIndexNoteHinted(link->page, false);
        link = link->next == head ? nullptr : link->next;
    }
    HeapPage* page =
        link != nullptr ? link->page : PageAcquire(pool, kKindFixed, pool->pageSize, 0);
    head = page->link;
    ++page->blockCount;
    return std::exchange(page->freeChain, Load<char*>(page->freeChain));
}

/// A heap with the index and one without, given the same requests. The first takes the quick calls
/// where they serve.
class TwoHeaps {
  public:
    explicit TwoHeaps(unsigned seed) : random_(seed) {
        for (HeapPool* pool : {indexed_.operator HeapPool*(), walked_.operator HeapPool*()}) {
            pool->compactPool = CompactMoveablePages;
            pool->compactPage = SlidePage;
        }
        walked_->compactPool = WalkCompact;
    }

    void Step() {
        const std::uint32_t action = random_.Below(blocks_.size() < 400 ? 16 : 8);
        if (action >= 6 || blocks_.empty()) return New();
        auto& [mine, theirs] = blocks_[random_.Below(blocks_.size())];
        if (action == 0) {
            RelocLock(mine);
            RelocLock(theirs);
        } else if (action <= 2 && mine->lockCount != 0) {
            RelocUnlock(mine);
            RelocUnlock(theirs);
        } else if (action == 3 && random_.Below(50) == 0) {
            EXPECT_EQ(PoolCompact(indexed_), PoolCompact(walked_));
        } else if (action == 4) {
            pointers_.size() < kPointers ? NewPointer(1 + random_.Below(300)) : FreePointer();
        } else if (action == 5) {
            if (!RelocFreeQuickly(mine, [] {})) RelocFree(mine);
            RelocFree(theirs);
            std::tie(mine, theirs) = blocks_.back();
            blocks_.pop_back();
        }
    }

    void ExpectSame() {
        ASSERT_TRUE(Intact(indexed_));
        ASSERT_TRUE(Intact(walked_));
        for (const PageKind kind : {kKindRelocatable, kKindVariable, kKindFixed}) {
            ExpectSameRings(RingOf(indexed_->pageLists[kind]), RingOf(walked_->pageLists[kind]));
        }
        for (const auto& [mine, theirs] : pointers_) ExpectSamePlace(mine, theirs);
        for (const auto& [mine, theirs] : blocks_) ExpectSamePlace(mine->block, theirs->block);
    }

  private:
    void New() {
        const std::uint32_t size = 1 + random_.Below(random_.Below(8) == 0 ? 3000 : 300);
        const std::uint32_t kind = random_.Below(4);
        if (kind == 0) return NewPointer(random_.Below(3) == 0 ? size % kSmall + 1 : size);
        const std::uint32_t flags = kind != 1 ? AllocRelocatable : 0U;
        const std::uint32_t request = size + kTrailerSize;
        auto [mine, raised] = flags != 0 ? RelocAllocQuickly(indexed_, size) : SlotGrant{};
        if (mine == nullptr) mine = RelocAlloc(indexed_, flags, size);
        if (raised != nullptr) RingIndexNote(raised);
        HandleSlot* theirs = SlotChainPop(walked_);
        theirs->block = WalkAlloc(walked_, flags, request);
        theirs->lockCount = flags == 0 ? 1 : 0;
        SetBits(HeaderOfData(theirs->block), kBlockRelocatable);
        SetSlot(HeaderOfData(theirs->block), theirs);
        blocks_.emplace_back(mine, theirs);
    }

    void NewPointer(std::uint32_t size) {
        auto [mine, usable] = AllocQuickly(indexed_, size);
        if (mine == nullptr && random_.Below(2) == 0) {
            const Grant fromRing = AllocBySearch(indexed_, size);
            mine = fromRing.block;
            usable = fromRing.usable;
        }
        if (mine == nullptr) {
            mine = PoolAlloc(indexed_, size, 0);
            usable = UsableSize(mine);
        }
        char* theirs = size <= kSmall ? WalkFixed(walked_) : WalkAlloc(walked_, 0, size);
        EXPECT_EQ(usable, UsableSize(theirs));
        pointers_.emplace_back(mine, theirs);
    }

    void FreePointer() {
        auto& [mine, theirs] = pointers_[random_.Below(pointers_.size())];
        if (!FreeQuickly(mine, [] {})) PoolFree(mine);
        PageBase(theirs)->freeBlock(theirs);
        std::tie(mine, theirs) = pointers_.back();
        pointers_.pop_back();
    }

    void ExpectSameRings(const std::vector<PageLink*>& mine, const std::vector<PageLink*>& theirs) {
        ASSERT_EQ(mine.size(), theirs.size());
        for (std::size_t i = 0; i < mine.size(); ++i) {
            ordinals_[mine[i]->page] = ordinals_[theirs[i]->page] = i;
            EXPECT_EQ(mine[i]->freeHint, theirs[i]->freeHint);
            EXPECT_EQ(mine[i]->linkFlags, theirs[i]->linkFlags);
            ExpectSamePlace(mine[i]->page->rover, theirs[i]->page->rover);
            if (KindOf(mine[i]->page) != kKindFixed) ExpectSameAsWalk(mine[i], random_.Below(4000));
        }
    }

    void ExpectSamePlace(char* mine, char* theirs) {
        EXPECT_EQ(OffsetInUnit(mine), OffsetInUnit(theirs));
        EXPECT_EQ(ordinals_[PageBase(mine)], ordinals_[PageBase(theirs)]);
    }

    static constexpr std::uint32_t kSmall = 160;
    static constexpr std::size_t kPointers = 600;  ///< several pages of each kind

    Random random_;
    TestPool indexed_{kSmall};
    TestPool walked_{kSmall};
    std::vector<std::pair<char*, char*>> pointers_;
    std::vector<std::pair<HandleSlot*, HandleSlot*>> blocks_;
    std::map<const HeapPage*, std::size_t> ordinals_;
};

TEST(RingIndex, WholeHeapInStepWithOneThatWalks) {
    TwoHeaps heaps(Seed());
    for (int step = 0; step < 20000 && !testing::Test::HasFailure(); ++step) {
        heaps.Step();
        if (step < 1000 || step % 20 == 0) heaps.ExpectSame();
    }
}

}  // namespace
