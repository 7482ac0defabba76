// The bytes that a fuzzer hands in, taken as numbers and texts. When they run out, zeros follow.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace veldt::fuzz {

class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t size) : at_(bytes), end_(bytes + size) {}

    bool Empty() const { return at_ == end_; }
    std::uint8_t Byte() { return at_ == end_ ? std::uint8_t{0} : *at_++; }
    /// For a run that decides by numbers.
    std::uint32_t operator()() { return Word(); }
    std::uint32_t Word() { return Byte() | static_cast<std::uint32_t>(Byte()) << 8; }
    std::uint64_t Long() {
        std::uint64_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 16 | Word();
        }
        return value;
    }
    /// A text of its own block, so that a sanitizer sees a read past its end.
    std::string Text() {
        std::string text;
        for (std::size_t left = Byte(); left > 0 && !Empty(); --left) {
            text += static_cast<char>(Byte());
        }
        return text;
    }

  private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

/// Ends the program, which keeps the input, unless `held` is true.
inline void Require(bool held, const char* what) {
    if (!held) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

}  // namespace veldt::fuzz
