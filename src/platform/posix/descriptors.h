// Small tools for the kernel's file descriptors.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace veldt::platform {

/// Repeats a system call for as long as a signal cuts it off before it did anything.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

/// Closes what it holds, unless that was released. -1 holds nothing.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (number_ != -1) close(number_);
    }

    int Number() const { return number_; }
    int Release() { return std::exchange(number_, -1); }

  private:
    int number_;
};

}  // namespace veldt::platform
