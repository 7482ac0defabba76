// Points and rectangles in three widths of coordinate, and the native records.
//
//     whole numbers, 16 bits   XNPoint, XNRect    bare records, what goes into files and resources
//                              XPoint, XRect      the same with operations
//     whole numbers, 32 bits   XLongPoint, XLongRect
//     16.16 fixed point        XFixPoint, XFixRect
//
// The vertical coordinate stands first in all of them but the fixed-point pair. Point constructors
// take the horizontal one first everywhere; four coordinates are always taken in field order.
//
// All of it is plain values: nothing allocates, fails or locks. Sums wrap at the coordinate's
// width, and narrowing to 16 bits keeps the low bits.
//
// Rectangle tests, the same in every class. A rectangle whose right or bottom lies before its left
// or top is not valid. One without area is empty, so what isn't valid is empty too, and a rectangle
// of zero width or height is both valid and empty.
#pragma once

#include <veldt20/geometry_fixed.h>
#include <veldt20/geometry_long.h>
#include <veldt20/geometry_native.h>
#include <veldt20/geometry_short.h>
