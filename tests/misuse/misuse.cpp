// usage: misuse KIND. Makes one mistake with the memory calls, for misuse.sh to see it reported;
// or `none`, a round of all that is allowed.
#include <veldt20/memory.h>

#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

int sum = 0;

void Read(const char* address) {
    sum += *static_cast<const volatile char*>(address);
}

char** Line(std::int32_t size) {
    char** h = _XNewHandle(size);
    std::memset(*h, 'x', static_cast<std::size_t>(size));
    return h;
}

// Each of the following gives an address that must not be read any more.

const char* PastPointer(std::int32_t size) {
    return _XNewPtrClear(size) + size;
}

const char* PastHandle(std::int32_t size) {
    return *Line(size) + size;
}

const char* PastShrunkHandle(std::int32_t size) {
    char** h = Line(size);
    _XSetHandleSize(h, size - 3);
    return *h + size - 3;
}

const char* InDisposedPointer(std::int32_t size) {
    char* p = _XNewPtrClear(size);
    XDisposePtr(p);
    return p + size / 2;
}

const char* InDisposedHandle(std::int32_t size) {
    char** h = Line(size);
    const char* stale = *h;
    XDisposeHandle(h);
    return stale + size / 2;
}

/// The inside of the line where it was, which must not be where it is.
const char* Stale(char** h, const char* before, std::int32_t size) {
    return before == *h ? *h : before + size / 2;
}

const char* InResizedHandle(std::int32_t size) {
    char** h = Line(size);
    Line(size);
    const char* before = *h;
    _XSetHandleSize(h, 40 * size);
    return Stale(h, before, size);
}

const char* InFixedHandle(std::int32_t size) {
    char** h = Line(size);
    const char* before = *h;
    XMoveHHi(h);
    return Stale(h, before, size);
}

struct Moved {
    char** h;
    const char* before;
};

/// A block below this one is disposed, so that it slides down within its page.
Moved Slide(std::int32_t size, std::int32_t sizeBelow) {
    char** below = Line(sizeBelow);
    char** h = Line(size);
    Line(size);
    const char* before = *h;
    XDisposeHandle(below);
    XMemCompactHeap();
    return {h, before};
}

const char* InSlidHandle(std::int32_t size) {
    const Moved line = Slide(size, 2000);
    return Stale(line.h, line.before, size);
}

/// It ends where it was before, in part.
const char* PastSlidHandle(std::int32_t size) {
    return *Slide(size, size / 2).h + size;
}

/// Nearly all blocks of two pages are disposed, so that the page of the last one is emptied.
const char* InEvacuatedHandle(std::int32_t size) {
    std::vector<char**> lines;
    for (int i = 0; i < 40000 / size; ++i) lines.push_back(Line(size));
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) XDisposeHandle(lines[i]);
    const char* first = *lines.front();
    const char* last = *lines.back();
    XMemCompactHeap();
    return (first != *lines.front() ? first : last) + size / 2;
}

/// Every byte of every block, through the moves that are made on purpose.
const char* Nowhere(std::int32_t) {
    std::vector<char**> lines;
    for (std::int32_t size = 1; size < 9000; size += size / 3 + 1) {
        lines.push_back(Line(size));
        char* p = _XNewPtrClear(size);
        _XSetPtrSize(p, size + 1);
        if (XGetPtrSize(p) > size) p[size] = 0;
        for (std::int32_t i = 0; i < size; ++i) Read(p + i);
        if (size % 2 != 0) XDisposePtr(p);
        if (size % 3 == 0) XHLock(lines.back());
    }
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        XHSetState(lines[i], 0);
        _XSetHandleSize(lines[i], static_cast<std::int32_t>(i * 50));
        std::memset(*lines[i], 'y', i * 50);
        if (i % 4 == 0) XMoveHHi(lines[i]);
    }
    XMemCompactHeap();
    for (char** line : lines) {
        for (std::int32_t i = 0; i < XGetHandleSize(line); ++i) Read(*line + i);
        XHUnlock(line);
        XDisposeHandle(line);
    }
    return "";
}

constexpr struct {
    std::string_view name;
    const char* (*make)(std::int32_t size);
    std::int32_t size;
} kKinds[] = {
    {"none", Nowhere, 0},
    {"past_fixed_pointer", PastPointer, 11},
    {"past_pointer", PastPointer, 100},
    {"past_large_pointer", PastPointer, 5000},
    {"past_handle", PastHandle, 100},
    {"past_large_handle", PastHandle, 5000},
    {"past_shrunk_handle", PastShrunkHandle, 100},
    {"disposed_fixed_pointer", InDisposedPointer, 11},
    {"disposed_pointer", InDisposedPointer, 100},
    {"disposed_large_pointer", InDisposedPointer, 5000},
    {"disposed_handle", InDisposedHandle, 100},
    {"resized_handle", InResizedHandle, 100},
    {"resized_large_handle", InResizedHandle, 5000},
    {"fixed_handle", InFixedHandle, 100},
    {"slid_handle", InSlidHandle, 100},
    {"past_slid_handle", PastSlidHandle, 100},
    {"evacuated_handle", InEvacuatedHandle, 1000},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || XMemInitInstance() == 0) return 2;
    for (const auto& kind : kKinds) {
        if (kind.name != argv[1]) continue;
        const char* const mistake = kind.make(kind.size);
        std::fputs("mistake:\n", stderr);
        Read(mistake);
        XMemExitInstance();
        std::printf("%d\n", sum);
        return 0;
    }
    return 2;
}
