// What the tests on files share: a directory of their own, and paths in the system's form.
#pragma once

#include <veldt20/files.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace veldt::tests {

/// A fresh directory, gone with all that it holds at the end.
class Scratch {
  public:
    Scratch() {
        const auto parent = std::filesystem::temp_directory_path();
        do {
            directory_ = parent / ("veldt20-test-" + std::to_string(std::random_device{}()));
        } while (!std::filesystem::create_directory(directory_));
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// The host's own path of a name in it, for looking at what the library did.
    std::filesystem::path Host(const std::string& name) const { return directory_ / name; }
    /// The path of a name in it as the library takes it.
    std::string Path(const std::string& name) const {
        std::string path = Host(name).string();
        std::replace(path.begin(), path.end(), '/', '\\');
        return path[0] == '\\' ? "C:" + path : path;
    }
    void Fill(const std::string& name, const std::string& content) const {
        std::ofstream(Host(name), std::ios::binary) << content;
    }
    std::string Content(const std::string& name) const {
        std::ifstream file(Host(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path directory_;
};

inline XFile FileAt(const std::string& path) {
    XFileSpec spec(XCString(path.c_str()));
    return XFile(&spec);
}

}  // namespace veldt::tests
