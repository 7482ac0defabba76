// OR, AND and exclusive OR of two areas, by the width of the machine's vectors.
#pragma once

#include <cstddef>

namespace veldt::memory {

enum class VectorWidth { k16, k32 };

VectorWidth WidestVectors();

/// target[i] becomes target[i] op mask[i], with i from 0 up, overlapping or not. A width that the
/// machine hasn't got must not be asked for.
void OrBytes(void* target, const void* mask, std::size_t count, VectorWidth width);
void AndBytes(void* target, const void* mask, std::size_t count, VectorWidth width);
void XorBytes(void* target, const void* mask, std::size_t count, VectorWidth width);

}  // namespace veldt::memory
