// A recorded run of a program's allocations: what it allocated, resized and freed, in order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Operation {
    enum Kind : std::uint8_t { kAllocate, kResize, kFree };

    Kind kind;
    std::uint32_t block;  ///< number of the block, 0 up to Trace::blocks - 1, used once each
    std::uint32_t size;   ///< bytes
};

struct Trace {
    std::vector<Operation> operations;
    std::uint32_t blocks = 0;
};

/// Reads a trace, `-` being standard input: lines `a ID SIZE`, `r ID SIZE` and `f ID`, and comments
/// that begin with `#`. Gives an empty text, or what is wrong: `FILE:LINE: ...` for a line.
std::string ReadTrace(const std::string& file, Trace& trace);
