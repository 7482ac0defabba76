// Turning the byte order of numbers and native records, and resource types as text.
//
// The calls swap whatever the order of the machine or the data: apply them just when the two
// differ. Applied twice they give back what was there.
#pragma once

#include <veldt20/export.h>
#include <veldt20/geometry_native.h>

#include <cstdint>

/// The two bytes exchanged.
VELDT20_API unsigned short XSwapBytes(unsigned short v);
/// The four bytes in reverse.
VELDT20_API std::int32_t XSwapLong(std::int32_t v);
/// The eight bytes at `p` in reverse, in place; `p` needs no alignment.
VELDT20_API void XSwapDouble(double* p);
/// Swaps within each field, in place: no field changes its place.
VELDT20_API void XSwapPoint(XNPoint& p);
VELDT20_API void XSwapRect(XNRect& r);

/// Writes the resource type's four bytes, least significant first, and a zero byte to `text`, which
/// has room for five. A zero byte within the type ends the text early.
VELDT20_API void XResTypeToNResType(char* text, std::uint32_t type);
