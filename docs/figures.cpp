// Makes the pictures of docs/heap.md, each of a heap that this program brings about.
//
//     figures FOLDER
#include <veldt20/inspect.h>
#include <veldt20/std.h>
#include <veldt20/veldt20.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using Handles = std::vector<XOwnedHandle>;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "figures: %s\n", what);
    std::exit(1);
}

XOwnedHandle NewHandle(int size) {
    XOwnedHandle handle(_XNewHandle(size));
    if (handle == nullptr) Fail("no memory");
    return handle;
}

Handles NewHandles(std::initializer_list<int> sizes) {
    Handles handles;
    for (const int size : sizes) handles.push_back(NewHandle(size));
    return handles;
}

int WriteToFile(const char* text, std::uint32_t length, void* file) {
    return std::fwrite(text, 1, length, static_cast<std::FILE*>(file)) == length ? 1 : 0;
}

/// The moments of one picture.
class Picture {
  public:
    void Take(const char* caption) {
        if (count_ == kMost || moments_[count_].Capture() == 0) Fail("no moment");
        captions_[count_++] = caption;
    }

    void Draw(const std::string& path) const {
        std::array<const XHeapMoment*, kMost> moments{};
        for (std::size_t i = 0; i < count_; ++i) moments[i] = &moments_[i];
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        if (file == nullptr) Fail(path.c_str());
        const bool drawn = XHeapDraw(moments.data(), captions_.data(), static_cast<int>(count_),
                                     WriteToFile, file) != 0;
        if (std::fclose(file) != 0 || !drawn) Fail(path.c_str());
    }

  private:
    static constexpr std::size_t kMost = 4;

    std::array<XHeapMoment, kMost> moments_;
    std::array<const char*, kMost> captions_{};
    std::size_t count_ = 0;
};

void DrawDisciplines(Picture& picture) {
    for (int i = 0; i < 300; ++i) _XNewPtr(18);
    for (const int size : {700, 1900, 3000, 1200, 800}) _XNewPtr(size);
    const Handles handles = NewHandles({1000, 2000, 1500, 3000, 900, 2500});
    _XNewPtr(30000);
    picture.Take("One heap, four kinds of pages");
}

void DrawHandle(Picture& picture) {
    Handles handles = NewHandles({2000, 1500, 1000, 3000});
    picture.Take("The handle of 1000 bytes, and its neighbours");
    if (_XSetHandleSize(handles[2].get(), 4000) == 0) Fail("no memory");
    picture.Take("Resized to 4000 bytes: the block has moved");
}

/// Six handles of 1400 bytes with gaps between them.
Handles ScatteredHandles() {
    Handles handles;
    Handles gaps;
    for (const int gap : {1000, 1600, 1200, 1800, 1000}) {
        handles.push_back(NewHandle(1400));
        gaps.push_back(NewHandle(gap));
    }
    handles.push_back(NewHandle(1400));
    return handles;
}

void DrawSliding(Picture& picture) {
    const Handles handles = ScatteredHandles();
    picture.Take("1. Five handles disposed: much is free, in small pieces");
    const XOwnedHandle added = NewHandle(3500);
    picture.Take("2. A new one of 3500 bytes: blocks slide until it fits");
    XMemCompactHeap();
    picture.Take("3. XMemCompactHeap: all blocks slide");
}

void DrawEmptying(Picture& picture) {
    Handles handles;
    for (int i = 0; i < 30; ++i) handles.push_back(NewHandle(2000));
    for (std::size_t i = 0; i < handles.size(); ++i) {
        if (i % 3 != 1) handles[i].reset();
    }
    picture.Take("1. Two of three handles disposed");
    XMemCompactHeap();
    picture.Take("2. XMemCompactHeap: two pages are given back");
}

void DrawPins(Picture& picture) {
    const Handles handles = ScatteredHandles();
    XHLock(handles[2].get());
    picture.Take("1. XHLock on the third handle");
    XMemCompactHeap();
    picture.Take("2. XMemCompactHeap: the free space stays in two parts");
}

void DrawMovedHigh(Picture& picture) {
    const Handles handles = ScatteredHandles();
    XMoveHHi(handles[2].get());
    picture.Take("1. XMoveHHi on the third handle");
    XMemCompactHeap();
    picture.Take("2. XMemCompactHeap: nothing is in the way");
}

/// A fresh instance each, so that no picture depends on another.
void Make(const std::string& path, const std::function<void(Picture&)>& draw) {
    if (XMemInitInstance() == 0) Fail("no memory");
    {
        Picture picture;
        draw(picture);
        picture.Draw(path);
    }
    XMemExitInstance();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) Fail("usage: figures FOLDER");
    const std::string folder = std::string(arguments[1]) + '/';
    Make(folder + "disciplines.svg", DrawDisciplines);
    Make(folder + "handle.svg", DrawHandle);
    Make(folder + "sliding.svg", DrawSliding);
    Make(folder + "emptying.svg", DrawEmptying);
    Make(folder + "pins.svg", DrawPins);
    Make(folder + "moved-high.svg", DrawMovedHigh);
    return 0;
}
