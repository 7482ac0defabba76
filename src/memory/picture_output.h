// What the pictures of the heap are made of: text for a writer, colours, strips.
#pragma once

#include <veldt20/inspect.h>

#include <cstddef>
#include <cstdint>

namespace veldt::memory {

// All lengths are the picture's own units. A bar stands for kBarBytes at most.
constexpr std::uint32_t kBarBytes = 16384;
constexpr int kPanelWidth = 552;

enum Tint : std::uint8_t { kTintOverhead, kTintFree, kTintUsed, kTintLocked, kTintLarge, kTints };

inline Tint TintOf(const XHeapBlock& block, int kind) {
    switch (block.state) {
        case kXFree:
            return kTintFree;
        case kXLocked:
            return kTintLocked;
        default:
            return kind == 3 ? kTintLarge : kTintUsed;
    }
}

/// Gathers text for the writer; remembers once it has refused.
class PictureOutput {
  public:
    PictureOutput(XHeapWriter writer, void* context) : writer_(writer), context_(context) {}

    __attribute__((format(printf, 2, 3))) void Print(const char* format, ...);
    /// Text from outside, which may hold anything.
    void PutEscaped(const char* text);
    void Strip(int x, int y, int width, int height, Tint tint);
    /// False if the writer has refused anything.
    bool Flush();

  private:
    void Put(const char* text, std::size_t length);

    XHeapWriter writer_;
    void* context_;
    bool refused_ = false;
    std::size_t used_ = 0;
    char buffer_[16384];
};

}  // namespace veldt::memory
