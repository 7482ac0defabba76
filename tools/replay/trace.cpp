#include "trace.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>
#include <unordered_map>

namespace {

/// The largest block that the library serves.
constexpr std::uint64_t kLargestSize = 0x7FFFFFFF;

/// Reads one trace line after the other and knows which blocks are live.
class Reader {
  public:
    explicit Reader(Trace& trace) : trace_(trace) {}

    /// Gives what is wrong with the line, or an empty text.
    std::string Take(std::string_view line) {
        if (line.empty() || line.front() == '#') {
            return {};
        }
        words_ = line;
        const std::string_view verb = NextWord();
        if (verb == "a" || verb == "r") {
            return TakeSized(verb == "a" ? Operation::kAllocate : Operation::kResize);
        }
        if (verb == "f") {
            return TakeFree();
        }
        return "unknown operation '" + std::string(verb) + "': a, r or f is wanted";
    }

  private:
    std::string_view NextWord() {
        const std::size_t start = std::min(words_.find_first_not_of(" \t\r"), words_.size());
        const std::size_t end = std::min(words_.find_first_of(" \t\r", start), words_.size());
        const std::string_view word = words_.substr(start, end - start);
        words_.remove_prefix(end);
        return word;
    }

    std::string NextNumber(const char* what, std::uint64_t& number) {
        const std::string_view word = NextWord();
        const char* end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data(), end, number);
        if (word.empty()) {
            return std::string(what) + " is missing";
        }
        if (error != std::errc{} || stop != end) {
            return std::string(what) + " '" + std::string(word) + "' is not a number";
        }
        return {};
    }

    std::string End() {
        const std::string_view rest = NextWord();
        return rest.empty() ? std::string() : "unexpected '" + std::string(rest) + "'";
    }

    std::string TakeSized(Operation::Kind kind) {
        std::uint64_t id = 0;
        std::uint64_t size = 0;
        std::string wrong = NextNumber("block number", id);
        if (wrong.empty()) {
            wrong = NextNumber("size", size);
        }
        if (wrong.empty() && size > kLargestSize) {
            wrong = "size " + std::to_string(size) + " is above " + std::to_string(kLargestSize);
        }
        if (wrong.empty()) {
            wrong = End();
        }
        if (!wrong.empty()) {
            return wrong;
        }
        const auto found = live_.find(id);
        if (kind == Operation::kAllocate) {
            if (found != live_.end()) {
                return "block " + std::to_string(id) + " is allocated already";
            }
            live_[id] = trace_.blocks++;
        } else if (found == live_.end()) {
            return "block " + std::to_string(id) + " is not allocated";
        }
        trace_.operations.push_back({kind, live_[id], static_cast<std::uint32_t>(size)});
        return {};
    }

    std::string TakeFree() {
        std::uint64_t id = 0;
        std::string wrong = NextNumber("block number", id);
        if (wrong.empty()) {
            wrong = End();
        }
        if (!wrong.empty()) {
            return wrong;
        }
        const auto found = live_.find(id);
        if (found == live_.end()) {
            return "block " + std::to_string(id) + " is not allocated";
        }
        trace_.operations.push_back({Operation::kFree, found->second, 0});
        live_.erase(found);
        return {};
    }

    Trace& trace_;
    std::unordered_map<std::uint64_t, std::uint32_t> live_;
    std::string_view words_;
};

}  // namespace

std::string ReadTrace(const std::string& file, Trace& trace) {
    std::ifstream opened;
    if (file != "-") {
        opened.open(file);
        if (!opened) {
            return file + ": " + std::strerror(errno);
        }
    }
    std::istream& input = file == "-" ? std::cin : opened;
    Reader reader(trace);
    std::string line;
    for (std::size_t number = 1; std::getline(input, line); ++number) {
        if (const std::string wrong = reader.Take(line); !wrong.empty()) {
            return file + ":" + std::to_string(number) + ": " + wrong;
        }
    }
    return input.bad() ? file + ": can't be read to its end" : std::string();
}
