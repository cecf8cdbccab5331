#include "parameters/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace mv::test {

namespace {

std::string FloatText(double value) {
    std::string text;
    AppendFloat(text, value);
    return text;
}

std::string IntText(std::int32_t value) {
    std::string text;
    AppendInt(text, value);
    return text;
}

}  // namespace

TEST(ParseFloat, TakesTheLongestNumberAtTheBeginning) {
    EXPECT_EQ(ParseFloat("0.250000"), 0.25);
    EXPECT_EQ(ParseFloat("-1.5"), -1.5);
    EXPECT_EQ(ParseFloat("+2"), 2.0);
    EXPECT_EQ(ParseFloat(".5"), 0.5);
    EXPECT_EQ(ParseFloat("5."), 5.0);
    EXPECT_EQ(ParseFloat("1e2"), 100.0);
    EXPECT_EQ(ParseFloat("1e"), 1.0);
    EXPECT_EQ(ParseFloat("1.5abc"), 1.5);
    EXPECT_EQ(ParseFloat("0,75"), 0.0);
    EXPECT_EQ(ParseFloat(std::string("2\0"
                                     "5",
                                     3)),
              2.0);
}

TEST(ParseFloat, WhatIsNoNumberIsZero) {
    for (const char* token : {"", "abc", "-", "+", ".", "-.", "--1", "+-1", "-+1", "e5", "\xFF"}) {
        EXPECT_EQ(ParseFloat(token), 0.0) << token;
        EXPECT_FALSE(std::signbit(ParseFloat(token))) << token;
    }
}

TEST(ParseFloat, TooLargeIsInfiniteAndTooSmallIsZero) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ParseFloat("1e999"), kInfinity);
    EXPECT_EQ(ParseFloat("-1e999"), -kInfinity);
    EXPECT_EQ(ParseFloat("1" + std::string(400, '0')), kInfinity);
    EXPECT_EQ(ParseFloat("1e99999999999999999999"), kInfinity);
    EXPECT_EQ(ParseFloat("1e-999"), 0.0);
    EXPECT_EQ(ParseFloat("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(ParseFloat("0e999"), 0.0);
    EXPECT_EQ(ParseFloat("1" + std::string(400, '0') + "e-400"), 1.0);
}

TEST(ParseFloat, TakesTheWordsThatAreWrittenForWhatIsNotFinite) {
    EXPECT_TRUE(std::isinf(ParseFloat("inf")));
    EXPECT_EQ(ParseFloat("-inf"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(ParseFloat("nan")));
}

TEST(ParseFloat, ATokenOfAnyLengthIsTaken) {
    EXPECT_EQ(ParseFloat("0." + std::string(5000000, '3')), 1.0 / 3.0);
}

TEST(ParseInt, TakesTheDigitsAtTheBeginning) {
    EXPECT_EQ(ParseInt("12"), 12);
    EXPECT_EQ(ParseInt("-7"), -7);
    EXPECT_EQ(ParseInt("+7"), 7);
    EXPECT_EQ(ParseInt("007"), 7);
    EXPECT_EQ(ParseInt("3.9"), 3);
    EXPECT_EQ(ParseInt("0x10"), 0);
    EXPECT_EQ(ParseInt("2nd"), 2);
    EXPECT_EQ(ParseInt(""), 0);
    EXPECT_EQ(ParseInt("-"), 0);
    EXPECT_EQ(ParseInt("two"), 0);
}

TEST(ParseInt, BeyondThirtyTwoBitsTheNearestEndCounts) {
    EXPECT_EQ(ParseInt("2147483647"), 2147483647);
    EXPECT_EQ(ParseInt("2147483648"), 2147483647);
    EXPECT_EQ(ParseInt("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ParseInt("-99999999999999999999999"), std::numeric_limits<std::int32_t>::min());
    // Not 2, which is what is left of it in 32 bits.
    EXPECT_EQ(ParseInt("4294967298"), 2147483647);
}

TEST(AppendFloat, WritesSixDecimals) {
    EXPECT_EQ(FloatText(0.0), "0.000000");
    EXPECT_EQ(FloatText(-0.0), "-0.000000");
    EXPECT_EQ(FloatText(0.5), "0.500000");
    EXPECT_EQ(FloatText(-12.3456789), "-12.345679");
    EXPECT_EQ(FloatText(-1e-9), "-0.000000");
    EXPECT_EQ(FloatText(0.9999999), "1.000000");
    // Halves go to the even neighbour: this one is held exactly.
    EXPECT_EQ(FloatText(0.0000152587890625), "0.000015");
    EXPECT_EQ(FloatText(0.5 + 1.0 / 128.0), "0.507812");
}

TEST(AppendFloat, WritesHugeValuesInFull) {
    EXPECT_EQ(FloatText(1e15), "1000000000000000.000000");
    EXPECT_EQ(FloatText(18446744073709551616.0), "18446744073709551616.000000");
    EXPECT_EQ(FloatText(std::numeric_limits<double>::max()).size(), 309u + 7u);
    EXPECT_EQ(FloatText(-std::numeric_limits<double>::max()).substr(0, 18), "-17976931348623157");
}

TEST(AppendFloat, WritesWordsForWhatIsNotFinite) {
    EXPECT_EQ(FloatText(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(FloatText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(FloatText(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(AppendInt, WritesTheWholeRange) {
    EXPECT_EQ(IntText(0), "0");
    EXPECT_EQ(IntText(23), "23");
    EXPECT_EQ(IntText(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

TEST(NumberText, IsThatOfTheCLocaleWhateverIsSet) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    // Not every machine has one of these; with none of them the test shows less.
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "German_Germany"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            break;
        }
    }
    EXPECT_EQ(FloatText(1234567.5), "1234567.500000");
    EXPECT_EQ(IntText(1234567), "1234567");
    EXPECT_EQ(ParseFloat("1.5"), 1.5);
    EXPECT_EQ(ParseFloat("1,5"), 1.0);
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace mv::test
