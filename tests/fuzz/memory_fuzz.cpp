// Calls on pointers and handles in any order, valid and wild, with the heap's invariants and every
// byte of every block checked after each.
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <algorithm>
#include <array>
#include <vector>

#include "fuzz/input.h"

namespace {

using veldt::fuzz::Input;
using veldt::fuzz::Require;

/// What a place of the run holds: a pointer, a handle, or nothing.
struct Held {
    char* pointer = nullptr;
    char** handle = nullptr;
    std::vector<char> bytes;
    char* lockedAt = nullptr;

    const char* Block() const { return handle != nullptr ? *handle : pointer; }
    std::int32_t Size() const {
        return handle != nullptr ? XGetHandleSize(handle) : XGetPtrSize(pointer);
    }
};

constexpr int kPlaces = 24;
using Places = std::array<Held, kPlaces>;

/// Up to 64 KB, small ones most often.
std::int32_t SizeFrom(Input& input) {
    const std::uint32_t word = input.Word();
    return static_cast<std::int32_t>((word & 0xF) == 0 ? word : word & 0x7FF);
}

void Fill(Held& held, std::int32_t size, char fill) {
    const auto old = std::min(held.bytes.size(), static_cast<std::size_t>(size));
    held.bytes.resize(static_cast<std::size_t>(size), fill);
    std::copy(held.bytes.begin() + static_cast<std::ptrdiff_t>(old), held.bytes.end(),
              const_cast<char*>(held.Block()) + old);
}

void MakeNew(Held& held, bool asHandle, Input& input) {
    const std::int32_t size = SizeFrom(input);
    const auto fill = static_cast<char>(input.Byte());
    if (asHandle) {
        held.handle = _XNewHandle(size);
    } else {
        held.pointer = _XNewPtr(size);
    }
    Require(held.Block() != nullptr, "there is no room for a small block");
    Fill(held, size, fill);
}

void Dispose(Held& held) {
    if (held.handle != nullptr) {
        XDisposeHandle(held.handle);
    } else {
        XDisposePtr(held.pointer);
    }
    Require(XMemError() == 0, "a live block can't be disposed");
    held = {};
}

void Resize(Held& held, Input& input) {
    const std::int32_t size = SizeFrom(input);
    const auto fill = static_cast<char>(input.Byte());
    if (held.handle != nullptr) {
        _XSetHandleSize(held.handle, size);
    } else {
        _XSetPtrSize(held.pointer, size);
    }
    if (XMemError() == 0) {
        Fill(held, size, fill);
    }
    if (held.handle != nullptr && *held.handle != held.lockedAt) {
        held.lockedAt = nullptr;  // a locked block that has to grow moves once, and stays there
        held.lockedAt = (XHGetState(held.handle) & -128) != 0 ? *held.handle : nullptr;
    }
}

void ChangeLock(Held& held, bool lock) {
    if (lock) {
        XHLock(held.handle);
        held.lockedAt = *held.handle;
    } else {
        XHUnlock(held.handle);
        held.lockedAt = nullptr;
    }
}

/// No address below 64 KB is ever a block, and no odd one a handle.
void CallWild(Input& input) {
    char* wild = reinterpret_cast<char*>(std::uintptr_t{input.Word()});
    auto** handle = reinterpret_cast<char**>(wild);
    XDisposePtr(wild);
    Require(XMemError() != 0, "a wild pointer was disposed");
    XDisposeHandle(handle);
    Require(XMemError() != 0, "a wild handle was disposed");
    Require(_XSetHandleSize(handle, 10) == 0, "a wild handle was resized");
    Require(XGetPtrSize(wild) == 0 && XGetHandleSize(handle) == 0, "a wild address has a size");
    XHLock(handle);
    XMoveHHi(handle);
    XHUnlock(handle);
}

void Step(Places& places, Input& input) {
    const unsigned action = input.Byte();
    Held& held = places[input.Byte() % kPlaces];
    if (action % 16 == 15) {
        XMemCompactHeap();
    } else if (action % 16 == 14) {
        CallWild(input);
    } else if (held.Block() == nullptr) {
        MakeNew(held, action % 2 == 0, input);
    } else if (action % 16 < 5) {
        Dispose(held);
    } else if (action % 16 < 10 || held.handle == nullptr) {
        Resize(held, input);
    } else if (action % 16 < 13) {
        ChangeLock(held, action % 16 < 12);
    } else {
        XMoveHHi(held.handle);
        held.lockedAt = held.lockedAt != nullptr ? *held.handle : nullptr;
    }
}

void Check(const Places& places) {
    std::array<char, 200> message{};
    Require(XHeapCheck(message.data(), message.size()) != 0, message.data());
    for (const Held& held : places) {
        if (held.Block() != nullptr) {
            Require(held.Size() == static_cast<std::int32_t>(held.bytes.size()), "a size changed");
            Require(std::equal(held.bytes.begin(), held.bytes.end(), held.Block()),
                    "bytes of a block changed");
            Require(held.lockedAt == nullptr || held.lockedAt == held.Block(),
                    "a locked block moved");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Require(XMemInitInstance() != 0, "there is no room for a heap");
    Places places;
    for (Input input(bytes, size); !input.Empty();) {
        Step(places, input);
        Check(places);
    }
    XMemExitInstance();
    return 0;
}
