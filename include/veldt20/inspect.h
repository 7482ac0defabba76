// A look into the running instance's heap: figures, a walk over pages and blocks, the check of all
// invariants, moments to compare and a picture of them. Include it on its own; it costs nothing
// until it is called, and every call walks the whole heap. Like all memory calls it belongs to the
// one thread that uses the heap, and it leaves XMemError alone.
//
// The words: a block's logical size is what was asked for; live bytes are the logical sizes of the
// blocks in use; committed bytes are what a page holds of the system's memory; the footprint is all
// that the pool has committed, its own records included.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// What a block is part of.
enum XBlockFamily : std::uint8_t {
    kXFixedPointer,     ///< a pointer in a page of blocks of one size
    kXVariablePointer,  ///< a pointer in a page of blocks of any size
    kXLargePointer,     ///< a pointer with a region of its own
    kXMoveableHandle,   ///< a handle that compaction may move
    kXFixedHandle,      ///< a handle that XMoveHHi took to a fixed place
    kXLargeHandle,      ///< a handle with a region of its own
    kXBlockFamilies
};

/// Whether a block is in use, and then whether it is a handle with a lock.
enum XBlockState : std::uint8_t { kXFree, kXUsed, kXLocked };

/// A page as the walk shows it.
struct XHeapPage {
    const char* base;         ///< on a 64 KB boundary
    std::uint32_t committed;  ///< bytes
    std::uint32_t blocks;     ///< in use
    std::uint32_t pinned;     ///< of those, handles that are locked where compaction might move
    std::uint8_t kind;        ///< 0 variable-size, 1 fixed-size, 2 moveable, 3 one large block
};

/// A block as the walk shows it, free or in use. Blocks come in address order, page by page.
struct XHeapBlock {
    const char* data;       ///< its first byte, without the header
    std::uint32_t size;     ///< bytes that the block takes, its records included
    std::uint32_t logical;  ///< bytes that were asked for; 0 in a free block
    char** handle;          ///< null for a pointer or a free block
    XBlockState state;      ///< free, in use or locked
    XBlockFamily family;    ///< of a free block: the family that its page serves
};

/// The blocks of one family that are in use.
struct XHeapFamilyFigures {
    std::uint32_t blocks;     ///< in use
    std::uint64_t liveBytes;  ///< their logical sizes
};

/// The heap in figures, at one moment.
struct XHeapStatistics {
    XHeapFamilyFigures families[kXBlockFamilies];  ///< by XBlockFamily
    std::uint64_t liveBytes;                       ///< of all families
    std::uint32_t pages[4];                        ///< by kind
    std::uint64_t committed[4];                    ///< bytes, by kind of page
    std::uint32_t footprint;                       ///< bytes
    std::uint64_t freeBytes;                       ///< in free blocks of all pages
    std::uint32_t freeBlocks[17];  ///< by size: element n counts 2^n to 2^(n+1) - 1 bytes
    std::uint32_t largestFree;     ///< bytes
    std::uint32_t pinned;          ///< locked handles in moveable pages
    std::uint32_t slots;           ///< of handles, in use or not
    std::uint32_t slotsInUse;      ///< of those, by a handle
};

/// Fills in `statistics`. Gives 1, or 0 with all of it zero where there is no instance.
VELDT20_API int XHeapGetStatistics(XHeapStatistics* statistics);

/// The footprint alone, in bytes, without a walk; 0 where there is no instance.
VELDT20_API std::uint32_t XHeapFootprint(void);

/// Called with each page (and a null block), then with each of its blocks. 0 ends the walk.
using XHeapVisitor = int (*)(const XHeapPage* page, const XHeapBlock* block, void* context);
/// Gives 1 if the walk came to its end. The visitor must not call memory calls.
VELDT20_API int XHeapWalk(XHeapVisitor visitor, void* context);

/// Checks every invariant of the heap. Gives 1 if all hold; else 0, with what is wrong and where in
/// `message`, cut to `size` bytes with its terminator. `message` may be null.
VELDT20_API int XHeapCheck(char* message, std::uint32_t size);

/// Takes a piece of text. Gives 0 to have no more of it.
using XHeapWriter = int (*)(const char* text, std::uint32_t length, void* context);

/// The heap as it stood at one moment: a copy of what the walk and the statistics showed, about 32
/// bytes a block from the global operator new. Owns its copy; moments can't be copied.
class VELDT20_API XHeapMoment {
  public:
    XHeapMoment();
    ~XHeapMoment();
    XHeapMoment(const XHeapMoment&) = delete;
    XHeapMoment& operator=(const XHeapMoment&) = delete;

    /// Takes the moment anew. 1; 0 if memory ran out or there is no instance: then it is empty.
    int Capture();
    /// The figures of the moment, all zero in an empty one. The moment's own.
    const XHeapStatistics& Statistics() const;

    struct Content;
    /// What the picture is drawn from; null in an empty moment. The moment's own.
    const Content* GetContent() const { return content_; }

  private:
    Content* content_;
};

/// What happened between two moments. Handles are told apart by the handle, pointers by address.
struct XHeapDifference {
    std::uint32_t appeared;     ///< blocks that are new
    std::uint32_t vanished;     ///< blocks that are gone
    std::uint32_t moved;        ///< handles whose block has another address
    std::uint64_t movedBytes;   ///< the logical sizes of those
    std::uint32_t pagesGained;  ///< pages that are new
    std::uint32_t pagesLost;    ///< pages that are gone
    std::int64_t footprint;     ///< growth in bytes, negative where memory was given back
};

/// Gives 1, or 0 with all of `difference` zero if memory ran out.
VELDT20_API int XHeapCompare(const XHeapMoment& before, const XHeapMoment& after,
                             XHeapDifference* difference);

/// Draws `count` moments as one SVG, with a legend and the figures; each has a caption. Moments of
/// many pages stand side by side, a bar for each 16 KB; those of few pages one below the other, so
/// large that every block can be seen with its size. Gives 1 if the writer took everything.
VELDT20_API int XHeapDraw(const XHeapMoment* const* moments, const char* const* captions, int count,
                          XHeapWriter writer, void* context);
