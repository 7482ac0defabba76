// A program of somebody who uses the library: a line of text in a handle.
#include <veldt20/veldt20.h>

#include <cstdio>
#include <cstring>

int main() {
    if (XMemInitInstance() == 0) return 1;
    const XCString text("a line in a handle");
    char** const line = _XNewHandle(text.GetLength());
    if (line == nullptr) return 1;
    std::memcpy(*line, static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength()));
    XMemCompactHeap();
    std::printf("%.*s\n", static_cast<int>(XGetHandleSize(line)), *line);
    XDisposeHandle(line);
    XMemExitInstance();
    return 0;
}
