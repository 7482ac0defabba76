// Memory: pointers that never move, handles whose blocks may, and the bytes in both.
//
// Call XMemInitInstance once before the first call here and XMemExitInstance after the last. Keep
// the calls to one thread at a time. Sizes are bytes, read as unsigned; the largest that can be
// asked for is 0xFFFFFFFD. XMemError tells how the last call went: 0, kMemFull or kMemBadBlock.
#pragma once

#include <veldt20/allocator.h>
#include <veldt20/bytes.h>
#include <veldt20/export.h>
#include <veldt20/handle_composition.h>

#include <cstdint>

/// No memory: no block was obtained, or a resize could not be done.
inline constexpr std::int16_t kMemFull = -108;
/// The address given names no live block.
inline constexpr std::int16_t kMemBadBlock = -111;

/// Creates the instance's heap. Gives 1, or 0 (and kMemFull) if the system has no room for it.
VELDT20_API int XMemInitInstance(void);
/// Gives everything back: every pointer and handle dies here, disposed or not. After it,
/// unloading the module gives back its address space as well.
VELDT20_API void XMemExitInstance(void);
/// The result of the last memory call, for all threads together.
VELDT20_API std::int16_t XMemError(void);
/// Slides and gathers unlocked handle blocks and gives emptied pages back to the system.
VELDT20_API void XMemCompactHeap(void);

/// A new block of `size` bytes that never moves, contents undefined; the caller disposes it with
/// XDisposePtr. Size 0 is a real block. Null (kMemFull) if there is no room.
VELDT20_API char* _XNewPtr(std::int32_t size);
/// The same with every byte zero.
VELDT20_API char* _XNewPtrClear(std::int32_t size);
/// Ends the block. What is no block of this heap is left alone (kMemBadBlock).
VELDT20_API void XDisposePtr(char* p);
/// The bytes that were asked for; 0 (kMemBadBlock) for what is no block.
VELDT20_API std::int32_t XGetPtrSize(char* p);
/// Resizes in place or not at all: on failure (kMemFull) the block is as it was.
VELDT20_API void _XSetPtrSize(char* p, std::int32_t size);
/// Its argument, unchanged.
VELDT20_API char* XStripAddress(void* p);

/// A new handle: `*h` is its block of `size` bytes, contents undefined, and may change at any call
/// that allocates while the handle isn't locked. Null (kMemFull) if there is no room.
VELDT20_API char** _XNewHandle(std::int32_t size);
/// The same with every byte zero.
VELDT20_API char** _XNewHandleClear(std::int32_t size);
/// Ends the handle, locked or not. An invalid one is left alone (kMemBadBlock).
VELDT20_API void XDisposeHandle(char** h);
/// The bytes that were asked for; 0 (kMemBadBlock) for an invalid handle.
VELDT20_API std::int32_t XGetHandleSize(char** h);
/// Resizes; the block may move even if it is locked, and new bytes are undefined. Gives 1, or 0
/// (kMemFull) with block and size as they were.
VELDT20_API int _XSetHandleSize(char** h, std::int32_t size);
/// _XSetHandleSize to 0: the handle stays and has an empty block.
VELDT20_API void XEmptyHandle(char** h);
/// Adds a lock, at most 255: compaction leaves a locked block where it is.
VELDT20_API void XHLock(char** h);
/// Takes all locks off, and brings a block that XMoveHHi moved back among the moveable ones.
VELDT20_API void XHUnlock(char** h);
/// The lock count, at most 127; 127 for an invalid handle. Give it back with XHSetState.
VELDT20_API char XHGetState(char** h);
/// Adds or takes locks until the count is `state`.
VELDT20_API void XHSetState(char** h, char state);
/// Moves an unlocked block out of the moveable ones and locks it: for a lock that is held long.
VELDT20_API void XMoveHHi(char** h);
/// Does nothing.
VELDT20_API void XHPurge(char** h);
/// Does nothing.
VELDT20_API void XHNoPurge(char** h);
