// Numbers in text.
#pragma once

#include <string_view>

namespace veldt::numerics {

/// The number that `text` begins with, by the rules of strtod in the "C" locale, correctly rounded
/// in the current mode; +0.0 if it begins with none. At most 288 characters.
double ReadNumber(std::string_view text);

}  // namespace veldt::numerics
