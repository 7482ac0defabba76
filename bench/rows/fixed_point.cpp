// Fixed-point multiply and divide beside the 64-bit arithmetic that a program would write out.
#include <veldt20/numerics.h>

#include <memory>
#include <random>

#include "suite/work.h"

namespace veldt::bench {

namespace {

struct Operands {
    std::int32_t a;
    std::int32_t b;
};

constexpr int kOperands = 4096;  // a power of two

/// Nowhere near overflow, never zero, and of both signs.
std::vector<Operands> Any() {
    std::mt19937 random(20);
    std::vector<Operands> operands(kOperands);
    for (Operands& pair : operands) {
        pair = {static_cast<std::int32_t>(random() % 0x1000000) - 0x800000,
                static_cast<std::int32_t>(random() % 0x80000) + 0x4321};
    }
    return operands;
}

std::vector<Operands> WithPowersOfTwo() {
    std::vector<Operands> operands = Any();
    for (Operands& pair : operands) {
        pair.b = 0x8000;
    }
    return operands;
}

template <class Call>
Setup OnOperands(std::vector<Operands> (*make)(), Call call) {
    return [=]() -> Round {
        auto operands = std::make_shared<std::vector<Operands>>(make());
        return [=] {
            auto pair = operands->begin();
            int left = kOperands;
            return NanosecondsOf(200 * kOperands, [&] {
                const std::int32_t result = call(pair->a, pair->b);
                Touch(&result);
                ++pair;
                if (--left == 0) {
                    pair = operands->begin();
                    left = kOperands;
                }
            });
        };
    };
}

std::int32_t PlainMultiply(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>((std::int64_t{a} * b + 0x8000) >> 16);
}

std::int32_t PlainDivide(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(std::int64_t{a} * 65536 / b);
}

}  // namespace

Section FixedPoint() {
    const auto row = [](const char* name, std::vector<Operands> (*make)(), auto ours, auto plain) {
        return Row{name, {}, {OnOperands(make, ours), OnOperands(make, plain)}};
    };
    const auto multiply = [](std::int32_t a, std::int32_t b) { return PlainMultiply(a, b); };
    const auto divide = [](std::int32_t a, std::int32_t b) { return PlainDivide(a, b); };
    return {"Fixed point",
            "Beside 64-bit arithmetic written out in the program, which the compiler puts where it "
            "is used and which tests nothing.",
            {{"VELDT20", ""}, {"64-bit code", ""}},
            {row(
                 "FixMul", Any, [](auto a, auto b) { return FixMul(a, b); }, multiply),
             row(
                 "FixDiv", Any, [](auto a, auto b) { return FixDiv(a, b); }, divide),
             row(
                 "XFixMultiply", Any, [](auto a, auto b) { return XFixMultiply(a, b); }, multiply),
             row(
                 "XFixMultiply by a power of two", WithPowersOfTwo,
                 [](auto a, auto b) { return XFixMultiply(a, b); }, multiply),
             row(
                 "XFixDivide", Any, [](auto a, auto b) { return XFixDivide(a, b); }, divide),
             row(
                 "XFixDivide by a power of two", WithPowersOfTwo,
                 [](auto a, auto b) { return XFixDivide(a, b); }, divide)}};
}

}  // namespace veldt::bench
