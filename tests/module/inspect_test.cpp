#include <gtest/gtest.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <string>

namespace {

int CountBlocks(const XHeapPage*, const XHeapBlock* block, void* context) {
    if (block != nullptr && block->state != kXFree) ++*static_cast<std::uint32_t*>(context);
    return 1;
}

int Collect(const char* text, std::uint32_t length, void* context) {
    static_cast<std::string*>(context)->append(text, length);
    return 1;
}

TEST(Inspect, ShowsTheRunningHeap) {
    EXPECT_EQ(XHeapFootprint(), 0u);
    ASSERT_EQ(XMemInitInstance(), 1);
    char** const handle = _XNewHandle(100);
    XHeapMoment before;
    ASSERT_EQ(before.Capture(), 1);
    char* const pointer = _XNewPtr(200);
    XHeapMoment after;
    ASSERT_EQ(after.Capture(), 1);

    XHeapStatistics statistics;
    ASSERT_EQ(XHeapGetStatistics(&statistics), 1);
    EXPECT_EQ(statistics.liveBytes, 300u);
    EXPECT_EQ(statistics.footprint, XHeapFootprint());
    EXPECT_EQ(after.Statistics().liveBytes - before.Statistics().liveBytes, 200u);
    XHeapDifference difference;
    ASSERT_EQ(XHeapCompare(before, after, &difference), 1);
    EXPECT_EQ(difference.appeared, 1u);

    std::uint32_t blocks = 0;
    EXPECT_EQ(XHeapWalk(CountBlocks, &blocks), 1);
    EXPECT_EQ(blocks, 2u);
    char message[80];
    EXPECT_EQ(XHeapCheck(message, sizeof(message)), 1);
    const XHeapMoment* const moments[] = {&before, &after};
    const char* const captions[] = {"before", "after"};
    std::string picture;
    EXPECT_EQ(XHeapDraw(moments, captions, 2, Collect, &picture), 1);
    EXPECT_NE(picture.find("</svg>"), std::string::npos);

    XDisposePtr(pointer);
    XDisposeHandle(handle);
    XMemExitInstance();
}

}  // namespace
