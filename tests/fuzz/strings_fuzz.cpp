// Strings that share buffers, edited in any order with each other's parts, against a model.
#include "fuzz/input.h"
#include "strings/xcstring_run.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    GTEST_FLAG_SET(throw_on_failure, true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    veldt::fuzz::Input input(bytes, size);
    veldt::tests::XCStringRun<veldt::fuzz::Input> run(input);
    while (!input.Empty()) {
        run.Step();
        run.Check();
    }
    return 0;
}
