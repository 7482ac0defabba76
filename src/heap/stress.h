// The stress build (the CMake option VELDT20_STRESS): at every memory call that may move blocks,
// all that may move do. A program that keeps the address in a handle across such a call then reads
// nonsense the first time that it is run, and not on the day when memory is short.
//
// Every such call takes time in proportion to all handles together, and memory for a second copy of
// their blocks.
#pragma once

#include "heap/block_life.h"

namespace veldt::heap {

#if VELDT20_STRESS

/// Moves every unlocked block in a moveable place, and the block of `resized`, if not null, from
/// wherever it stands. A place that one of them leaves is free only once all have moved, so none
/// moves into it, and it doesn't come back to its last four places. What finds no room elsewhere
/// stays. A pool that doesn't live is let be.
void StressMoves(HeapPool* pool, HandleSlot* resized);

#else

inline void StressMoves(HeapPool*, HandleSlot*) {}

#endif

}  // namespace veldt::heap
