// What a host that is not Windows tells the library about its surroundings. Absent on Windows,
// where the operating system knows all of this itself.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// Names a module whose string resources the host has registered; never defined, only pointed to.
struct HINSTANCE__;

/// A point as the platform's window calls know it, horizontal coordinate first.
struct tagPOINT {
    std::int32_t x;  ///< to the right
    std::int32_t y;  ///< downwards
};

/// A rectangle as the platform's window calls know it.
struct tagRECT {
    std::int32_t left;    ///< x of the left edge
    std::int32_t top;     ///< y of the top edge
    std::int32_t right;   ///< x of the right edge
    std::int32_t bottom;  ///< y of the bottom edge
};

/// A rectangle of 16-bit coordinates as the platform's console calls know it.
struct _SMALL_RECT {
    std::int16_t Left;    ///< x of the left edge
    std::int16_t Top;     ///< y of the top edge
    std::int16_t Right;   ///< x of the right edge
    std::int16_t Bottom;  ///< y of the bottom edge
};

/// Sets the process's ANSI code page: 1250 to 1258, 874, 932, 936, 949, 950 or 65001. It is 1252
/// until then. Gives 1, or 0 if the code page is not known here, and then nothing changes.
VELDT20_API int XHostSetCodePage(unsigned int codePage);

/// Makes `directory` (copied; relative ones are taken from the current directory at each use) the
/// root of the drive `letter`, a to z in either case. Null unmounts the letter. `C` is the root
/// directory until it is mounted elsewhere. Gives 1, or 0 for what is no letter or out of memory.
VELDT20_API int XHostMountDrive(char letter, const char* directory);

/// Installs what shows the library's one dialog. `show` gets the text, the caption and the
/// platform's style word, and gives the platform's number of the button chosen, or 0 if no box
/// could be shown. Null, as at the start, means that no box can ever be shown.
VELDT20_API void XHostSetMessageBox(int (*show)(const char* text, const char* caption,
                                                unsigned int style));

/// Registers the string resource `id` of `module` (null is a module of its own). The text is
/// copied. Null takes the resource away. Gives 1, or 0 if memory ran out, and then nothing changes.
VELDT20_API int XHostSetString(HINSTANCE__* module, unsigned int id, const char* text);
