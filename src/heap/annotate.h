// What the address sanitizer and Valgrind are told about memory, in a build with the CMake option
// VELDT20_ANNOTATE; each of the two only where its header is found. Without the option all of this
// is empty.
//
// The heap's own records stand between and inside blocks that the program may not touch. The few
// accessors through which the heap reads and writes them are VELDT20_EXEMPT and hold an Exempt
// scope: the first is for the sanitizer, whose tests are compiled in, the second for Valgrind,
// which watches from outside.
#pragma once

#ifndef VELDT20_ANNOTATE
#define VELDT20_ANNOTATE 0
#endif

#if VELDT20_ANNOTATE && defined(__SANITIZE_ADDRESS__)
#define VELDT20_ASAN 1
#elif VELDT20_ANNOTATE && defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELDT20_ASAN 1
#endif
#endif
#if VELDT20_ANNOTATE && __has_include(<valgrind/memcheck.h>)
#define VELDT20_VALGRIND 1
#endif

#include <cstddef>

#ifdef VELDT20_ASAN
#include <sanitizer/asan_interface.h>
#define VELDT20_EXEMPT __attribute__((no_sanitize("address")))
#else
#define VELDT20_EXEMPT
#endif
#ifdef VELDT20_VALGRIND
#include <valgrind/memcheck.h>
#endif

namespace veldt::heap {

/// Valgrind reports nothing of this thread while one lives.
struct [[maybe_unused]] Exempt {
#ifdef VELDT20_VALGRIND
    Exempt() {
        VALGRIND_DISABLE_ERROR_REPORTING;
    }
    ~Exempt() {
        VALGRIND_ENABLE_ERROR_REPORTING;
    }
#else
    constexpr Exempt() = default;
#endif
    Exempt(const Exempt&) = delete;
    Exempt& operator=(const Exempt&) = delete;
};

/// What a program may do with memory.
enum class Access {
    kNone,
    kWritten,  ///< everything
    kFresh,    ///< everything, but what it reads before it writes is undefined
};

inline void SetAccess([[maybe_unused]] const char* from, [[maybe_unused]] std::size_t size,
                      [[maybe_unused]] Access access) {
#ifdef VELDT20_ASAN
    if (access == Access::kNone) {
        __asan_poison_memory_region(from, size);
    } else {
        __asan_unpoison_memory_region(from, size);
    }
#endif
#ifdef VELDT20_VALGRIND
    switch (access) {
        case Access::kNone:
            VALGRIND_MAKE_MEM_NOACCESS(from, size);
            break;
        case Access::kWritten:
            VALGRIND_MAKE_MEM_DEFINED(from, size);
            break;
        case Access::kFresh:
            VALGRIND_MAKE_MEM_UNDEFINED(from, size);
            break;
    }
#endif
}

/// How many of the `size` bytes from `from` on the program may use up to the first that it may not.
inline std::size_t AccessibleSize([[maybe_unused]] const char* from, std::size_t size) {
#ifdef VELDT20_ASAN
    if (void* end = __asan_region_is_poisoned(const_cast<char*>(from), size); end != nullptr) {
        size = static_cast<std::size_t>(static_cast<char*>(end) - from);
    }
#endif
#ifdef VELDT20_VALGRIND
    const Exempt exempt;
    if (const std::size_t end = VALGRIND_CHECK_MEM_IS_ADDRESSABLE(from, size); end != 0) {
        size = end - reinterpret_cast<std::size_t>(from);
    }
#endif
    return size;
}

}  // namespace veldt::heap
