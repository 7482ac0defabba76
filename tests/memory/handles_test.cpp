// All calls on handles at random, against strings.
#include <algorithm>
#include <random>
#include <vector>

#include "memory/handles.h"
#include "support/seed.h"

namespace {

using namespace veldt::tests;

struct Arguments {
    std::int32_t offset;
    const char* ptr1;
    std::int32_t len1;
    const char* ptr2;
    std::int32_t len2;
};

/// What is said of __XMunger, done to a string. A gap is left as it comes.
std::int32_t Munge(std::string& bytes, const Arguments& a) {
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

/// A handle and what is known of it.
struct Known {
    char** h = NewHandle("");
    std::string bytes;
    int locks = 0;
    bool fixed = false;           ///< moved high, and not unlocked since
    const char* place = nullptr;  ///< as the last call on this handle left it

    void SetLocks(int count) {
        if (fixed && count != 0) return;
        locks = count;
        fixed = false;
    }
};

void ChangeLocks(Known& known, int choice) {
    const int times = choice == 0 ? 300 : 1;
    switch (choice) {
        case 0:
        case 1:
            for (int i = 0; i < times; ++i) XHLock(known.h);
            return known.SetLocks(std::min(known.locks + times, 255));
        case 2:
        case 3:
            XHUnlock(known.h);
            return known.SetLocks(0);
        case 4:
            XMoveHHi(known.h);
            known.fixed = known.fixed || known.locks == 0;
            known.locks = std::max(known.locks, 1);
            return;
        default:
            XHSetState(known.h, static_cast<char>(choice - 5));
            return known.SetLocks(choice - 5);
    }
}

/// Puts another handle in the place of a known one, which is disposed.
void Replace(Known& known, char** h, const std::string& bytes) {
    XDisposeHandle(known.h);
    known = {.h = h, .bytes = bytes};
}

/// Makes one of the calls that write to a handle; `piece` is shorter than 256 bytes.
void Write(Known& known, const Known& other, const std::string& piece, int choice) {
    const auto size = static_cast<std::int32_t>(piece.size());
    char** h = known.h;
    switch (choice) {
        case 0:
            ASSERT_EQ(_XPtrToXHand(piece.data(), h, size), 1);
            known.bytes = piece;
            break;
        case 1:
            ASSERT_EQ(_XPtrAndHand(piece.data(), h, size), 1);
            known.bytes += piece;
            break;
        case 2:
            ASSERT_EQ(_XHandAndHand(other.h, h), 1);
            known.bytes += other.bytes;
            break;
        case 3:
            XEmptyHandle(h);
            ASSERT_EQ(_XSetHandleSize(h, size), 1);
            known.bytes.assign(*h, piece.size());
            break;
        case 4:
            h = other.h;
            ASSERT_EQ(_XHandToHand(&h), 1);
            return Replace(known, h, std::string(other.bytes));
        case 5:
            ASSERT_EQ(_XPtrToHand(piece.data(), &h, size), 1);
            return Replace(known, h, piece);
        case 6:
            return Replace(known, _XNewHandleClear(size), std::string(piece.size(), '\0'));
        default:
            const std::string string = static_cast<char>(size) + piece;
            const auto* bytes = reinterpret_cast<const unsigned char*>(string.data());
            return Replace(known, reinterpret_cast<char**>(XNewString(bytes)), string);
    }
}

/// Short pieces of few letters, which are often found, and now and then one that takes the handle
/// over the border to a large block; a handle that has become too large is emptied.
class RandomCalls {
  public:
    explicit RandomCalls(unsigned int seed) : random_(seed) {
        for (char& c : letters_) c = static_cast<char>('a' + random_() % 3);
    }

    std::int32_t Below(std::int32_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<unsigned int>(limit));
    }
    std::string Piece() { return {letters_, static_cast<std::size_t>(Below(256))}; }
    Arguments Next(std::size_t size) {
        if (size > 6000) return {Below(10), nullptr, -1, letters_, 0};
        const char* ptr1 = Below(2) == 0 ? nullptr : letters_ + Below(500);
        const char* ptr2 = Below(4) == 0 ? nullptr : letters_ + Below(500);
        const auto most = static_cast<std::int32_t>(size) + 4;
        return {Below(most) - (Below(50) == 0), ptr1, Length(ptr1 == nullptr ? most : 6), ptr2,
                Length(12)};
    }

  private:
    std::int32_t Length(std::int32_t most) {
        const std::int32_t kind = Below(1000);
        return kind == 0 ? 4000 : kind < 100 ? -1 : kind < 300 ? 0 : Below(most);
    }

    std::mt19937 random_;
    char letters_[5000];
};

void CompareMunger(Known& known, const Arguments& a) {
    std::string& bytes = known.bytes;
    const std::size_t size = bytes.size();
    const std::int32_t expected = Munge(bytes, a);
    ASSERT_EQ(__XMunger(known.h, a.offset, a.ptr1, a.len1, a.ptr2, a.len2), expected);
    if (const std::int64_t gap = a.offset - static_cast<std::int64_t>(size);
        gap > 0 && expected > 0 && bytes.size() > size) {
        bytes.replace(size, static_cast<std::size_t>(gap), *known.h + size,
                      static_cast<std::size_t>(gap));
    }
}

class Handles : public WithInstance {};

TEST_F(Handles, MillionCallsAgainstStrings) {
    RandomCalls calls(Seed());
    std::vector<Known> all(4);
    for (int step = 0; step < 1000000 && !HasFailure(); ++step) {
        Known& known = all[static_cast<std::size_t>(calls.Below(4))];
        const Known& other = all[static_cast<std::size_t>(calls.Below(4))];
        const bool locked = known.locks > 0;
        EXPECT_TRUE(!locked || *known.h == known.place) << "moved by calls on others";
        const std::int32_t choice = calls.Below(100);
        if (choice == 0) XMemCompactHeap();
        if (choice < 5) {
            ChangeLocks(known, calls.Below(9));
            EXPECT_TRUE(!locked || known.locks == 0 || *known.h == known.place);
        } else if (choice < 10) {
            Write(known, other, calls.Piece(), calls.Below(8));
            EXPECT_EQ(XMemError(), 0);
        } else {
            CompareMunger(known, calls.Next(known.bytes.size()));
        }
        known.place = *known.h;
        EXPECT_EQ(BytesOf(known.h), known.bytes);
        EXPECT_EQ(XHGetState(known.h), std::min(known.locks, 127));
    }
}

}  // namespace
