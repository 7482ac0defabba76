// What it costs that the heap's pages begin at 64 KB boundaries and fill a quarter of the way to
// the next: the processor finds its translations of addresses, as its lines of memory, by their low
// bits, and so uses a part of its tables only.
#include <sys/mman.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <random>
#include <vector>

#include "suite/work.h"

namespace veldt::bench {

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPagesPerUnit = 16;

/// Address space whose pages take no memory until they are touched.
char* Reserve(std::size_t bytes) {
    void* base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return static_cast<char*>(base);
}

/// A ring of pointers through `pages` pages in random order, of which the first `used` of every
/// sixteen are taken. Gives one of the pointers.
void** RingThroughPages(std::size_t pages, std::size_t used) {
    char* base = Reserve(pages / used * kPagesPerUnit * kPage);
    std::mt19937 random{1};
    std::vector<std::size_t> order(pages);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), random);
    std::vector<void**> places;
    for (const std::size_t page : order) {
        const std::size_t number = page / used * kPagesPerUnit + page % used;
        places.push_back(reinterpret_cast<void**>(base + number * kPage + random() % 64 * 64));
    }
    for (std::size_t i = 0; i < pages; ++i) {
        *places[i] = places[(i + 1) % pages];
    }
    return places[0];
}

Setup Walking(std::size_t pages, std::size_t used) {
    return [=]() -> Round {
        void** place = RingThroughPages(pages, used);
        return [place]() mutable {
            return NanosecondsOf(500'000, [&place] {
                place = static_cast<void**>(*place);
                Touch(place);
            });
        };
    };
}

Row PagesRow(const char* name, std::size_t bytes) {
    const std::size_t pages = bytes / kPage;
    return {name, {}, {Walking(pages, 4), Walking(pages, kPagesPerUnit)}};
}

}  // namespace

Section Units() {
    return {"Pages at 64 KB boundaries",
            "Loads that each depend on the one before, each from another page of 4 KB: where four "
            "pages stand at each 64 KB boundary, as the heap's do, and where all stand without "
            "gaps.",
            {{"64 KB apart", ""}, {"without gaps", ""}},
            {PagesRow("a load from 4 MB", std::size_t{4} << 20),
             PagesRow("a load from 16 MB", std::size_t{16} << 20),
             PagesRow("a load from 64 MB", std::size_t{64} << 20),
             PagesRow("a load from 1 GB", std::size_t{1} << 30)}};
}

}  // namespace veldt::bench
