// The string resources of this program, which resources.rc holds on Windows.
#include <veldt20/host.h>

#include <string>

namespace {

const bool registered = [] {
    bool done = true;
    for (const unsigned int length : {254u, 255u, 510u, 511u, 512u, 1200u}) {
        const std::string text = std::string(length - 1, 'x') + 'y';
        done = done && XHostSetString(nullptr, length, text.c_str()) == 1;
    }
    return done && XHostSetString(nullptr, 0, "") == 1;
}();

}  // namespace
