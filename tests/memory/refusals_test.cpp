// The operating system refuses memory at every n-th request of each call that composes or edits
// handles.
#include <functional>

#include "memory/handles.h"
#include "platform/posix/faults.h"

namespace {

using namespace veldt::tests;
namespace faults = veldt::platform::faults;

const std::string kBytes = std::string(10000, 'h') + std::string(10000, 'i');

/// What a call finds: two handles with large blocks of their own, so that nothing is free that it
/// could use, and what it may leave its new handle or global block in.
struct Scene {
    char** h = NewHandle(kBytes);
    char** other = NewHandle(std::string(20000, 'o'));
    char source[70000] = "source";
    char** made = nullptr;
};

struct Call {
    const char* name;
    std::function<bool(Scene&)> make;
};

const Call kCalls[] = {
    {"hand to hand", [](Scene& s) { return s.made = s.h, _XHandToHand(&s.made) == 1; }},
    {"pointer to hand", [](Scene& s) { return _XPtrToHand(s.source, &s.made, 70000) == 1; }},
    {"pointer to existing hand", [](Scene& s) { return _XPtrToXHand(s.source, s.h, 70000) == 1; }},
    {"hand and hand", [](Scene& s) { return _XHandAndHand(s.other, s.h) == 1; }},
    {"hand and itself", [](Scene& s) { return _XHandAndHand(s.h, s.h) == 1; }},
    {"overwrite", [](Scene& s) { return __XMunger(s.h, 9, nullptr, -1, s.source, 70000) > 0; }},
    {"insert", [](Scene& s) { return __XMunger(s.h, 9, nullptr, 0, s.source, 70000) > 0; }},
    {"replace by more", [](Scene& s) { return __XMunger(s.h, 0, "h", 1, s.source, 70000) > 0; }},
    {"replace by less", [](Scene& s) { return __XMunger(s.h, 9, nullptr, 17000, "x", 1) > 0; }},
    {"delete", [](Scene& s) { return __XMunger(s.h, 9, nullptr, 17000, "", 0) > 0; }},
};

/// Makes the call with its n-th request refused, and perhaps all after it. False once the call has
/// fewer requests than that.
bool RefuseNth(const Call& call, std::uint64_t n, bool onward) {
    XMemInitInstance();
    Scene scene;
    const std::uint64_t callsBefore = faults::CountAddressSpace().allocCalls;
    faults::FailVirtualAlloc(n, onward);
    const bool done = call.make(scene);
    const std::int16_t error = XMemError();
    faults::FailVirtualAlloc(faults::kNever);
    const bool refused = faults::CountAddressSpace().allocCalls - callsBefore >= n;

    // A refusal need not be the end: compaction, or a smaller request, may still help.
    EXPECT_TRUE(done || refused) << call.name;
    EXPECT_EQ(error, done ? 0 : kMemFull) << call.name;
    if (!done) {
        EXPECT_EQ(scene.made, nullptr) << call.name;
        EXPECT_EQ(BytesOf(scene.h), kBytes) << call.name;
        EXPECT_EQ(BytesOf(scene.other), std::string(20000, 'o')) << call.name;
        EXPECT_EQ(LiveHandles(), 2u) << call.name;
    }
    char wrong[200] = "";
    EXPECT_EQ(XHeapCheck(wrong, sizeof wrong), 1) << call.name << ": " << wrong;
    XMemExitInstance();
    return refused;
}

TEST(Refusals, LoseNothingAndLeaveNothingBehind) {
    for (const Call& call : kCalls) {
        for (const bool onward : {false, true}) {
            std::uint64_t n = 1;
            while (RefuseNth(call, n, onward) && !HasFailure()) ++n;
            EXPECT_GT(n, 1u) << call.name << " asks for nothing";
        }
    }
}

TEST(Refusals, OfGlobalMemoryGiveNoBlock) {
    char byte = 'x';
    void* global = &byte;
    faults::FailGlobalAlloc(1);
    EXPECT_EQ(XPtrToXGlobal(&byte, &global, 1), 0);
    EXPECT_EQ(global, nullptr);
    faults::FailGlobalAlloc(1);
    EXPECT_EQ(XGlobalAlloc(10), nullptr);

    ASSERT_NE(global = XGlobalAlloc(10), nullptr);
    faults::FailGlobalAlloc(1);
    EXPECT_EQ(XGlobalReAlloc(global, 100), nullptr);
    EXPECT_EQ(XGlobalSize(global), 10u);

    ASSERT_EQ(XMemInitInstance(), 1);
    faults::FailVirtualAlloc(1, true);
    char* noHandle = nullptr;
    char** h = &noHandle;
    EXPECT_EQ(_XGlobalToHand(global, &h), 0);
    EXPECT_EQ(h, nullptr);
    EXPECT_EQ(XMemError(), kMemFull);
    faults::FailVirtualAlloc(faults::kNever);
    EXPECT_EQ(LiveHandles(), 0u);
    XMemExitInstance();
    XGlobalFree(global);
}

}  // namespace
