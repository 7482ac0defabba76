#include "suite/machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace veldt::bench {

namespace {

/// The value of the first line of /proc/cpuinfo that has this key.
std::string ProcessorFact(const std::string& key) {
    std::ifstream facts("/proc/cpuinfo");
    for (std::string line; std::getline(facts, line);) {
        const std::size_t colon = line.find(": ");
        if (line.starts_with(key) && colon != std::string::npos) return line.substr(colon + 2);
    }
    return "unknown";
}

std::string Machine() {
    const long processors = sysconf(_SC_NPROCESSORS_ONLN);
    const double bytes =
        static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    return "Processor: " + ProcessorFact("model name") + " (family " + ProcessorFact("cpu family") +
           ", model " + ProcessorFact("model\t") + "), " + std::to_string(processors) +
           " in use, " + std::to_string(std::lround(bytes / (1 << 30))) + " GB of memory.";
}

std::string System() {
    utsname names;
    uname(&names);
    const std::string release = names.release;
    return std::string("System: ") + names.sysname + " " + release.substr(0, release.find('-')) +
           ", compiler " + __VERSION__ + ", -O3 and link-time optimisation.";
}

std::string Allocators(const std::set<std::string>& names) {
    std::string text = "Allocators beside it:";
    const char* before = " ";
    for (const std::string& name : names) {
        text += before + name;
        before = ", ";
    }
    return text + ".";
}

std::string Load() {
    double load = 0;
    getloadavg(&load, 1);
    char text[80];
    std::snprintf(text, sizeof text,
                  "Processes that wanted to run at the end, itself included: %.1f.", load);
    return text;
}

}  // namespace

std::vector<std::string> DescribeMachine(const std::set<std::string>& allocators) {
    return {Machine(), System(), Allocators(allocators), Load()};
}

}  // namespace veldt::bench
