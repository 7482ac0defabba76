// What the operations on handles share: the first look at a handle, and how many pinned blocks a
// page has.
#pragma once

#include "heap/locks.h"
#include "heap/relocatable_blocks.h"

namespace veldt::heap {

/// Raises error 13.
[[gnu::cold]] void RaiseBadHandle();

/// The pool of a handle; null, with error 13 raised, for what is none.
[[gnu::always_inline]] inline HeapPool* ValidatedPool(const HandleSlot* slot) {
    {
        const HandleHold hold;
        if (const HeapPage* page = PageOfHandle(slot); page != nullptr) [[likely]] {
            return page->pool;
        }
    }
    RaiseBadHandle();
    return nullptr;
}

/// Counts a block of the page that is pinned now, or no longer.
void CountPin(HeapPage* page, bool pinned);

}  // namespace veldt::heap
