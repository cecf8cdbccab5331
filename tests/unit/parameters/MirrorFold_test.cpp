#include "parameters/MirrorFold.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/Random.h"
#include "support/ParameterProbe.h"

namespace mv::test {

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
}  // namespace

TEST(MirrorFold, AValueInsideStays) {
    EXPECT_EQ(MirrorFold(0.0, 1), 0.0);
    EXPECT_EQ(MirrorFold(0.3, 1), 0.3);
    EXPECT_EQ(MirrorFold(254.75, 255), 254.75);
}

TEST(MirrorFold, AValueAboveBouncesOffTheEnd) {
    EXPECT_EQ(MirrorFold(1.25, 1), 0.75);
    EXPECT_EQ(MirrorFold(2.5, 1), 0.5);
    EXPECT_EQ(MirrorFold(3.25, 1), 0.75);
    EXPECT_EQ(MirrorFold(11.0, 10), 9.0);
    EXPECT_EQ(MirrorFold(23.0, 10), 3.0);
}

TEST(MirrorFold, AValueBelowBouncesOffZero) {
    EXPECT_EQ(MirrorFold(-0.25, 1), 0.25);
    EXPECT_EQ(MirrorFold(-1.25, 1), 0.75);
    EXPECT_EQ(MirrorFold(-2.25, 1), 0.25);
    EXPECT_EQ(MirrorFold(-13.0, 10), 7.0);
}

TEST(MirrorFold, AnEndReachedByReflectionIsMovedInwards) {
    EXPECT_EQ(MirrorFold(1.0, 1), 0.9999);
    EXPECT_EQ(MirrorFold(3.0, 1), 0.9999);
    EXPECT_EQ(MirrorFold(-1.0, 1), 0.9999);
    EXPECT_EQ(MirrorFold(10.0, 10), 9.9999);
    EXPECT_EQ(MirrorFold(2.0, 1), 0.0);
}

TEST(MirrorFold, RangeZeroOnlyTakesTheSign) {
    EXPECT_EQ(MirrorFold(0.0, 0), 0.0);
    EXPECT_EQ(MirrorFold(2.5, 0), 2.5);
    EXPECT_EQ(MirrorFold(-2.5, 0), 2.5);
}

TEST(MirrorFold, ValuesBeyondThirtyTwoBitsComeIntoTheRangeToo) {
    for (const double value : {3e9, -3e9, 1e18, -1e18, 1e300, -1e300}) {
        const double folded = MirrorFold(value, 255);
        EXPECT_GE(folded, 0.0) << value;
        EXPECT_LE(folded, 255.0) << value;
    }
    // 3,000,000,010 is 11,764,705 ranges of 255 and a rest of 235; the number is odd.
    EXPECT_EQ(MirrorFold(3000000010.0, 255), 20.0);
}

TEST(MirrorFold, WhatIsNotFiniteStays) {
    EXPECT_EQ(MirrorFold(kInfinity, 1), kInfinity);
    EXPECT_EQ(MirrorFold(-kInfinity, 1), -kInfinity);
    EXPECT_TRUE(std::isnan(MirrorFold(kNoNumber, 1)));
}

TEST(TruncateToInt, TruncatesTowardZeroAndIsDefinedEverywhere) {
    EXPECT_EQ(TruncateToInt(2.9), 2);
    EXPECT_EQ(TruncateToInt(-2.9), -2);
    EXPECT_EQ(TruncateToInt(2147483647.0), kHighest);
    EXPECT_EQ(TruncateToInt(2147483648.0), kHighest);
    EXPECT_EQ(TruncateToInt(-2147483648.0), kLowest);
    EXPECT_EQ(TruncateToInt(-1e300), kLowest);
    EXPECT_EQ(TruncateToInt(kInfinity), kHighest);
    EXPECT_EQ(TruncateToInt(-kInfinity), kLowest);
    EXPECT_EQ(TruncateToInt(kNoNumber), 0);
}

TEST(DrawRandom, ScalesTheRangeOfTheGeneratorToOne) {
    SeedRandom(4711);
    PlainRandom plain(4711);
    for (int i = 0; i < 1000; ++i) {
        const double draw = DrawRandom();
        EXPECT_EQ(draw, plain.Next() * 3.051850947599719e-05);
        EXPECT_GE(draw, 0.0);
        EXPECT_LE(draw, 1.0);
    }
}

}  // namespace mv::test
