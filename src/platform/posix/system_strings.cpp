// 16-bit strings that carry their length: four bytes that count those of the characters, then the
// characters, to whose first the pointer leads, then a terminator.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/platform.h"

namespace veldt::platform {
namespace {

using ByteLength = std::uint32_t;

/// Beyond this the length in bytes, or with its neighbours the size of the block, would overflow.
constexpr UINT kMaxLength =
    (std::numeric_limits<ByteLength>::max() - sizeof(ByteLength)) / sizeof(WCHAR) - 1;

}  // namespace

BSTR SysAllocStringLen(const WCHAR* source, UINT length) {
    if (length > kMaxLength) return nullptr;
    const ByteLength size = length * static_cast<ByteLength>(sizeof(WCHAR));
    auto* block = static_cast<char*>(std::malloc(sizeof(size) + size + sizeof(WCHAR)));
    if (block == nullptr) return nullptr;
    std::memcpy(block, &size, sizeof(size));
    auto* characters = reinterpret_cast<BSTR>(block + sizeof(size));
    if (source != nullptr) std::memcpy(characters, source, size);
    characters[length] = 0;
    return characters;
}

void SysFreeString(BSTR string) {
    if (string != nullptr) std::free(reinterpret_cast<char*>(string) - sizeof(ByteLength));
}

}  // namespace veldt::platform
