// Moves the blocks of one moveable page into the others, as far as they have room.
#include "heap/block_life.h"
#include "heap/compaction.h"
#include "heap/pages.h"
#include "heap/ring_index.h"
#include "heap/variable_blocks.h"

namespace veldt::heap {

namespace {

/// One walk along a page that gathers runs: stretches of free blocks and of blocks moved away. A
/// run becomes a proper free block when it is closed; until then only its start, if that was a free
/// block, is in the ring.
class Evacuation {
  public:
    Evacuation(HeapPage* page, std::uint16_t need) : page_(page), need_(need) {}

    std::uint16_t Run();

  private:
    enum class Step { kGoOn, kReached, kGone };

    void Extend(char* block, unsigned size) {
        if (run_ == nullptr) {
            run_ = block;
        }
        runSize_ += size;
    }
    bool MoveAway(char* block, std::uint16_t size);
    bool ReleaseIfEmpty();
    void CloseRun(char* block);
    std::uint16_t Finish();

    HeapPage* page_;
    std::uint16_t need_;
    char* run_ = nullptr;  ///< start of the open run
    unsigned runSize_ = 0;
    char* firstClosed_ = nullptr;
    unsigned tooBig_ = 0xFFFF;  ///< the smallest size that found no room elsewhere
    bool slidable_ = false;     ///< an unlocked block stands between two free ones
};

bool CanMove(char* block) {
    return SlotOf(block)->lockCount == 0;
}

/// Into another moveable page, without a new page, a large block or a compaction inside this one.
bool Evacuation::MoveAway(char* block, std::uint16_t size) {
    constexpr std::uint32_t kElsewhere =
        AllocRelocatable | AllocNoNewPage | AllocNoLarge | AllocNoCompact;
    HandleSlot* slot = SlotOf(block);
    char* fresh = VariableAlloc(page_->pool, kElsewhere, size - kHeaderSize);
    if (fresh == nullptr) {
        return false;
    }
    MoveBlock(fresh, DataOf(block), size - kHeaderSize - kTrailerSize);
    SetBits(HeaderOfData(fresh), kBlockRelocatable);
    SetSlot(HeaderOfData(fresh), slot);
    slot->block = fresh;
    return true;
}

bool Evacuation::ReleaseIfEmpty() {
    return --page_->blockCount == 0 && need_ == kNeedEverything && PageRelease(page_, 1) == 1;
}

/// Makes the open run, which ends at `block`, a free block.
void Evacuation::CloseRun(char* block) {
    if (firstClosed_ == nullptr) {
        firstClosed_ = run_;
    }
    const bool joinsRing = InUse(run_);
    SetFooterBefore(block, runSize_);
    SetHeader(run_, runSize_ | kPreviousInUse);
    if (joinsRing) {
        InsertFree(page_, run_);
    }
    ClearBits(block, kPreviousInUse);
}

std::uint16_t Evacuation::Finish() {
    if (slidable_ && !AtMostOneFree(firstClosed_)) {
        return SlidePage(page_, need_, firstClosed_);
    }
    return LargestFreeBlock(page_);
}

std::uint16_t Evacuation::Run() {
    char* block = FirstBlock(page_);
    for (;;) {
        const std::uint16_t size = UsedSize(block);
        char* after = block + size;
        if (!InUse(block)) {
            if (run_ != nullptr) {
                UnlinkFree(block);
            }
            Extend(block, size);
            block = after;
            continue;
        }
        if (runSize_ < need_ && size != 0 && size < tooBig_ && CanMove(block)) {
            if (MoveAway(block, size)) {
                Extend(block, size);
                if (ReleaseIfEmpty()) {
                    return kPageGone;
                }
                block = after;
                continue;
            }
            tooBig_ = size;
        }
        if (run_ != nullptr) {
            CloseRun(block);
            if (runSize_ >= need_) {
                page_->rover = run_;
                if (slidable_ && !AtMostOneFree(run_)) {
                    ClearNothingToSlide(page_->link);
                }
                return static_cast<std::uint16_t>(runSize_);
            }
        }
        if (size == 0) {
            return Finish();
        }
        if (run_ != nullptr) {
            slidable_ = slidable_ || CanMove(block);
            run_ = nullptr;
            runSize_ = 0;
        }
        block = after;
    }
}

}  // namespace

std::uint16_t EvacuatePage(HeapPage* page, std::uint16_t need) {
    return Evacuation(page, need).Run();
}

}  // namespace veldt::heap
