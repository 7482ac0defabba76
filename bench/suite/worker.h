// The two ends of a worker: the process that does one contestant's work of one row. It says which
// allocator serves it once it is ready, then gives one figure for every byte that it is sent, and
// ends when it is sent no more.
#pragma once

#include <string>

#include "suite/work.h"

namespace veldt::bench {

/// What a worker is for, by numbers into AllSections().
struct Task {
    std::size_t section;
    std::size_t row;
    std::size_t contestant;
};

/// The worker's own end. Gives the process's exit status.
int RunAsWorker(const Task& task);

/// The caller's end. A worker that can't be had, or fails, ends this process with a message.
class Worker {
  public:
    /// Starts `program` as a worker with `preload` in front of its C library, and waits until it is
    /// ready.
    Worker(const std::string& program, const Task& task, const std::string& preload);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    const std::string& Allocator() const { return allocator_; }
    double RunRound();

  private:
    std::string ReadLine();

    std::string program_;
    int process_ = -1;
    int requests_ = -1;
    int answers_ = -1;
    std::string allocator_;
};

}  // namespace veldt::bench
