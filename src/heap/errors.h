// Every failure of the heap is raised through HeapErrorDispatch, which asks the process's handler
// for a verdict with none of the heap's locks held: non-zero means try again, zero means give up.
#pragma once

#include "heap/records.h"

namespace veldt::heap {

enum HeapError : std::int32_t {
    MEM_INTERNAL_ERROR = 1,
    MEM_OUT_OF_MEMORY = 2,
    MEM_BLOCK_TOO_BIG = 3,
    MEM_ALLOC_ZERO = 4,
    MEM_RESIZE_FAILED = 5,
    MEM_LOCK_ERROR = 6,
    MEM_EXCEEDED_CEILING = 7,
    MEM_TOO_MANY_PAGES = 8,
    MEM_TOO_MANY_TASKS = 9,
    MEM_BAD_MEM_POOL = 10,
    MEM_BAD_BLOCK = 11,
    MEM_BAD_FREE_BLOCK = 12,
    MEM_BAD_HANDLE = 13,
    MEM_BAD_POINTER = 14,
};

struct HeapErrorRecord {
    std::int32_t error;
    HeapPool* pool;  ///< null where none is known
};

using HeapErrorHandler = std::int32_t (*)(const HeapErrorRecord* record);

/// A thread that is inside the handler.
struct ThreadDepthSlot {
    std::uint32_t thread;
    std::int32_t depth;
};

/// One for the process, under RegistryLock.
struct HeapRegistry {
    static constexpr std::uint32_t kThreads = 25;

    HeapErrorHandler handler;
    HeapPool* pools;                    ///< newest first, linked through nextPool
    ThreadDepthSlot threads[kThreads];  ///< filled from the front
    std::uint32_t threadCount;
};
extern constinit HeapRegistry heapRegistry;

/// The handler's verdict, 0 where no handler runs. `pool` may be null or dead.
std::int32_t HeapErrorDispatch(HeapPool* pool, std::int32_t error);
/// Null silences all errors. The previous handler; null, and no change, for what can't be called.
HeapErrorHandler PoolSetErrorHandler(HeapErrorHandler handler);

/// Shows the error's text in a box, with a retry for error 2 alone.
std::int32_t DefaultErrorHandler(const HeapErrorRecord* record);
const char* HeapErrorText(std::int32_t error);
/// 1 if the user wants another try, else 0. Ends the process if the user says so.
int ErrorMessageBox(const char* text, int retryAllowed);

/// True if the calling thread must not run the handler: it is inside it more than `limit` times.
bool ErrorDepthEnter(std::int32_t limit);
void ErrorDepthLeave();
/// The calling thread's slot, or null. The caller holds RegistryLock, here and below.
ThreadDepthSlot* ThreadDepthFind(int create);
void ThreadDepthRemove(ThreadDepthSlot* slot);

}  // namespace veldt::heap
