// What the figures were taken on, in words.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace veldt::bench {

/// One sentence each: the machine, the software, how busy it was.
std::vector<std::string> DescribeMachine(const std::set<std::string>& allocators);

}  // namespace veldt::bench
