// String resources: a table that the host fills, since no module carries any here.
#include <veldt20/host.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <utility>

#include "platform/platform.h"

namespace veldt::platform {
namespace {

struct Resources {
    std::shared_mutex mutex;
    std::map<std::pair<HINSTANCE, UINT>, std::string> texts;
};

Resources& TheResources() {
    static Resources resources;
    return resources;
}

}  // namespace

int LoadStringA(HINSTANCE module, UINT id, char* buffer, int size) {
    if (size <= 0) return 0;
    Resources& resources = TheResources();
    const std::shared_lock lock(resources.mutex);
    const auto found = resources.texts.find({module, id});
    if (found == resources.texts.end()) return 0;
    const std::size_t count = std::min(found->second.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, found->second.data(), count);
    buffer[count] = 0;
    return static_cast<int>(count);
}

}  // namespace veldt::platform

int XHostSetString(HINSTANCE__* module, unsigned int id, const char* text) {
    auto& resources = veldt::platform::TheResources();
    try {
        const std::unique_lock lock(resources.mutex);
        if (text == nullptr) {
            resources.texts.erase({module, id});
        } else {
            resources.texts.insert_or_assign({module, id}, std::string(text));
        }
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
