#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <vector>

#include "platform/platform.h"
#include "platform/posix/faults.h"
#include "support/seed.h"
#include "support/threads.h"

namespace {

using namespace veldt::platform;

constexpr SIZE_T kUnit = 65536;
constexpr SIZE_T kPage = 4096;

SIZE_T Committed(const void* base) {
    MEMORY_BASIC_INFORMATION info = {};
    return VirtualQuery(base, &info, sizeof info) == sizeof info ? info.RegionSize : SIZE_T(-1);
}

void* Reserve(SIZE_T size) {
    return VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
}

void* Commit(void* base, SIZE_T offset, SIZE_T size) {
    return VirtualAlloc(static_cast<char*>(base) + offset, size, MEM_COMMIT, PAGE_READWRITE);
}

char* Take(SIZE_T size) {
    return static_cast<char*>(
        VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

void Drop(void* base) {
    EXPECT_NE(VirtualFree(base, 0, MEM_RELEASE), 0);
}

/// Random regions against a model of what each has reserved and committed. Every region is filled
/// with a byte of its own, so that two which overlap, or memory lost under a region, are seen.
class Model {
  public:
    /// `alone`: no other thread takes addresses, and some requests are refused.
    Model(unsigned seed, bool alone) : random_(seed), alone_(alone) {}

    void Step() {
        const SIZE_T kind = Below(5);
        if (regions_.empty() || (kind < 2 && regions_.size() < 300)) return Add();
        const auto any = std::next(regions_.begin(), static_cast<long>(Below(regions_.size())));
        auto& [base, region] = *any;
        Check(base, region);
        if (kind == 3) {
            const SIZE_T room = (region.reserved - region.committed) / kPage;
            if (room != 0) Extend(base, region, 1 + Below(room));
            ASSERT_EQ(Commit(base, 0, region.reserved + 1), nullptr);
        } else if (kind == 4) {
            const SIZE_T pages = Below(region.committed / kPage + 1);
            if (pages == 0) return;
            region.committed -= pages * kPage;
            ASSERT_NE(VirtualFree(base + region.committed, pages * kPage, MEM_DECOMMIT), 0);
            Check(base, region);
        } else {
            Drop(base);
            ASSERT_TRUE(!alone_ || VirtualFree(base, 0, MEM_RELEASE) == 0);
            regions_.erase(any);
        }
    }

    void RemoveAll() {
        for (const auto& [base, region] : regions_) {
            Check(base, region);
            Drop(base);
        }
        regions_.clear();
    }

  private:
    struct Region {
        SIZE_T reserved;
        SIZE_T committed;
        unsigned char fill;
    };

    SIZE_T Below(SIZE_T limit) { return static_cast<SIZE_T>(random_() % limit); }

    void Add() {
        const SIZE_T units = Below(3) != 0 ? 1 : 1 + Below(Below(8) == 0 ? 200 : 20);
        const bool refusing = alone_ && Below(16) == 0;
        if (refusing) faults::FailVirtualAlloc(1 + Below(2));
        auto* base = static_cast<char*>(Reserve(units * kUnit));
        if (base == nullptr) {
            ASSERT_TRUE(refusing);
            return;
        }
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(base) % kUnit, 0u);
        ASSERT_EQ(Committed(base), 0u);
        const auto after = regions_.lower_bound(base);
        ASSERT_TRUE(after == regions_.end() || base + units * kUnit <= after->first);
        Region region{units * kUnit, 0, static_cast<unsigned char>(random_())};
        const SIZE_T pages = 1 + Below(units * 16);
        if (Commit(base, 0, pages * kPage) == nullptr) {
            ASSERT_TRUE(refusing);
            return Drop(base);
        }
        Extend(base, region, pages);
        regions_.emplace(base, region);
    }

    static void Extend(char* base, Region& region, SIZE_T pages) {
        ASSERT_NE(Commit(base, region.committed, pages * kPage), nullptr);
        std::memset(base + region.committed, region.fill, pages * kPage);
        region.committed += pages * kPage;
        Check(base, region);
    }

    static void Check(const char* base, const Region& region) {
        ASSERT_EQ(Committed(base), region.committed);
        for (SIZE_T at = 0; at < region.committed; at += 1024) {
            ASSERT_EQ(static_cast<unsigned char>(base[at]), region.fill);
        }
    }

    std::mt19937 random_;
    bool alone_;
    std::map<char*, Region> regions_;
};

class AddressSpace : public testing::Test {
  protected:
    void TearDown() override { EXPECT_STREQ(faults::CheckAddressSpace(), nullptr); }
};

TEST_F(AddressSpace, BehavesLikeTheModelUnderRandomUse) {
    const auto before = faults::CountAddressSpace();
    Model model(veldt::tests::Seed(), true);
    for (int step = 0; step < 6000; ++step) {
        model.Step();
        if (testing::Test::HasFailure()) return;
        if (step % 16 != 0) continue;
        ASSERT_STREQ(faults::CheckAddressSpace(), nullptr) << "step " << step;
    }
    faults::FailVirtualAlloc(faults::kNever);
    model.RemoveAll();
    const auto after = faults::CountAddressSpace();
    EXPECT_EQ(after.reservations, before.reservations);
    EXPECT_EQ(after.committedBytes, before.committedBytes);
}

TEST_F(AddressSpace, ThreadsKeepTheirRegionsApart) {
    veldt::tests::OnThreads(4, [](int number) {
        Model model(static_cast<unsigned>(number), false);
        for (int step = 0; step < 2000; ++step) model.Step();
        model.RemoveAll();
    });
}

/// What the kernel holds of these bytes. Of the whole process it would tell what a sanitizer takes.
SIZE_T Resident(char* from, SIZE_T size) {
    std::vector<unsigned char> pages(size / kPage);
    EXPECT_EQ(mincore(from, size, pages.data()), 0);
    return kPage * static_cast<SIZE_T>(std::ranges::count(pages, 1));
}

SIZE_T Resident(const std::vector<char*>& blocks, SIZE_T size) {
    SIZE_T all = 0;
    for (char* block : blocks) all += Resident(block, size);
    return all;
}

/// Takes and fills blocks of these sizes, and drops them in the same order or another one. Where
/// they were.
std::vector<char*> ComeAndGo(const std::vector<SIZE_T>& sizes, bool shuffled = false) {
    std::vector<char*> blocks;
    for (const SIZE_T size : sizes) {
        blocks.push_back(Take(size));
        std::memset(blocks.back(), 1, size);
    }
    if (shuffled) std::shuffle(blocks.begin(), blocks.end(), std::mt19937(1));
    std::for_each(blocks.begin(), blocks.end(), Drop);
    return blocks;
}

TEST_F(AddressSpace, WhatComesAndGoesCostsNoSystemCallAndStaysWarmUntilToldToGo) {
    const std::vector<SIZE_T> sizes = {4096,   16384,   61440,   65536,  69632,
                                       135168, 1 << 18, 1 << 20, 819200, (4 << 20) + 4096};
    const std::vector<SIZE_T> pages(500, 16384);
    auto before = faults::CountAddressSpace(), after = before;
    for (int round = 0; round < 6; ++round) {
        before = faults::CountAddressSpace();
        ComeAndGo(pages);
        for (const SIZE_T size : sizes) ComeAndGo({size});
        after = faults::CountAddressSpace();
    }
    EXPECT_EQ(after.systemCalls, before.systemCalls);
    EXPECT_EQ(after.allocCalls - before.allocCalls, pages.size() + sizes.size());
    const std::vector<char*> gone = ComeAndGo(pages);
    EXPECT_GT(Resident(gone, 16384), 480 * 16384);
    GiveBackIdleMemory();
    EXPECT_EQ(Resident(gone, 16384), 0);
}

TEST_F(AddressSpace, GivesMemoryBack) {
    constexpr SIZE_T kBig = SIZE_T{64} << 20;
    char* big = Take(kBig);
    std::memset(big, 1, kBig);
    ASSERT_NE(VirtualFree(big + kPage, kBig - kPage, MEM_DECOMMIT), 0);
    EXPECT_EQ(Resident(big, kBig), kPage);
    EXPECT_EQ(big[0], 1);
    Drop(big);

    const std::vector<char*> gone = ComeAndGo(std::vector<SIZE_T>(4000, 16384), true);
    EXPECT_LT(Resident(gone, 16384), 200 * 16384);
}

TEST_F(AddressSpace, HoldsMoreRegionsThanTheKernelHasMappings) {
    const SIZE_T count = sizeof(void*) == 8 ? 200000 : 20000;
    std::vector<char*> regions(count);
    for (SIZE_T at = 0; at < count; ++at) {
        regions[at] = Take(16384);
        ASSERT_NE(regions[at], nullptr) << at;
        if (at % 100 == 0) regions[at][16383] = 1;
    }
    std::ifstream maps("/proc/self/maps");
    EXPECT_LT(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'), 1000);
    std::shuffle(regions.begin(), regions.end(), std::mt19937(1));
    for (SIZE_T at = 0; at < count / 2; ++at) Drop(regions[at]);
    EXPECT_STREQ(faults::CheckAddressSpace(), nullptr);
    for (SIZE_T at = count / 2; at < count; ++at) {
        ASSERT_EQ(Committed(regions[at]), 16384u);
        Drop(regions[at]);
    }
}

TEST_F(AddressSpace, HoldsBlocksOfNearlyFourGigabytes) {
    const SIZE_T size = sizeof(void*) == 8 ? SIZE_T{0xFFFFF000} : SIZE_T{0x40000000};
    auto* base = static_cast<char*>(Reserve(size));
    ASSERT_NE(base, nullptr);
    ASSERT_NE(Commit(base, 0, kPage), nullptr);
    ASSERT_NE(Commit(base, kPage, size - kPage), nullptr);
    EXPECT_EQ(Committed(base), size);
    base[0] = base[size - 1] = 1;
    constexpr SIZE_T kRest = 0x10000000;
    ASSERT_NE(VirtualFree(base + kRest, size - kRest, MEM_DECOMMIT), 0);
    EXPECT_EQ(Committed(base), kRest);
    Drop(base);
}

TEST_F(AddressSpace, RefusesAtTheLimit) {
    char* base = Take(kPage);
    const auto before = faults::CountAddressSpace();
    faults::LimitCommitted(before.committedBytes + 3 * kPage);
    EXPECT_NE(Commit(base, kPage, 3 * kPage), nullptr);
    EXPECT_EQ(Commit(base, 4 * kPage, kPage), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Take(kUnit), nullptr);
    EXPECT_EQ(faults::CountAddressSpace().reservations, before.reservations);
    faults::LimitCommitted(faults::kNever);
    Drop(base);
}

TEST_F(AddressSpace, RefusesWhatItCannotMean) {
    char* base = static_cast<char*>(Reserve(2 * kUnit));
    ASSERT_NE(Commit(base, 0, 2 * kPage), nullptr);
    int elsewhere = 0;
    EXPECT_EQ(Reserve(0), nullptr);
    EXPECT_EQ(Reserve(~SIZE_T{0}), nullptr);
    EXPECT_EQ(VirtualAlloc(base, kUnit, MEM_RESERVE, PAGE_NOACCESS), nullptr);
    EXPECT_EQ(Commit(base, 3 * kPage, kPage), nullptr) << "a gap before it";
    EXPECT_EQ(Commit(base, kPage, 2 * kUnit), nullptr);
    EXPECT_EQ(Commit(base, kPage, ~SIZE_T{0}), nullptr);
    EXPECT_EQ(Commit(&elsewhere, 0, kPage), nullptr);
    EXPECT_EQ(VirtualFree(base, kPage, MEM_DECOMMIT), 0) << "a gap behind it";
    EXPECT_EQ(VirtualFree(base + 3 * kUnit, kPage, MEM_DECOMMIT), 0) << "another region's";
    for (void* wrong : std::vector<void*>{base + kUnit, base + kPage, nullptr, &elsewhere}) {
        EXPECT_EQ(VirtualFree(wrong, 0, MEM_RELEASE), 0) << wrong;
    }
    EXPECT_EQ(Committed(base + kUnit), SIZE_T(-1));
    EXPECT_EQ(Committed(base), 2 * kPage);
    Drop(base);
    EXPECT_EQ(Committed(base), SIZE_T(-1));
    EXPECT_EQ(Commit(base, 0, kPage), nullptr);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
/// Where the kernel grants much less than the layer would like to have.
[[noreturn]] void UseUpAQuarterGigabyte() {
    constexpr SIZE_T kRoom = SIZE_T{256} << 20;
    SIZE_T pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const SIZE_T most = pages * kPage + kRoom;
    const rlimit limit = {most, most};
    setrlimit(RLIMIT_AS, &limit);
    std::vector<char*> regions;
    regions.reserve(10000);
    while (char* base = Take(kPage)) {
        base[0] = 1;
        regions.push_back(base);
    }
    const bool plenty = regions.size() * kUnit >= kRoom / 2;
    for (const SIZE_T first : {0, 1}) {
        for (SIZE_T at = first; at < regions.size(); at += 2) Drop(regions[at]);
    }
    const bool together = Reserve(regions.size() * kUnit / 8) != nullptr;
    std::exit(plenty && together && faults::CheckAddressSpace() == nullptr ? 0 : 1);
}

TEST(AddressSpaceDeathTest, MakesDoWithWhatTheKernelGrants) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(UseUpAQuarterGigabyte(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
