// The texts of the heap's errors and the one dialog that shows them.
#include <cstdlib>

#include "heap/errors.h"

namespace veldt::heap {

using namespace platform;

namespace {

struct ErrorRow {
    std::int32_t number;
    char name[24];
};
static_assert(sizeof(ErrorRow) == 28);

constexpr ErrorRow kErrorRows[16] = {
    {0, ""},
    {1, "MEM_INTERNAL_ERROR"},
    {2, ""},
    {3, "MEM_BLOCK_TOO_BIG"},
    {4, "MEM_ALLOC_ZERO"},
    {5, "MEM_RESIZE_FAILED"},
    {6, "MEM_LOCK_ERROR"},
    {7, "MEM_EXCEEDED_CEILING"},
    {8, "MEM_TOO_MANY_PAGES"},
    {9, "MEM_TOO_MANY_TASKS"},
    {10, "MEM_BAD_MEM_POOL"},
    {11, "MEM_BAD_BLOCK"},
    {12, "MEM_BAD_FREE_BLOCK"},
    {13, "MEM_BAD_HANDLE"},
    {14, "MEM_BAD_POINTER"},
    {14, "MEM_WRONG_TASK"},
};

/// Asks for any box at all where the first style could not be shown.
constexpr UINT kPlainStyle = MB_SYSTEMMODAL | MB_ICONHAND;

}  // namespace

const char* HeapErrorText(std::int32_t error) {
    if (error == MEM_OUT_OF_MEMORY) {
        return "Out of memory.  Please free some memory, then choose retry.";
    }
    const bool known = error > MEM_OUT_OF_MEMORY && error <= MEM_BAD_POINTER;
    return kErrorRows[known ? error : MEM_INTERNAL_ERROR].name;
}

int ErrorMessageBox(const char* text, int retryAllowed) {
    const UINT buttons = retryAllowed != 0 ? MB_ABORTRETRYIGNORE : MB_OKCANCEL;
    UINT style = MB_TASKMODAL | MB_DEFBUTTON2 | MB_ICONHAND | buttons;
    MessageBeep(0);
    for (;;) {
        switch (MessageBoxA(nullptr, text, "Tessera Library", style)) {
            case IDOK:
            case IDIGNORE:
                return 0;
            case IDCANCEL:
            case IDABORT:
                std::abort();
            case IDRETRY:
                return 1;
            default:
                if ((style & MB_TASKMODAL) == 0) {
                    return 0;
                }
                style = (style & ~UINT{MB_TASKMODAL}) | kPlainStyle;
        }
    }
}

}  // namespace veldt::heap
