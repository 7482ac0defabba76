// VELDT20_API marks what the module exports. A program that links the static library defines
// VELDT20_STATIC (the CMake target does it); the library's own build defines VELDT20_BUILD.
#pragma once

#if defined(VELDT20_STATIC)
#define VELDT20_API
#elif defined(_WIN32)
#if defined(VELDT20_BUILD)
#define VELDT20_API __declspec(dllexport)
#else
#define VELDT20_API __declspec(dllimport)
#endif
#else
/// Marks what the module exports.
#define VELDT20_API __attribute__((visibility("default")))
#endif

// A body that stands in a header, so that the compiler can put it in the place of a call. The
// module exports the function all the same: calls that stay calls reach that one, and so does its
// address. The file of the library that holds it defines the word as nothing first. A compiler
// without the attribute makes a call each time.
#if defined(__GNUC__) && !defined(VELDT20_IN_PLACE)
#define VELDT20_IN_PLACE inline __attribute__((gnu_inline))
#endif

// Off Windows a host tells the library about its surroundings through host.h.
#if defined(_WIN32)
#define VELDT20_HAS_HOST 0
#else
/// 1 where there is a host.h, else 0.
#define VELDT20_HAS_HOST 1
#endif
