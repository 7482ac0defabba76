#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "platform/platform.h"
#include "platform/posix/faults.h"

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

/// Random regions against a model of what each has reserved and committed. Every region is filled
/// with a byte of its own, so that two which overlap, or memory lost under a region, are seen.
class Model {
  public:
    explicit Model(unsigned seed) : random_(seed) {}

    void Step() {
        switch (Below(5)) {
            case 0:
            case 1:
                return regions_.size() < 300 ? Add() : Remove();
            case 2:
                return Remove();
            case 3:
                return Grow();
            default:
                return Shrink();
        }
    }

    void RemoveAll() {
        while (!regions_.empty()) Remove();
    }

    void CheckAll() {
        for (const auto& [base, region] : regions_) Check(base, region);
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
        auto* base = static_cast<char*>(Reserve(units * kUnit));
        ASSERT_NE(base, nullptr);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(base) % kUnit, 0u);
        ASSERT_EQ(Committed(base), 0u);
        const auto after = regions_.lower_bound(base);
        if (after != regions_.end()) {
            ASSERT_LE(base + units * kUnit, after->first);
        }
        Region region{units * kUnit, 0, static_cast<unsigned char>(random_())};
        Extend(base, region, 1 + Below(units * 16));
        regions_.emplace(base, region);
    }

    void Extend(char* base, Region& region, SIZE_T pages) {
        ASSERT_NE(Commit(base, region.committed, pages * kPage), nullptr);
        std::memset(base + region.committed, region.fill, pages * kPage);
        region.committed += pages * kPage;
        ASSERT_EQ(Committed(base), region.committed);
    }

    auto Any() { return std::next(regions_.begin(), static_cast<long>(Below(regions_.size()))); }

    static void Check(char* base, const Region& region) {
        ASSERT_EQ(Committed(base), region.committed);
        for (SIZE_T at = 0; at < region.committed; at += 1024) {
            ASSERT_EQ(static_cast<unsigned char>(base[at]), region.fill);
        }
    }

    void Remove() {
        if (regions_.empty()) return;
        const auto it = Any();
        Check(it->first, it->second);
        ASSERT_NE(VirtualFree(it->first, 0, MEM_RELEASE), 0);
        ASSERT_EQ(VirtualFree(it->first, 0, MEM_RELEASE), 0);
        regions_.erase(it);
    }

    void Grow() {
        if (regions_.empty()) return;
        auto& [base, region] = *Any();
        const SIZE_T room = (region.reserved - region.committed) / kPage;
        if (room != 0) Extend(base, region, 1 + Below(room));
        ASSERT_EQ(Commit(base, 0, region.reserved + 1), nullptr);
    }

    void Shrink() {
        if (regions_.empty()) return;
        auto& [base, region] = *Any();
        const SIZE_T pages = Below(region.committed / kPage + 1);
        if (pages == 0) return;
        region.committed -= pages * kPage;
        ASSERT_NE(VirtualFree(base + region.committed, pages * kPage, MEM_DECOMMIT), 0);
        Check(base, region);
    }

    std::mt19937 random_;
    std::map<char*, Region> regions_;
};

TEST(AddressSpace, BehavesLikeTheModelUnderRandomUse) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const auto before = faults::CountAddressSpace();
    Model model(seed);
    for (int step = 0; step < 6000; ++step) {
        model.Step();
        if (testing::Test::HasFatalFailure()) return;
        if (step % 16 != 0) continue;
        ASSERT_STREQ(faults::CheckAddressSpace(), nullptr) << "step " << step;
    }
    model.CheckAll();
    model.RemoveAll();
    EXPECT_STREQ(faults::CheckAddressSpace(), nullptr);
    const auto after = faults::CountAddressSpace();
    EXPECT_EQ(after.reservations, before.reservations);
    EXPECT_EQ(after.committedBytes, before.committedBytes);
}

}  // namespace
