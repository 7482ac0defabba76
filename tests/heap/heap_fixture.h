// What the tests of the heap share: pools that are checked when their scope ends, a handler that
// keeps the errors, and pages written and read as a line of text.
//
// Sizes in the tests are those of 4-byte pointers. kScale brings them to this machine's granule.
#pragma once

#include <gtest/gtest.h>

#include <random>
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

using Raised = std::vector<std::int32_t>;

/// The handler while it lives: keeps the errors of each thread apart, and answers all with 0.
class RaisedErrors {
  public:
    RaisedErrors() : previous_(PoolSetErrorHandler(Handle)) {}
    ~RaisedErrors() {
        PoolSetErrorHandler(previous_);
        Take();
    }
    RaisedErrors(const RaisedErrors&) = delete;
    RaisedErrors& operator=(const RaisedErrors&) = delete;

    /// Those of this thread since its last call.
    static Raised Take() { return std::exchange(OfThisThread(), {}); }
    static const HeapPool* LastPool() { return lastPool; }

  private:
    static Raised& OfThisThread() {
        thread_local Raised raised;
        return raised;
    }
    static inline thread_local const HeapPool* lastPool = nullptr;
    static std::int32_t Handle(const HeapErrorRecord* record) {
        OfThisThread().push_back(record->error);
        lastPool = record->pool;
        return 0;
    }

    HeapErrorHandler previous_;
};

inline bool AllAre(const char* block, std::uint32_t from, std::uint32_t to, char byte) {
    return std::all_of(block + from, block + to, [byte](char at) { return at == byte; });
}

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    std::uint32_t Below(std::size_t bound) { return static_cast<std::uint32_t>(engine_() % bound); }

  private:
    std::mt19937 engine_;
};

inline std::vector<PageLink*> RingOf(PageLink* head) {
    std::vector<PageLink*> ring;
    if (head != nullptr) ring.push_back(head);
    while (head != nullptr && ring.back()->next != head) ring.push_back(ring.back()->next);
    return ring;
}

/// A moveable page that is laid out block by block, behind a locked block which is not shown:
/// "f32 u24 l40" is a free block, an unlocked and a locked one.
class WrittenPage {
  public:
    WrittenPage(HeapPool* pool, const std::string& blocks)
        : page_(PageAcquire(pool, kKindRelocatable, pool->pageSize, 0)) {
        std::istringstream words(blocks);
        std::vector<std::pair<char, std::uint32_t>> wanted;
        std::uint32_t rest = LargestFreeBlock(page_);
        for (std::string word; words >> word; rest -= wanted.back().second) {
            wanted.emplace_back(word[0], std::stoul(word.substr(1)) * kScale);
        }
        RelocLock(New(pool, rest));
        std::vector<HandleSlot*> made;
        for (auto [state, size] : wanted) made.push_back(New(pool, size));
        for (std::size_t i = 0; i < made.size(); ++i) Settle(wanted[i].first, made[i]);
    }

    HeapPage* operator->() const { return page_; }
    HeapPage* Page() const { return page_; }
    PageLink* Link() const { return page_->link; }
    /// Of the n-th block that was not written as free.
    HandleSlot* Slot(std::size_t n) const { return slots_[n]; }
    /// The n-th block of those shown, as the page stands.
    char* Block(std::size_t n) const {
        char* block = BlockAfter(FirstBlock(page_));
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
        for (std::size_t i = 0; i < slots_.size(); ++i) {
            const std::uint32_t size = std::min(RelocSize(slots_[i]), slots_[i]->size);
            if (!AllAre(slots_[i]->block, 0, size, static_cast<char>(i + 1))) text += " damaged";
        }
        return text;
    }

  private:
    static HandleSlot* New(HeapPool* pool, std::uint32_t total) {
        // The first block would be a large one else.
        const auto threshold = std::exchange(pool->largeThreshold, pool->pageSize);
        HandleSlot* slot = RelocAlloc(pool, AllocRelocatable, total - kHeaderSize - kTrailerSize);
        pool->largeThreshold = threshold;
        return slot;
    }

    /// Each block keeps in `size` how many bytes it was given.
    void Settle(char state, HandleSlot* slot) {
        if (state == 'f') {
            RelocFree(slot);
            return;
        }
        if (state == 'l') RelocLock(slot);
        slots_.push_back(slot);
        slot->size = RelocSize(slot);
        std::memset(slot->block, static_cast<int>(slots_.size()), slot->size);
    }

    HeapPage* page_;
    std::vector<HandleSlot*> slots_;
};

}  // namespace veldt::tests
