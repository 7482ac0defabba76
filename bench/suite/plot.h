// A run as a picture: a line for each row, on which every contestant stands at its cost beside that
// of the first, the C library or its like.
#pragma once

#include <string>

#include "suite/results.h"

namespace veldt::bench {

/// The whole SVG file.
std::string PlotSvg(const Run& run);

}  // namespace veldt::bench
