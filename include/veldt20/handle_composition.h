// Handles made of other handles, pointers and global memory blocks, and edited in place.
//
// A new handle belongs to the caller, who ends it with XDisposeHandle. Every `int` is 1 or 0. On a
// failure no handle is left behind, and a handle that was to be changed has its former bytes.
// XMemError then tells kMemFull; where a null argument is refused, it is left as it was.
//
// Sizes are bytes. Any call may move the block of the handle that it changes, even a locked one,
// and those of others unless they are locked. So a source must not lie in a block that can move.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// Puts a new handle with a copy of its bytes in the place of `*h`. The old handle stays alive, and
/// only the caller's own copy still names it:
///
///     char** copy = original;
///     if (!_XHandToHand(&copy)) ...  // copy is null now, original as it was
///
/// An invalid handle is copied as an empty one.
VELDT20_API int _XHandToHand(char*** h);
/// Makes `h` a copy of the `size` bytes at `source`. 0 if `h` is null.
VELDT20_API int _XPtrToXHand(const void* source, char** h, std::int32_t size);
/// Stores a new handle with a copy of the `size` bytes at `source` in `*h`, null on failure.
VELDT20_API int _XPtrToHand(const void* source, char*** h, std::int32_t size);
/// Appends the bytes of `from` to `to`, which may be the same handle. 0 if `from` is null.
VELDT20_API int _XHandAndHand(char** from, char** to);
/// Appends the `size` bytes at `source` to `h`. 0 if `h` is null.
VELDT20_API int _XPtrAndHand(const void* source, char** h, std::int32_t size);

/// Stores a new global memory block with a copy of the `size` bytes at `source` in `*global`, null
/// on failure; of 0 bytes there is no such block. The caller ends it with XGlobalFree. 0 if either
/// pointer is null. Leaves what XMemError tells as it was.
VELDT20_API int XPtrToXGlobal(char* source, void** global, std::int32_t size);
/// Stores a new handle with a copy of the global memory block in `*h`, null on failure. Its size is
/// the block's, which may exceed what was asked for. 0 if either argument is null, and with 0 in
/// XMemError if `global` can't be locked, as it can't if it is no block.
VELDT20_API int _XGlobalToHand(void* global, char*** h);

/// A new handle with the length-prefixed string `s`, its length byte included; null on failure.
VELDT20_API unsigned char** XNewString(const unsigned char* s);

/// Finds, replaces, inserts or deletes bytes of `h`, from `offset` on. In short: `ptr1` and `len1`
/// say what to work on, `ptr2` and `len2` what to put there.
///
///     ptr1     len1   ptr2   len2     what is done                               result
///     null     < 0    bytes  > 0      bytes replace all from offset on           behind them
///     any      0      bytes  > 0      bytes are inserted at offset               behind them
///     null     not 0  any    0        len1 bytes are deleted, all if negative    offset
///     pattern  > 0    null   any      the pattern is looked for                  its place
///     pattern  > 0    bytes  0 or up  bytes replace the pattern's first place    behind them
///     null     > 0    bytes  > 0      bytes replace len1 bytes at offset         behind them
///     null     any    null   any      nothing                                    offset
///
/// A deletion's ptr2 is anything but null; a pattern of no bytes is never found. -1 means that
/// nothing was found or that memory ran out (kMemFull), and then nothing has changed. On an empty
/// or invalid handle everything but the first two rows gives -1. A search takes time in proportion
/// to the bytes searched.
///
///     // Replace every "\r\n" by "\n".
///     for (std::int32_t at = 0; at >= 0;) at = __XMunger(h, at, "\r\n", 2, "\n", 1);
///
/// The first two rows take an offset behind the end: the gap holds undefined bytes. In the others
/// what reaches behind the end gives -1 and changes nothing, with one exception: a deletion that
/// does so, of no more bytes than the handle has, takes `len1` bytes off its end. A negative offset
/// gives -1 too, as does a negative `len2` with bytes, a negative `len1` with a pattern, and a
/// handle of 2 GB or more.
VELDT20_API std::int32_t __XMunger(char** h, std::int32_t offset, const void* ptr1,
                                   std::int32_t len1, const void* ptr2, std::int32_t len2);
