// What XFile costs on top of the kernel.
#include <fcntl.h>
#include <unistd.h>
#include <veldt20/files.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr std::uint32_t kBlock = 4096;
constexpr int kBlocks = 16384;  // 64 MB
constexpr int kTransfers = 4000;
constexpr double kNextToNothing = 1.2;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "veldt-bench: %s\n", what);
    std::exit(2);
}

/// A file that the page cache holds. It has no name any more once it is open, so that it goes with
/// the process.
class Scratch {
  public:
    Scratch() : file_(MakeSpec()) {
        descriptor_ = open(path_.c_str(), O_RDWR | O_CLOEXEC);
        for (int i = 0; i < kBlocks; ++i) {
            if (write(descriptor_, buffer_, kBlock) != kBlock) Fail("cannot fill a file");
        }
        if (file_.Open(XFile::PermissionReadWrite) == 0) Fail("cannot open a file");
        unlink(path_.c_str());
        for (std::int64_t& position : positions_) {
            position = std::int64_t{kBlock} * static_cast<std::int64_t>(random_() % kBlocks);
        }
    }

    /// Nanoseconds a transfer, all at random positions.
    template <class Transfer>
    double Time(const Transfer& transfer) {
        auto position = positions_.begin();
        return NanosecondsOf(kTransfers, [&] {
            if (transfer(*this, *position++) != kBlock) Fail("a transfer came short");
        });
    }

    std::uint32_t Read(std::int64_t at) {
        return file_.Read(buffer_, kBlock, static_cast<std::int32_t>(at),
                          static_cast<std::int32_t>(at >> 32));
    }
    std::uint32_t Write(std::int64_t at) {
        return file_.Write(buffer_, kBlock, static_cast<std::int32_t>(at),
                           static_cast<std::int32_t>(at >> 32));
    }
    std::uint32_t PlainRead(std::int64_t at) {
        return static_cast<std::uint32_t>(pread(descriptor_, buffer_, kBlock, at));
    }
    std::uint32_t PlainWrite(std::int64_t at) {
        return static_cast<std::uint32_t>(pwrite(descriptor_, buffer_, kBlock, at));
    }

  private:
    XFileSpec* MakeSpec() {
        char path[] = "/tmp/veldt20-bench-XXXXXX";
        const int made = mkstemp(path);
        if (made == -1) Fail("cannot make a file");
        close(made);
        path_ = path;
        spec_.SetNativeFileSpec(XCString(path));
        return &spec_;
    }

    char buffer_[kBlock] = {};
    std::mt19937_64 random_{20};
    std::vector<std::int64_t> positions_ = std::vector<std::int64_t>(kTransfers);
    std::string path_;
    XFileSpec spec_;
    XFile file_;
    int descriptor_ = -1;
};

template <class Transfer>
Setup Transferring(Transfer transfer) {
    return [=]() -> Round {
        auto scratch = std::make_shared<Scratch>();
        return [=] { return scratch->Time(transfer); };
    };
}

}  // namespace

Section Files() {
    return {"Files",
            "4 KB at random positions of a file of 64 MB that the page cache holds.",
            {{"XFile", ""}, {"pread, pwrite", ""}},
            {{"read",
              {kNextToNothing},
              {Transferring([](Scratch& s, std::int64_t at) { return s.Read(at); }),
               Transferring([](Scratch& s, std::int64_t at) { return s.PlainRead(at); })}},
             {"write",
              {kNextToNothing},
              {Transferring([](Scratch& s, std::int64_t at) { return s.Write(at); }),
               Transferring([](Scratch& s, std::int64_t at) { return s.PlainWrite(at); })}}}};
}

}  // namespace veldt::bench
