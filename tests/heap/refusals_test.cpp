// The operating system refuses memory while a page is made.
#include <memory>

#include "heap/fixed_blocks.h"
#include "heap_fixture.h"
#include "platform/posix/faults.h"

namespace {

using namespace veldt::tests;
namespace faults = veldt::platform::faults;

/// What `work` gives with its n-th request for address space refused, and perhaps all after it.
template <class Work>
auto Refusing(std::uint64_t n, bool onward, const Work& work) {
    faults::FailVirtualAlloc(n, onward);
    const auto given = work();
    faults::FailVirtualAlloc(faults::kNever);
    return given;
}

TEST(Refusals, APageThatNoIndexHasRoomForIsNone) {
    // The second page of a pool takes a node, and of some pool more nodes have to be had first.
    std::vector<std::unique_ptr<TestPool>> pools;
    const HeapPage* second = nullptr;
    std::uint64_t reservations = 0;
    do {
        HeapPool* pool = *pools.emplace_back(std::make_unique<TestPool>());
        PageAcquire(pool, kKindVariable, 4096, 0);
        reservations = faults::CountAddressSpace().reservations;
        second = Refusing(2, false, [pool] { return PageAcquire(pool, kKindVariable, 4096, 0); });
    } while (second != nullptr && pools.size() < 200);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(faults::CountAddressSpace().reservations, reservations);
    HeapPool* pool = *pools.back();
    EXPECT_EQ(RingOf(pool->pageLists[kKindVariable]).size(), 1U);
    EXPECT_TRUE(Intact(pool));
    EXPECT_NE(PageAcquire(pool, kKindVariable, 4096, 0), nullptr);
}

TEST(Refusals, PagesOfFixedBlocksComeSmaller) {
    const RaisedErrors raised;
    TestPool pool;
    const auto alloc = [&pool] { return FixedAlloc(pool); };
    const std::uint32_t before = pool->footprint;
    EXPECT_EQ(Refusing(1, true, alloc), nullptr);
    EXPECT_EQ(RaisedErrors::Take(), Raised{MEM_OUT_OF_MEMORY});
    EXPECT_EQ(pool->footprint, before);
    ASSERT_NE(Refusing(1, false, alloc), nullptr);
    EXPECT_EQ(RaisedErrors::Take(), Raised{});
    EXPECT_EQ(pool->footprint, before + pool->pageSize / 2);
}

}  // namespace
