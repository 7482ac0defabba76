// The ring index must find the link that the plain walk of the ring finds: on rings made up at
// random, and in a whole heap that runs in step with one that walks.
#include <algorithm>
#include <random>

#include "heap/locks.h"
#include "heap/quick_calls.h"
#include "heap/ring_index.h"
#include "heap_fixture.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    std::uint32_t Below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(engine_() % bound);
    }

  private:
    std::mt19937 engine_;
};

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
}

TEST(RingIndex, MadeUpRings) {
    Random random(Seed());
    for (int round = 0; round < 30; ++round) {
        HeapPool* pool = PoolCreate(0, 0, 0);
        // A deep index that grows in all places and is taken down again, or a shallow one.
        const bool deep = round % 6 == 0;
        const std::uint32_t most = 1 + random.Below(deep ? 1000 : 20);
        std::vector<PageLink*> links;
        for (std::uint32_t i = 0; deep && i < most; ++i) {
            links.push_back(PageAcquire(pool, kKindVariable, 4096, 0)->link);
            if (random.Below(4) == 0) pool->pageLists[kKindVariable] = links[random.Below(i + 1)];
        }
        for (std::uint32_t step = 0; step < (deep ? 2000 : 400); ++step) {
            const std::uint32_t action = random.Below(links.empty() ? 1 : deep ? 4 : 8);
            if (action == 0 && links.size() + (deep ? step : 0) < most) {
                links.push_back(PageAcquire(pool, kKindVariable, 4096, 0)->link);
                continue;
            }
            if (links.empty()) continue;
            const std::size_t at = random.Below(static_cast<std::uint32_t>(links.size()));
            PageLink* link = links[at];
            switch (action) {
                case 1:
                    PageRelease(link->page, 0);
                    links.erase(links.begin() + static_cast<std::ptrdiff_t>(at));
                    continue;
                case 2:
                    pool->pageLists[kKindVariable] = link;
                    break;
                case 3:
                    link->linkFlags = static_cast<std::uint16_t>(random.Below(2) * kNothingToSlide +
                                                                 random.Below(3));
                    RingIndexNote(link);
                    break;
                default:
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
    PageLink* link = head;
    do {
        if ((link->linkFlags & kNothingToSlide) == 0) {
            SetFreeHint(link, SlidePage(link->page, need, nullptr));
        }
        const int pinned = link->linkFlags & kPinnedMask;
        const int bestPinned = best->linkFlags & kPinnedMask;
        if (pinned < bestPinned || (pinned == bestPinned && link->freeHint > best->freeHint))
            best = link;
        if (link->freeHint >= need) return link;
        link = link->next;
    } while (link != head);
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
    PageLink* link = head;
    while (link != nullptr) {
        char* block = need <= link->freeHint ? VariablePageAlloc(link->page, need, flags) : nullptr;
        if (block != nullptr) {
            head = link;
            return block;
        }
        link = link->next == head ? nullptr : link->next;
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
        link = link->next == head ? nullptr : link->next;
    }
    HeapPage* page =
        link != nullptr ? link->page : PageAcquire(pool, kKindFixed, pool->pageSize, 0);
    head = page->link;
    char* block = page->freeChain;
    page->freeChain = Load<char*>(block);
    ++page->blockCount;
    return block;
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
        const std::size_t at = random_.Below(static_cast<std::uint32_t>(blocks_.size()));
        auto& [mine, theirs] = blocks_[at];
        switch (action) {
            case 0:
                RelocLock(mine);
                RelocLock(theirs);
                return;
            case 1:
            case 2:
                if (mine->lockCount == 0) return;
                RelocUnlock(mine);
                RelocUnlock(theirs);
                return;
            case 3:
                if (random_.Below(50) != 0) return;
                EXPECT_EQ(PoolCompact(indexed_), PoolCompact(walked_));
                return;
            case 4:
                if (pointers_.size() < kPointers) return NewPointer(1 + random_.Below(300));
                return FreePointer();
            default:
                if (!RelocFreeQuickly(mine, [] {})) RelocFree(mine);
                RelocFree(theirs);
                blocks_[at] = blocks_.back();
                blocks_.pop_back();
        }
    }

    void ExpectSame() {
        ASSERT_TRUE(Intact(indexed_));
        ASSERT_TRUE(Intact(walked_));
        ExpectSameRings(indexed_->pageLists[kKindRelocatable],
                        walked_->pageLists[kKindRelocatable]);
        ExpectSameRings(indexed_->pageLists[kKindVariable], walked_->pageLists[kKindVariable]);
        ExpectSameRings(indexed_->pageLists[kKindFixed], walked_->pageLists[kKindFixed]);
        for (const auto& [mine, theirs] : pointers_) {
            EXPECT_EQ(OffsetInUnit(mine), OffsetInUnit(theirs));
            EXPECT_EQ(ordinals_[PageBase(mine)], ordinals_[PageBase(theirs)]);
        }
        for (const auto& [mine, theirs] : blocks_) {
            EXPECT_EQ(OffsetInUnit(mine->block), OffsetInUnit(theirs->block));
            EXPECT_EQ(ordinals_[PageBase(mine->block)], ordinals_[PageBase(theirs->block)]);
        }
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
        const std::size_t at = random_.Below(static_cast<std::uint32_t>(pointers_.size()));
        const auto [mine, theirs] = pointers_[at];
        if (!FreeQuickly(mine, [] {})) PoolFree(mine);
        PageBase(theirs)->freeBlock(theirs);
        pointers_[at] = pointers_.back();
        pointers_.pop_back();
    }

    void ExpectSameRings(PageLink* mine, PageLink* theirs) {
        ASSERT_EQ(RingLength(mine), RingLength(theirs));
        const std::uint32_t length = RingLength(mine);
        for (std::uint32_t i = 0; i < length; ++i) {
            ordinals_[mine->page] = i;
            ordinals_[theirs->page] = i;
            EXPECT_EQ(mine->freeHint, theirs->freeHint);
            EXPECT_EQ(mine->linkFlags, theirs->linkFlags);
            EXPECT_EQ(OffsetInUnit(mine->page->rover), OffsetInUnit(theirs->page->rover));
            if (KindOf(mine->page) != kKindFixed) ExpectSameAsWalk(mine, random_.Below(4000));
            mine = mine->next;
            theirs = theirs->next;
        }
    }

    static constexpr std::uint32_t kSmall = 160;
    static constexpr std::size_t kPointers = 600;  ///< several pages of each kind

    Random random_;
    TestPool indexed_{kSmall};
    TestPool walked_{kSmall};
    std::vector<std::pair<char*, char*>> pointers_;
    std::vector<std::pair<HandleSlot*, HandleSlot*>> blocks_;
    std::map<const HeapPage*, std::uint32_t> ordinals_;
};

TEST(RingIndex, WholeHeapInStepWithOneThatWalks) {
    TwoHeaps heaps(Seed());
    for (int step = 0; step < 20000 && !testing::Test::HasFailure(); ++step) {
        heaps.Step();
        if (step < 1000 || step % 20 == 0) heaps.ExpectSame();
    }
}

}  // namespace
