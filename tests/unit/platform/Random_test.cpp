#include "platform/Random.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace mv {
namespace {

TEST(Random, SeedOneGivesTheWellKnownSequence) {
    SeedRandom(1);
    for (const int expected : {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464}) {
        EXPECT_EQ(NextRandom(), expected);
    }
}

TEST(Random, StateIsThirtyTwoBitsWide) {
    // 0xffffffff * 214013 + 2531011 = 2316998 modulo 2^32, and 2316998 / 65536 = 35.
    SeedRandom(0xffffffffu);
    EXPECT_EQ(NextRandom(), 35);
}

TEST(Random, SameSeedGivesTheSameValues) {
    SeedRandom(12345);
    int first[50];
    for (int& value : first) {
        value = NextRandom();
    }
    SeedRandom(12345);
    for (const int value : first) {
        EXPECT_EQ(NextRandom(), value);
    }
}

TEST(Random, ReachesBothEndsOfItsRange) {
    SeedRandom(7);
    int smallest = 40000;
    int largest = -1;
    for (int i = 0; i < 1000000; ++i) {
        const int value = NextRandom();
        smallest = value < smallest ? value : smallest;
        largest = value > largest ? value : largest;
    }
    EXPECT_EQ(smallest, 0);
    EXPECT_EQ(largest, 32767);
}

}  // namespace
}  // namespace mv
