// The files that keep the last full run.
#pragma once

#include <string>

#include "suite/results.h"

namespace veldt::bench {

/// docs/benchmarks.md, whole.
std::string BenchmarksPage(const Run& run);

/// `readme` with the figures between its two marks put anew. Empty if it hasn't got them.
std::string WithFigures(const std::string& readme, const Run& run);

/// Writes docs/benchmarks.md, docs/pictures/benchmarks.svg and the README's figures in the checkout
/// at `root`. Gives an empty text, or what went wrong.
std::string KeepRun(const std::string& root, const Run& run);

}  // namespace veldt::bench
