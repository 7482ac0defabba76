#include <veldt20/utilities_byte_order.h>

#include <cstring>

namespace {

void SwapField(std::int16_t& field) {
    field = static_cast<std::int16_t>(XSwapBytes(static_cast<unsigned short>(field)));
}

}  // namespace

unsigned short XSwapBytes(unsigned short v) {
    return static_cast<unsigned short>((v << 8) | (v >> 8));
}

std::int32_t XSwapLong(std::int32_t v) {
    const auto bits = static_cast<std::uint32_t>(v);
    const std::uint32_t high = XSwapBytes(static_cast<unsigned short>(bits));
    const std::uint32_t low = XSwapBytes(static_cast<unsigned short>(bits >> 16));
    return static_cast<std::int32_t>(high << 16 | low);
}

void XSwapDouble(double* p) {
    // Moved as bytes: no alignment, and no register that would change a signalling not-a-number.
    void* bytes = p;
    std::int32_t halves[2];
    std::memcpy(halves, bytes, sizeof halves);
    const std::int32_t swapped[2] = {XSwapLong(halves[1]), XSwapLong(halves[0])};
    std::memcpy(bytes, swapped, sizeof swapped);
}

void XSwapPoint(XNPoint& p) {
    SwapField(p.y);
    SwapField(p.x);
}

void XSwapRect(XNRect& r) {
    SwapField(r.top);
    SwapField(r.left);
    SwapField(r.bottom);
    SwapField(r.right);
}

void XResTypeToNResType(char* text, std::uint32_t type) {
    for (int i = 0; i < 4; ++i) {
        text[i] = static_cast<char>(type >> (8 * i) & 0xFF);
    }
    text[4] = '\0';
}
