// Where each block's life is told to those who watch it: the address sanitizer and Valgrind
// (VELDT20_ANNOTATE), and the bytes that a stress build (VELDT20_STRESS) fills memory with. In any
// other build every hook here is empty, or the plain copy that it stands for.
//
// The rule: in a page of several blocks the program may use the data of blocks in use and nothing
// else, and of a block that BlockHolds was told of, as many bytes as it holds.
#pragma once

#include <cstring>

#include "heap/annotate.h"
#include "heap/records.h"

#ifndef VELDT20_STRESS
#define VELDT20_STRESS 0
#endif

namespace veldt::heap {

inline constexpr bool kStress = VELDT20_STRESS != 0;

/// What a stress build fills memory with. Read as a word, a pointer or a number, each is nonsense,
/// and each tells how the bytes came about.
inline constexpr int kFreshFill = 0xB5;  ///< a new block, not written yet
inline constexpr int kFreedFill = 0xDF;  ///< a block that was disposed
inline constexpr int kMovedFill = 0xE7;  ///< where a block stood before it moved

/// As many bytes of a block as the program may use.
using HeldBytes = std::size_t;

#if VELDT20_STRESS || VELDT20_ANNOTATE

/// A region has `size` committed bytes from `from` on.
void RegionBegan(char* from, std::size_t size);
/// A region is about to be given back.
void RegionEnds(char* base);
/// Where regions have ended, others may have theirs from now on.
void AddressesGo(char* from, std::size_t size);
/// A page has been laid out: its blocks are nobody's.
void PageBegan(HeapPage* page, std::uint32_t committed);

/// A block has been taken, and not been zeroed yet.
void BlockBorn(char* data, std::uint32_t flags);
/// A block is about to be given back.
void BlockDies(char* data);
/// The program has asked for this many bytes.
void BlockHolds(char* data, std::uint32_t logical);
/// Opens the whole block for a resize, and gives what it held.
HeldBytes BlockOpens(char* data);
/// Ends a resize that failed.
void BlockCloses(char* data, HeldBytes held);
/// Ends a resize in place of a variable-size block that had `former` usable bytes.
void BlockResized(char* data, std::uint32_t former);

/// Copies at most `size` bytes to a fresh block, which holds as many as the old one did, whose life
/// ends.
void MoveBlock(char* to, char* from, std::uint32_t size);
/// Slides whole blocks, of `size` bytes with their headers, down over free memory.
void SlideBlocks(char* to, char* from, std::size_t size);
/// The block's bytes stand elsewhere now.
void BlockLeft(char* data);

#else

inline void RegionBegan(char*, std::size_t) {}
inline void RegionEnds(char*) {}
inline void AddressesGo(char*, std::size_t) {}
inline void PageBegan(HeapPage*, std::uint32_t) {}
inline void BlockBorn(char*, std::uint32_t) {}
inline void BlockDies(char*) {}
inline void BlockHolds(char*, std::uint32_t) {}
inline HeldBytes BlockOpens(char*) {
    return 0;
}
inline void BlockCloses(char*, HeldBytes) {}
inline void BlockResized(char*, std::uint32_t) {}
inline void MoveBlock(char* to, char* from, std::uint32_t size) {
    std::memcpy(to, from, size);
}
inline void SlideBlocks(char* to, char* from, std::size_t size) {
    std::memmove(to, from, size);
}
inline void BlockLeft(char*) {}

#endif

}  // namespace veldt::heap
