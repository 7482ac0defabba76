// Strings that share buffers, edited in any order with each other's parts, against std::string.
#include <veldt20/strings.h>

#include <array>

#include "fuzz/input.h"

namespace {

using veldt::fuzz::Input;
using veldt::fuzz::Require;

struct Pair {
    XCString text;
    std::string model;
};
using Pairs = std::array<Pair, 6>;

/// The part before the first zero byte, which is all that a terminated text shows.
const char* Shown(const std::string& text) {
    return text.c_str();
}

void Append(Pair& pair, const Pair& other, unsigned from) {
    if (from == 0) {
        pair.text += other.text;
        pair.model += other.model;
        return;
    }
    const std::size_t offset = from % (other.model.size() + 1);
    pair.text += static_cast<const char*>(other.text) + offset;
    pair.model += std::string(Shown(other.model) + offset);
}

void Step(Pairs& pairs, Input& input) {
    const unsigned action = input.Byte() % 8;
    Pair& pair = pairs[input.Byte() % pairs.size()];
    const Pair& other = pairs[input.Byte() % pairs.size()];
    switch (action) {
        case 0:
            pair.text = other.text;
            pair.model = std::string(other.model);
            break;
        case 1:
            if (pair.model.size() + other.model.size() < 5000) {
                Append(pair, other, input.Byte());
            }
            break;
        case 2: {
            const std::string fresh = input.Text();
            pair.text = XCString(fresh.data(), static_cast<int>(fresh.size()));
            pair.model = fresh;
            break;
        }
        case 3: {
            const int count = input.Byte();
            pair.model = std::string(other.model, 0, static_cast<std::size_t>(count));
            pair.text = other.text.Left(count);
            break;
        }
        case 4:
            pair.text += static_cast<char>(input.Byte() | 1);
            pair.model += static_cast<char>(pair.text.GetAt(pair.text.GetLength() - 1));
            break;
        case 5:
            pair.text.FreeExtra();
            break;
        case 6:
            pair.text.Empty();
            pair.model.clear();
            break;
        default: {
            const std::string wanted = input.Text();
            const auto at = std::string(Shown(pair.model)).find(Shown(wanted));
            Require(pair.text.Find(Shown(wanted)) ==
                        (at == std::string::npos ? -1 : static_cast<int>(at)),
                    "a text is found elsewhere");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Pairs pairs;
    for (Input input(bytes, size); !input.Empty();) {
        Step(pairs, input);
        for (const Pair& pair : pairs) {
            Require(std::string(pair.text, static_cast<std::size_t>(pair.text.GetLength())) ==
                        pair.model,
                    "a text differs from its model");
        }
    }
    return 0;
}
