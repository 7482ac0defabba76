// What the tests of the heap share: pools that are checked when their scope ends, a handler that
// keeps the errors, and pages written and read as a line of text.
//
// Sizes in the tests are those of 4-byte pointers. kScale brings them to this machine's granule.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "heap/compaction.h"
#include "heap/errors.h"
#include "heap/pages.h"
#include "heap/pools.h"
#include "heap/relocatable_blocks.h"
#include "heap/variable_blocks.h"

namespace veldt::tests {

using namespace heap;

inline constexpr std::uint32_t kScale = kPointer / 4;

/// Of what is written down for 4-byte pointers alone.
inline void ExpectFigure(std::uint64_t value, std::uint64_t with4BytePointers) {
    if (kPointer == 4) {
        EXPECT_EQ(value, with4BytePointers);
    }
}

inline testing::AssertionResult Intact(HeapPool* pool) {
    const HeapFault fault = PoolFault(pool);
    return fault ? testing::AssertionFailure() << fault.what << " at " << fault.where
                 : testing::AssertionSuccess();
}

class TestPool {
  public:
    explicit TestPool(std::uint32_t fixedSize = 20 * kScale, std::uint32_t flags = 0)
        : pool_(PoolCreate(static_cast<std::uint16_t>(fixedSize), 0, flags)) {}
    ~TestPool() {
        EXPECT_TRUE(Intact(pool_));
        EXPECT_EQ(PoolDestroy(pool_), 1);
    }
    TestPool(const TestPool&) = delete;
    TestPool& operator=(const TestPool&) = delete;

    operator HeapPool*() const { return pool_; }
    HeapPool* operator->() const { return pool_; }

  private:
    HeapPool* pool_;
};

/// The handler while it lives: answers with the verdicts given, then with 0.
class RaisedErrors {
  public:
    explicit RaisedErrors(std::vector<std::int32_t> verdicts = {}) : verdicts_(verdicts) {
        current = this;
        previous_ = PoolSetErrorHandler(Handle);
    }
    ~RaisedErrors() { PoolSetErrorHandler(previous_); }
    RaisedErrors(const RaisedErrors&) = delete;
    RaisedErrors& operator=(const RaisedErrors&) = delete;

    /// Those since the last call.
    std::vector<std::int32_t> Take() { return std::exchange(raised_, {}); }
    const HeapPool* LastPool() const { return lastPool_; }

  private:
    static inline RaisedErrors* current = nullptr;
    static std::int32_t Handle(const HeapErrorRecord* record) {
        RaisedErrors& self = *current;
        self.raised_.push_back(record->error);
        self.lastPool_ = record->pool;
        const std::size_t at = self.answered_++;
        return at < self.verdicts_.size() ? self.verdicts_[at] : 0;
    }

    HeapErrorHandler previous_ = nullptr;
    std::vector<std::int32_t> verdicts_;
    std::vector<std::int32_t> raised_;
    std::size_t answered_ = 0;
    const HeapPool* lastPool_ = nullptr;
};

using Raised = std::vector<std::int32_t>;

inline std::uint32_t RingLength(const PageLink* head) {
    std::uint32_t length = 0;
    for (const PageLink* link = head; link != nullptr;
         link = link->next == head ? nullptr : link->next) {
        ++length;
    }
    return length;
}

/// A moveable page whose end is laid out block by block, behind a locked block that is not shown:
/// "f32 u24 l40" is a free block, an unlocked and a locked one. "~u24" stands at the page's start,
/// and the rest is free.
class WrittenPage {
  public:
    WrittenPage(HeapPool* pool, const std::string& blocks)
        : page_(PageAcquire(pool, kKindRelocatable, pool->pageSize, 0)) {
        pool->compactPool = CompactMoveablePages;
        pool->compactPage = SlidePage;
        std::istringstream words(blocks.substr(blocks[0] == '~'));
        std::vector<std::pair<char, std::uint32_t>> wanted;
        std::uint32_t shown = 0;
        for (std::string word; words >> word; shown += wanted.back().second) {
            wanted.emplace_back(word[0], std::stoul(word.substr(1)) * kScale);
        }
        if (const std::uint32_t rest = LargestFreeBlock(page_) - shown; blocks[0] != '~') {
            HandleSlot* filler = New(pool, rest);
            filler->size = kFiller;
            RelocLock(filler);
        }
        std::vector<HandleSlot*> made;
        for (auto [state, size] : wanted) made.push_back(New(pool, size));
        for (std::size_t i = 0; i < made.size(); ++i) Settle(wanted[i].first, made[i]);
    }

    HeapPage* operator->() const { return page_; }
    HeapPage* Page() const { return page_; }
    PageLink* Link() const { return page_->link; }
    /// Of the n-th block that was not written as free.
    HandleSlot* Slot(std::size_t n) const { return slots_[n]; }
    void Free(std::size_t n) {
        RelocFree(slots_[n]);
        sizes_[n] = 0;
    }
    /// The n-th block of those shown, as the page stands.
    char* Block(std::size_t n) const {
        char* block = FirstBlock(page_);
        while (IsFiller(block)) block = BlockAfter(block);
        for (; n > 0; --n) block = BlockAfter(block);
        return block;
    }

    /// The page as it stands, with a word more if a block does not hold what it was given.
    std::string Read() const {
        std::string text;
        for (char* block = Block(0); block < page_->sentinel; block = BlockAfter(block)) {
            const bool locked = InUse(block) && SlotOf(block)->lockCount != 0;
            text += text.empty() ? "" : " ";
            text += !InUse(block) ? 'f' : locked ? 'l' : 'u';
            text += std::to_string(UsedSize(block) / kScale);
        }
        return HoldsItsBytes() ? text : text + " damaged";
    }

    bool HoldsItsBytes() const {
        for (std::size_t i = 0; i < slots_.size(); ++i) {
            const std::uint32_t size = sizes_[i] != 0 ? RelocSize(slots_[i]) : 0;
            for (std::size_t at = 0; at < std::min(size, sizes_[i]); ++at) {
                if (slots_[i]->block[at] != static_cast<char>(i + 1)) return false;
            }
        }
        return true;
    }

  private:
    static constexpr std::uint32_t kFiller = 0xF111;

    static bool IsFiller(char* block) { return InUse(block) && SlotOf(block)->size == kFiller; }

    HandleSlot* New(HeapPool* pool, std::uint32_t total) {
        HandleSlot* slot = SlotChainPop(pool);
        slot->block = VariablePageAlloc(page_, static_cast<std::uint16_t>(total),
                                        AllocRelocatable | AllocNoCompact);
        slot->size = 0;
        slot->lockCount = 0;
        SetBits(HeaderOfData(slot->block), kBlockRelocatable);
        SetSlot(HeaderOfData(slot->block), slot);
        return slot;
    }

    void Settle(char state, HandleSlot* slot) {
        if (state == 'f') {
            RelocFree(slot);
            return;
        }
        slots_.push_back(slot);
        sizes_.push_back(RelocSize(slot));
        std::memset(slot->block, static_cast<int>(slots_.size()), sizes_.back());
        if (state == 'l') RelocLock(slot);
    }

    HeapPage* page_;
    std::vector<HandleSlot*> slots_;
    std::vector<std::uint32_t> sizes_;
};

}  // namespace veldt::tests
