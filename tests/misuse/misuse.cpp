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

/// What comes next is wrong.
void Mistake() {
    std::fputs("mistake:\n", stderr);
}

char** Line(std::int32_t size) {
    char** h = _XNewHandle(size);
    std::memset(*h, 'x', static_cast<std::size_t>(size));
    return h;
}

void ReadPastPointer(std::int32_t size) {
    char* p = _XNewPtrClear(size);
    Read(p + size - 1);
    Mistake();
    Read(p + size);
}

void ReadPastHandle(std::int32_t size) {
    char** h = Line(size);
    Read(*h + size - 1);
    Mistake();
    Read(*h + size);
}

void ReadPastShrunk(std::int32_t size) {
    char** h = Line(size);
    _XSetHandleSize(h, size - 3);
    Read(*h + size - 4);
    Mistake();
    Read(*h + size - 3);
}

void UseDisposedPointer(std::int32_t size) {
    char* p = _XNewPtrClear(size);
    XDisposePtr(p);
    Mistake();
    Read(p + size / 2);
}

void UseDisposedHandle(std::int32_t size) {
    char** h = Line(size);
    const char* stale = *h;
    XDisposeHandle(h);
    Mistake();
    Read(stale + size / 2);
}

void UseResized(std::int32_t size) {
    char** h = Line(size);
    Line(size);
    const char* stale = *h;
    _XSetHandleSize(h, 40 * size);
    Read(*h + size - 1);
    Mistake();
    if (stale != *h) Read(stale + size / 2);
}

void UseFixed(std::int32_t size) {
    char** h = Line(size);
    const char* stale = *h;
    XMoveHHi(h);
    Read(*h + size - 1);
    Mistake();
    Read(stale + size / 2);
}

/// Blocks below this one are disposed, so that it slides down within its page.
void UseSlid(std::int32_t size) {
    char** below = Line(2000);
    char** h = Line(size);
    Line(size);
    const char* stale = *h;
    XDisposeHandle(below);
    XMemCompactHeap();
    Read(*h + size - 1);
    Mistake();
    if (stale != *h) Read(stale + size / 2);
}

/// Nearly all blocks of two pages are disposed, so that the page of the last one is emptied.
void UseEvacuated(std::int32_t size) {
    std::vector<char**> lines;
    for (int i = 0; i < 40000 / size; ++i) lines.push_back(Line(size));
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) XDisposeHandle(lines[i]);
    const char* first = *lines.front();
    const char* last = *lines.back();
    XMemCompactHeap();
    Mistake();
    Read((first != *lines.front() ? first : last) + size / 2);
}

/// Every byte of every block, through the moves that are made on purpose.
void None(std::int32_t) {
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
}

struct Kind {
    std::string_view name;
    void (*make)(std::int32_t size);
    std::int32_t size;
};

constexpr Kind kKinds[] = {
    {"none", None, 0},
    {"past_fixed_pointer", ReadPastPointer, 11},
    {"past_pointer", ReadPastPointer, 100},
    {"past_large_pointer", ReadPastPointer, 5000},
    {"past_handle", ReadPastHandle, 100},
    {"past_large_handle", ReadPastHandle, 5000},
    {"past_shrunk_handle", ReadPastShrunk, 100},
    {"disposed_fixed_pointer", UseDisposedPointer, 11},
    {"disposed_pointer", UseDisposedPointer, 100},
    {"disposed_large_pointer", UseDisposedPointer, 5000},
    {"disposed_handle", UseDisposedHandle, 100},
    {"resized_handle", UseResized, 100},
    {"resized_large_handle", UseResized, 5000},
    {"fixed_handle", UseFixed, 100},
    {"slid_handle", UseSlid, 100},
    {"evacuated_handle", UseEvacuated, 1000},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || XMemInitInstance() == 0) return 2;
    for (const Kind& kind : kKinds) {
        if (kind.name == argv[1]) {
            kind.make(kind.size);
            XMemExitInstance();
            std::printf("%d\n", sum);
            return 0;
        }
    }
    return 2;
}
