// The opt-in header on the running instance: each piece with the standard library's own users.
#include <gtest/gtest.h>
#include <veldt20/geometry.h>
#include <veldt20/inspect.h>
#include <veldt20/std.h>

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <numeric>
#include <ranges>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

using namespace std::string_view_literals;

namespace {

class StdMemory : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(XMemInitInstance(), 1); }
    void TearDown() override {
        char message[200];
        EXPECT_EQ(XHeapCheck(message, sizeof message), 1) << message;
        XHeapStatistics statistics;
        XHeapGetStatistics(&statistics);
        EXPECT_EQ(statistics.liveBytes, 0U) << "something was not disposed";
        XMemExitInstance();
    }
};

struct Job {
    int number;
    void* next;
    void* prev;
};

static_assert(std::forward_iterator<std::ranges::iterator_t<const XSinglePtrList>>);
static_assert(!std::bidirectional_iterator<std::ranges::iterator_t<XIntrusiveSingleList>>);
static_assert(std::ranges::sized_range<XElementRange<const Job, XIntrusiveSingleList>>);
static_assert(std::ranges::contiguous_range<XLockedRecords<XNRect>>);
static_assert(std::is_same_v<std::iterator_traits<std::ranges::iterator_t<
                                 XElementRange<Job, XIntrusiveDoubleList>>>::iterator_category,
                             std::bidirectional_iterator_tag>);
static_assert(!XRecord<std::string>);

TEST(StdStrings, EveryFormGivesAndTakesAView) {
    const auto text = "a\0b"sv;
    EXPECT_EQ(XStringView(XCStringFrom(text)), text);
    EXPECT_EQ(XStringView(XStr<5>(text)), text);
    unsigned char pascal[8] = {};
    EXPECT_EQ(XStringView(XPascalStrFrom(text, pascal)), text);
    EXPECT_EQ(XStringView(XPascalStrFrom(XStringView(pascal).substr(1), pascal)), text.substr(1));
    EXPECT_EQ(XStringView(XPascalStrFrom("trunca", pascal, 5)), "trunc");
    EXPECT_EQ(pascal[6], 0) << "written beyond the limit";
    EXPECT_THROW(XCStringFrom({pascal[0] ? "" : nullptr, SIZE_MAX / 2}), std::bad_alloc);
}

TEST(StdStrings, HashAsTheyCompareAndPrintWhole) {
    const std::unordered_set<XCString> shared{XCStringFrom("a\0b"sv), XCString("c")};
    EXPECT_EQ(shared.count(XCString("a")), 1U) << "== sees the text before the zero byte";
    const std::unordered_set<XStr<7>> fixed{XStr<7>("a\0b"sv), XStr<7>("a")};
    EXPECT_EQ(fixed.size(), 2U) << "== sees all of the text";
    EXPECT_EQ(fixed.count(XStr<7>("a\0b"sv)), 1U);
    std::ostringstream stream;
    stream << std::setfill('.') << std::setw(5) << *shared.find(XCString("a")) << std::left
           << std::setw(4) << XStr<9>("xy");
    EXPECT_EQ(stream.str(), "..a\0bxy.."sv);
#ifdef __cpp_lib_format
    EXPECT_EQ(std::format("{:>4}|{:.1}", XCString("ab"), XStr<3>("xyz")), "  ab|x");
#endif
}

TEST(StdRanges, PointerListIsReadAndWritten) {
    int numbers[3] = {1, 2, 3};
    XSinglePtrList list;
    EXPECT_EQ(begin(list), end(list));
    for (int& number : numbers | std::views::reverse) list.AddHead(&number);
    const auto found = std::ranges::find(list, static_cast<void*>(&numbers[1]));
    list.RemoveAt(found.Position());
    for (void*& value : list) value = static_cast<int*>(value) == numbers ? nullptr : value;
    const XSinglePtrList& constant = list;
    EXPECT_EQ(std::vector<void*>(begin(constant), end(constant)),
              (std::vector<void*>{nullptr, &numbers[2]}));
}

TEST(StdRanges, IntrusiveListsGiveTheirElements) {
    Job jobs[4] = {{3, {}, {}}, {1, {}, {}}, {4, {}, {}}, {1, {}, {}}};
    XIntrusiveSingleList single(offsetof(Job, next));
    XIntrusiveDoubleList both(offsetof(Job, next), offsetof(Job, prev));
    for (Job& job : jobs) single.AddHead(&job);
    EXPECT_TRUE(std::ranges::equal(XElements<const Job>(single), std::vector{1, 4, 1, 3}, {},
                                   &Job::number));
    EXPECT_EQ(std::ranges::distance(single), 4);
    single.RemoveAll();

    for (Job& job : jobs) job.next = nullptr;
    for (Job& job : jobs) both.AddTail(&job);
    for (Job& job : XElements<Job>(both)) job.number *= 2;
    EXPECT_TRUE(std::ranges::equal(XElements<Job>(both) | std::views::reverse,
                                   std::vector{2, 8, 2, 6}, {}, &Job::number));
    EXPECT_EQ(std::ranges::max_element(XElements<Job>(both), {}, &Job::number).Position(),
              both.FindIndex(2));
    EXPECT_EQ(*std::ranges::prev(end(both)), &jobs[3]);
}

TEST_F(StdMemory, RecordsFollowTheirHandle) {
    XHandleArray array(4, sizeof(int));
    const XRecords<int> records(array);
    const auto first = records.begin();
    std::vector<XOwnedHandle> others;
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(array.Grow(1), 1);
        records[static_cast<std::size_t>(i)] = (i * 7) % 500;
        others.emplace_back(_XNewHandle(40));
    }
    EXPECT_EQ(records.end() - first, 500);
    std::ranges::sort(records);
    for (int i = 0; i < 500; ++i) ASSERT_EQ(first[i], i);
    {
        const XLockedRecords<const int> locked(array);
        XMemCompactHeap();
        EXPECT_EQ(locked.data(), &*first);
        EXPECT_EQ(std::accumulate(locked.begin(), locked.end(), 0), 499 * 250);
        EXPECT_EQ(XHGetState(array.GetArrayHandle()), 1);
    }
    EXPECT_EQ(XHGetState(array.GetArrayHandle()), 0);
}

TEST_F(StdMemory, OwnersDisposeAndLocksRestoreWhatTheyFound) {
    const XOwnedPtr bytes(_XNewPtr(80));
    bytes[79] = 'z';
    XOwnedHandle line(_XNewHandle(80));
    XHLock(line.get());
    line.reset(_XNewHandle(5000));
    EXPECT_EQ(XGetHandleSize(line.get()), 5000);
    for (const char former : {'\0', '\3', '~', '\177'}) {
        XHSetState(line.get(), former);
        {
            const XHandleLock outer(line.get());
            const XHandleLock inner(line.get());
            EXPECT_EQ(inner.Get(), *line);
            EXPECT_GT(XHGetState(line.get()), former - (former == 127));
        }
        EXPECT_EQ(XHGetState(line.get()), former);
    }
    XHSetState(line.get(), 0);
    XMoveHHi(line.get());
    { const XHandleLock lock(line.get()); }
    EXPECT_EQ(XHGetState(line.get()), 1) << "it left its fixed place";
}

TEST_F(StdMemory, TheResourceHonoursEveryAlignmentAndSaysWhenMemoryRunsOut) {
    std::pmr::memory_resource& resource = *XGetMemoryResource();
    struct Block {
        std::size_t size, alignment;
        char* bytes;
    };
    std::pmr::vector<Block> blocks(&resource);
    for (std::size_t alignment = 1; alignment <= 16384; alignment *= 2) {
        for (const std::size_t size : {0, 1, 100, 5000}) {
            auto* bytes = static_cast<char*>(resource.allocate(size, alignment));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignment, 0U);
            std::fill_n(bytes, size, static_cast<char>(size + alignment));
            blocks.push_back({size, alignment, bytes});
        }
    }
    for (const auto& [size, alignment, bytes] : blocks) {
        EXPECT_EQ(std::string(bytes, size), std::string(size, static_cast<char>(size + alignment)));
        resource.deallocate(bytes, size, alignment);
    }
    EXPECT_EQ(resource, XMemoryResource());
    EXPECT_NE(resource, *std::pmr::new_delete_resource());
    // Read from memory, for the compiler would refuse a constant.
    for (const volatile std::size_t tooMuch : {SIZE_MAX - 7, std::size_t{0xFFFFFF00}}) {
        for (const std::size_t alignment : {8, 64}) {
            EXPECT_THROW(static_cast<void>(resource.allocate(tooMuch, alignment)), std::bad_alloc);
        }
    }
}

}  // namespace
