// The random runs over numbers alone, for as many rounds as wanted: differential_numerics ROUNDS.
// Millions take minutes, so that the tests make a sample only.
#include <gtest/gtest.h>

#include <cstdlib>

#include "numerics/rounds.h"

int main(int argc, char** argv) {
    GTEST_FLAG_SET(filter, "FixedPoint.Random*:Decimal.What*");
    testing::InitGoogleTest(&argc, argv);
    veldt::tests::wantedRounds = argc > 1 ? std::atoi(argv[1]) : 0;
    return RUN_ALL_TESTS();
}
