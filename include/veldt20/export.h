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

// Off Windows a host tells the library about its surroundings through host.h.
#if defined(_WIN32)
#define VELDT20_HAS_HOST 0
#else
/// 1 where there is a host.h, else 0.
#define VELDT20_HAS_HOST 1
#endif
