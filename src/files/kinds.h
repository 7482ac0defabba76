// What an XFile stands for.
#pragma once

namespace veldt::files {

inline constexpr int kOrdinaryFile = 0;
inline constexpr int kTemporaryFile = 1;
inline constexpr int kDirectory = 2;

}  // namespace veldt::files
