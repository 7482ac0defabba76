#include <gtest/gtest.h>
#include <veldt20/inspect.h>
#include <veldt20/memory.h>

#include <string>

namespace {

int CountBlocks(const XHeapPage*, const XHeapBlock* block, void* context) {
    if (block != nullptr && block->state != kXFree) ++*static_cast<int*>(context);
    return 1;
}

int Collect(const char* text, std::uint32_t length, void* context) {
    static_cast<std::string*>(context)->append(text, length);
    return 1;
}

TEST(Inspect, ShowsTheRunningHeap) {
    EXPECT_EQ(XHeapFootprint(), 0u);
    ASSERT_EQ(XMemInitInstance(), 1);
    _XNewHandle(100);
    XHeapMoment moments[2];
    ASSERT_EQ(moments[0].Capture(), 1);
    _XNewPtr(200);
    ASSERT_EQ(moments[1].Capture(), 1);

    XHeapStatistics statistics;
    ASSERT_EQ(XHeapGetStatistics(&statistics), 1);
    EXPECT_EQ(statistics.footprint, XHeapFootprint());
    EXPECT_EQ(statistics.liveBytes, 300u);
    EXPECT_EQ(moments[0].Statistics().liveBytes, 100u);
    XHeapDifference difference;
    ASSERT_EQ(XHeapCompare(moments[0], moments[1], &difference), 1);
    EXPECT_EQ(difference.appeared, 1u);
    int blocks = 0;
    EXPECT_EQ(XHeapWalk(CountBlocks, &blocks), 1);
    EXPECT_EQ(blocks, 2);
    char message[80];
    EXPECT_EQ(XHeapCheck(message, sizeof(message)), 1);
    const XHeapMoment* const drawn[] = {&moments[0], &moments[1]};
    const char* const captions[] = {"before", "after"};
    std::string picture;
    EXPECT_EQ(XHeapDraw(drawn, captions, 2, Collect, &picture), 1);
    EXPECT_NE(picture.find("</svg>"), std::string::npos);
    XMemExitInstance();
}

}  // namespace
