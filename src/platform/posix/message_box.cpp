#include <atomic>

#include "platform/platform.h"

namespace {

using ShowMessageBox = int (*)(const char* text, const char* caption, unsigned int style);

constinit std::atomic<ShowMessageBox> hostMessageBox{nullptr};

}  // namespace

void XHostSetMessageBox(ShowMessageBox show) {
    hostMessageBox.store(show, std::memory_order_release);
}

namespace veldt::platform {

/// The beep belongs to the box: a host that shows one makes whatever sound it wants there.
BOOL MessageBeep(UINT) {
    return 1;
}

int MessageBoxA(void*, const char* text, const char* caption, UINT style) {
    const ShowMessageBox show = hostMessageBox.load(std::memory_order_acquire);
    return show != nullptr ? show(text, caption, style) : 0;
}

}  // namespace veldt::platform
