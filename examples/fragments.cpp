// A heap that fragments and is compacted, drawn before and after.
//
//     fragments TEXT PICTURE.svg
//
// Opens a text many times, each line in a handle of its own, then closes all but every eighth line
// of them. What is left lies scattered over all pages, until XMemCompactHeap gathers it.
#include <veldt20/inspect.h>
#include <veldt20/std.h>
#include <veldt20/veldt20.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kCopies = 1000;
constexpr std::size_t kKeptOf = 8;

struct Line {
    std::size_t number;  ///< in the text
    XOwnedHandle text;
};

std::vector<std::string> ReadLines(const char* path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::vector<Line> OpenCopies(const std::vector<std::string>& text) {
    std::vector<Line> open;
    for (std::size_t i = 0; i < kCopies * text.size(); ++i) {
        const std::string& line = text[i % text.size()];
        char** handle = nullptr;
        if (_XPtrToHand(line.data(), &handle, static_cast<std::int32_t>(line.size())) == 0) break;
        open.push_back({i % text.size(), XOwnedHandle(handle)});
    }
    return open;
}

void CloseMost(std::vector<Line>& open) {
    std::size_t position = 0;
    std::erase_if(open, [&](const Line&) { return position++ % kKeptOf != 0; });
}

std::size_t CountIntact(const std::vector<Line>& open, const std::vector<std::string>& text) {
    std::size_t intact = 0;
    for (const Line& line : open) {
        char** const handle = line.text.get();
        const auto size = static_cast<std::size_t>(XGetHandleSize(handle));
        intact += std::string_view(*handle, size) == text[line.number] ? 1 : 0;
    }
    return intact;
}

int WriteToFile(const char* text, std::uint32_t length, void* file) {
    return std::fwrite(text, 1, length, static_cast<std::FILE*>(file)) == length ? 1 : 0;
}

bool Draw(const XHeapMoment& before, const XHeapMoment& after, const char* path) {
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr) return false;
    const XHeapMoment* const moments[] = {&before, &after};
    const char* const captions[] = {"Before compaction", "After compaction"};
    const bool drawn = XHeapDraw(moments, captions, 2, WriteToFile, file) != 0;
    return std::fclose(file) == 0 && drawn;
}

bool Run(const std::vector<std::string>& text, const char* picture) {
    std::vector<Line> open = OpenCopies(text);
    const std::size_t opened = open.size();
    CloseMost(open);
    XHeapMoment before;
    XHeapMoment after;
    if (before.Capture() == 0) return false;
    XMemCompactHeap();
    if (after.Capture() == 0) return false;
    std::printf("lines: %zu opened, %zu kept, %zu of them intact\n", opened, open.size(),
                CountIntact(open, text));
    std::printf("footprint: %u bytes before, %u after\n", before.Statistics().footprint,
                after.Statistics().footprint);
    return Draw(before, after, picture);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3 || XMemInitInstance() == 0) return 2;
    const std::vector<std::string> text = ReadLines(arguments[1]);
    const bool done = !text.empty() && Run(text, arguments[2]);
    XMemExitInstance();
    return done ? 0 : 1;
}
