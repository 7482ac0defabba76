#include <algorithm>
#include <climits>
#include <random>

#include "memory/handles.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

class Munger : public WithInstance {};

struct Arguments {
    std::int32_t offset;
    const char* ptr1;
    std::int32_t len1;
    const char* ptr2;
    std::int32_t len2;
};

std::int32_t Munge(char** h, const Arguments& a) {
    return __XMunger(h, a.offset, a.ptr1, a.len1, a.ptr2, a.len2);
}

TEST_F(Munger, FindsReplacesInsertsAndDeletes) {
    const struct {
        Arguments arguments;
        std::int32_t result;
        std::string after;
    } cases[] = {
        {{0, "ll", 2, nullptr, 0}, 2, "hello"},
        {{2, "ll", 2, nullptr, -1}, 2, "hello"},
        {{3, "ll", 2, nullptr, 0}, -1, "hello"},
        {{0, "lox", 3, nullptr, 0}, -1, "hello"},
        {{0, "l", 0, nullptr, 0}, -1, "hello"},
        {{2, nullptr, -1, nullptr, 0}, 2, "hello"},
        {{0, "ll", 2, "LL", 2}, 4, "heLLo"},
        {{0, "ll", 2, "xyz", 3}, 5, "hexyzo"},
        {{0, "ll", 2, "x", 1}, 3, "hexo"},
        {{0, "hello", 5, "", 0}, 0, ""},
        {{1, nullptr, 3, "abcdef", 6}, 7, "habcdefo"},
        {{2, nullptr, -1, "xy", 2}, 4, "hexy"},
        {{2, "ignored", -1, "xy", 2}, -1, "hello"},
        {{1, nullptr, 0, "ab", 2}, 3, "habello"},
        {{5, "ignored", 0, "ab", 2}, 7, "helloab"},
        {{2, nullptr, 2, "x", 0}, 2, "heo"},
        {{2, nullptr, -1, "x", 0}, 2, "he"},
        {{3, nullptr, 4, "x", 0}, 3, "h"},
        {{0, nullptr, 6, "x", 0}, -1, "hello"},
        {{INT_MAX, nullptr, INT_MAX, "x", 0}, -1, "hello"},
        {{3, nullptr, 3, "x", 1}, -1, "hello"},
        {{0, nullptr, INT_MAX, "x", 1}, -1, "hello"},
        {{INT_MIN, "l", 1, nullptr, 0}, -1, "hello"},
        {{INT_MAX, "l", 1, "x", 1}, -1, "hello"},
        {{0, "l", 1, "x", INT_MIN}, -1, "hello"},
        {{INT_MAX - 1, nullptr, 0, "ab", 2}, -1, "hello"},
        {{INT_MAX, nullptr, -1, "ab", 2}, -1, "hello"},
    };
    for (const auto& one : cases) {
        char** h = NewHandle("hello");
        EXPECT_EQ(Munge(h, one.arguments), one.result) << &one - cases;
        EXPECT_EQ(BytesOf(h), one.after) << &one - cases;
    }
}

TEST_F(Munger, TellsNothingFromNoHandle) {
    char** gone = NewHandle("gone");
    char** empty = NewHandle("");
    XDisposeHandle(gone);
    EXPECT_EQ(__XMunger(empty, 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(XMemError(), 0);
    EXPECT_EQ(__XMunger(gone, 0, nullptr, 0, nullptr, 0), -1);
    EXPECT_EQ(XMemError(), kMemBadBlock);
    EXPECT_EQ(__XMunger(gone, 0, nullptr, 0, "ab", 2), -1);
    EXPECT_EQ(XMemError(), kMemFull);
}

/// What is said of the call, done to a string. A gap is left as it comes.
std::int32_t Model(std::string& bytes, const Arguments& a) {
    const auto size = static_cast<std::int64_t>(bytes.size());
    const bool added = a.ptr2 != nullptr && a.len2 > 0;
    const std::string_view fresh(added ? a.ptr2 : "", added ? static_cast<std::size_t>(a.len2) : 0);
    const auto at = static_cast<std::size_t>(a.offset);
    if (a.offset < 0 || (a.ptr2 != nullptr && a.len2 < 0)) return -1;
    if (added && (a.len1 == 0 || (a.ptr1 == nullptr && a.len1 < 0))) {
        if (a.offset > size || a.len1 < 0) bytes.resize(at);
        bytes.insert(at, fresh);
        return a.offset + a.len2;
    }
    if (size == 0) return -1;
    if (a.ptr1 != nullptr) {
        if (a.len1 <= 0 || a.offset >= size) return -1;
        const std::size_t found = bytes.find(a.ptr1, at, static_cast<std::size_t>(a.len1));
        if (found == std::string::npos) return -1;
        if (a.ptr2 == nullptr) return static_cast<std::int32_t>(found);
        bytes.replace(found, static_cast<std::size_t>(a.len1), fresh);
        return static_cast<std::int32_t>(found + fresh.size());
    }
    if (a.ptr2 == nullptr) return a.offset;
    const std::int64_t removed = a.len1 < 0 ? size - a.offset : a.len1;
    const bool deletion = a.len1 != 0 && a.len2 == 0;
    if (deletion && removed >= 0 && removed <= size && a.offset + removed > size) {
        bytes.resize(static_cast<std::size_t>(size - removed));
        return a.offset;
    }
    if (removed < 0 || a.offset + removed > size) return -1;
    bytes.replace(at, static_cast<std::size_t>(removed), fresh);
    return a.offset + static_cast<std::int32_t>(fresh.size());
}

/// Short pieces of few letters, which are often found, and now and then one that takes the handle
/// over the border to a large block; a handle that has become too large is emptied.
class RandomCalls {
  public:
    explicit RandomCalls(unsigned int seed) : random_(seed) {
        for (char& c : letters_) c = static_cast<char>('a' + random_() % 3);
    }

    Arguments Next(std::size_t size) {
        if (size > 6000) return {Below(10), nullptr, -1, letters_, 0};
        const char* ptr1 = Below(2) == 0 ? nullptr : letters_ + Below(500);
        const char* ptr2 = Below(4) == 0 ? nullptr : letters_ + Below(500);
        const auto most = static_cast<std::int32_t>(size) + 4;
        return {Below(most) - (Below(50) == 0), ptr1, Length(ptr1 == nullptr ? most : 6), ptr2,
                Length(12)};
    }

    std::int32_t Below(std::int32_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<unsigned int>(limit));
    }

  private:
    std::int32_t Length(std::int32_t most) {
        const std::int32_t kind = Below(1000);
        return kind == 0 ? 4000 : kind < 100 ? -1 : kind < 300 ? 0 : Below(most);
    }

    std::mt19937 random_;
    char letters_[5000];
};

void DisturbSometimes(char** h, std::int32_t chance) {
    if (chance == 0) XMemCompactHeap();
    if (chance == 1) XHLock(h);
    if (chance == 2) XMoveHHi(h);
    if (chance >= 3 && chance < 6) XHUnlock(h);
}

TEST_F(Munger, MillionCallsAgainstAString) {
    RandomCalls calls(Seed());
    char** handles[] = {NewHandle(""), NewHandle(""), NewHandle("")};
    std::string models[3];
    for (int step = 0; step < 1000000; ++step) {
        const auto which = static_cast<std::size_t>(calls.Below(3));
        char** h = handles[which];
        std::string& model = models[which];
        const std::string before = model;
        const Arguments arguments = calls.Next(model.size());
        DisturbSometimes(h, calls.Below(100));
        const std::int32_t expected = Model(model, arguments);
        ASSERT_EQ(Munge(h, arguments), expected) << "step " << step;
        ASSERT_EQ(XGetHandleSize(h), std::ssize(model)) << "step " << step;
        const std::int64_t gap = arguments.offset - std::ssize(before);
        if (gap > 0 && expected > 0 && model.size() > before.size()) {
            model.replace(before.size(), static_cast<std::size_t>(gap), *h + before.size(),
                          static_cast<std::size_t>(gap));
        }
        ASSERT_EQ(model.compare(0, model.size(), *h, model.size()), 0) << "step " << step;
    }
}

}  // namespace
