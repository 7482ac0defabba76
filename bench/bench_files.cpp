// What XFile costs on top of the kernel: 4 KB at random positions of one file that the page cache
// holds, through XFile and with plain pread and pwrite on the same bytes, in turn. Prints the
// median of each in nanoseconds and their ratio; ends with 1 if a ratio exceeds 1.2.
#include <fcntl.h>
#include <unistd.h>
#include <veldt20/files.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t kBlock = 4096;
constexpr int kBlocks = 16384;  // 64 MB
constexpr int kBatch = 2000;
constexpr int kRounds = 101;
constexpr double kLimit = 1.2;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "bench_files: %s\n", what);
    std::exit(2);
}

class Bench {
  public:
    explicit Bench(const std::string& directory)
        : path_(directory + "/veldt20-bench-" + std::to_string(getpid())),
          spec_(XCString(path_.c_str())),
          file_(&spec_),
          descriptor_(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
        if (descriptor_ == -1) Fail("cannot make a file");
        for (int i = 0; i < kBlocks; ++i) {
            if (write(descriptor_, buffer_, kBlock) != kBlock) Fail("cannot fill the file");
        }
        if (file_.Open(XFile::PermissionReadWrite) == 0) Fail("cannot open the file");
    }
    ~Bench() {
        file_.Close();
        close(descriptor_);
        unlink(path_.c_str());
    }

    bool Reads() {
        return Compare(
            "read",
            [&](std::int64_t at) {
                return file_.Read(buffer_, kBlock, static_cast<std::int32_t>(at),
                                  static_cast<std::int32_t>(at >> 32)) == kBlock;
            },
            [&](std::int64_t at) { return pread(descriptor_, buffer_, kBlock, at) == kBlock; });
    }

    bool Writes() {
        return Compare(
            "write",
            [&](std::int64_t at) {
                return file_.Write(buffer_, kBlock, static_cast<std::int32_t>(at),
                                   static_cast<std::int32_t>(at >> 32)) == kBlock;
            },
            [&](std::int64_t at) { return pwrite(descriptor_, buffer_, kBlock, at) == kBlock; });
    }

  private:
    // Nanoseconds a call over one batch.
    template <class Call>
    double Time(const std::vector<std::int64_t>& positions, Call call) {
        const auto start = std::chrono::steady_clock::now();
        for (const std::int64_t at : positions) {
            if (!call(at)) Fail("a transfer came short");
        }
        const std::chrono::duration<double, std::nano> taken =
            std::chrono::steady_clock::now() - start;
        return taken.count() / kBatch;
    }

    template <class Ours, class Plain>
    bool Compare(const char* name, Ours ours, Plain plain) {
        std::vector<double> oursTimes;
        std::vector<double> plainTimes;
        std::vector<std::int64_t> positions(kBatch);
        for (int round = 0; round < kRounds; ++round) {
            for (std::int64_t& at : positions) {
                at = std::uniform_int_distribution<std::int64_t>(0, kBlocks - 1)(random_) * kBlock;
            }
            // Who goes first changes from round to round.
            if (round % 2 == 0) oursTimes.push_back(Time(positions, ours));
            plainTimes.push_back(Time(positions, plain));
            if (round % 2 != 0) oursTimes.push_back(Time(positions, ours));
        }
        const double own = Median(oursTimes);
        const double kernel = Median(plainTimes);
        const double ratio = own / kernel;
        std::printf("%-6s XFile %7.1f ns   p%-6s %7.1f ns   ratio %.3f (limit %.1f)\n", name, own,
                    name, kernel, ratio, kLimit);
        return ratio <= kLimit;
    }

    static double Median(std::vector<double>& times) {
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

    char buffer_[kBlock] = {};
    std::mt19937_64 random_{20};
    const std::string path_;
    XFileSpec spec_;
    XFile file_;
    const int descriptor_;
};

}  // namespace

int main(int argc, char** argv) {
    Bench bench(argc > 1 ? argv[1] : "/tmp");
    const bool reads = bench.Reads();
    const bool writes = bench.Writes();
    return reads && writes ? 0 : 1;
}
