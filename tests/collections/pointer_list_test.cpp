#include <veldt20/collections_pointer_list.h>

#include "collections/list_run.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

using Values = std::vector<void*>;

int numbers[8];

struct PointerList : XSinglePtrList {
    using XSinglePtrList::SplitAfter;

    explicit PointerList(const Values& values = {}) {
        std::for_each(values.rbegin(), values.rend(), [&](void* value) { AddHead(value); });
    }

    Values Contents() const {
        Values values;
        for (__XPOSITION* p = GetHeadPosition(); p != nullptr;) values.push_back(GetNext(p));
        EXPECT_EQ(GetCount(), std::ssize(values));
        return values;
    }
};

TEST(PointerList, RandomRunAgainstAVector) {
    std::mt19937 random(Seed());
    ListRun<PointerList> run;
    for (int i = 0; i < 20000 && !HasFailure(); ++i) run.Step(&numbers[random() % 8], random());
}

TEST(PointerList, ValuesAreWrittenInPlaceAndFoundOnwards) {
    PointerList list({&numbers[1], nullptr, &numbers[2], nullptr});
    list.GetHead() = &numbers[3];
    __XPOSITION* p = list.FindIndex(1);
    EXPECT_EQ(list.Find(nullptr, nullptr), p);
    EXPECT_EQ(list.Find(nullptr, p), list.FindIndex(3));
    EXPECT_EQ(list.Find(nullptr, list.FindIndex(3)), nullptr);
    list.GetAt(p) = &numbers[4];
    list.GetNext(p) = &numbers[5];
    list.SetAt(p, &numbers[6]);
    EXPECT_EQ(list.Contents(), (Values{&numbers[3], &numbers[5], &numbers[6], nullptr}));
}

TEST(PointerList, NodesAreMovedFromListToList) {
    const Values all{&numbers[1], &numbers[2], &numbers[3]};
    for (int keep = 0; keep <= 3; ++keep) {
        PointerList list(all), other({&numbers[7], &numbers[0]});
        list.SplitAfter(keep == 0 ? nullptr : list.FindIndex(keep - 1), other);
        const Values rest(all.begin() + keep, all.end());
        EXPECT_EQ(list.Contents(), Values(all.begin(), all.begin() + keep));
        EXPECT_EQ(other.Contents(), rest);
        list.RemoveAll();
        list = other;
        EXPECT_EQ(list.GetHeadPosition(), other.GetHeadPosition());
        other = PointerList();
        EXPECT_EQ(list.Contents(), rest);
    }
}

}  // namespace
