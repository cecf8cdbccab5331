#include "interface/NumberText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace mv {
namespace {

std::string Formatted(double value) {
    char text[kNumberCapacity];
    FormatNumber(value, text);
    return text;
}

TEST(NumberText, ShowsSixSignificantDigits) {
    EXPECT_EQ(Formatted(0.25), "0.25");
    EXPECT_EQ(Formatted(1.0), "1");
    EXPECT_EQ(Formatted(0.005), "0.005");
    EXPECT_EQ(Formatted(0.123456789), "0.123457");
    EXPECT_EQ(Formatted(1234567.0), "1.23457e+06");
    EXPECT_EQ(Formatted(-0.5), "-0.5");
    EXPECT_EQ(Formatted(255.0), "255");
    EXPECT_EQ(Formatted(0.0000123), "1.23e-05");
    EXPECT_EQ(Formatted(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(Formatted(std::numeric_limits<double>::max()), "1.79769e+308");
}

struct Typed {
    const char* text;
    bool valid;
    double value;
};

class TypedNumber : public testing::TestWithParam<Typed> {};

TEST_P(TypedNumber, CountsOnlyWhenTheTextIsOneNumber) {
    double value = -77.0;
    EXPECT_EQ(ParseNumber(GetParam().text, value), GetParam().valid) << GetParam().text;
    EXPECT_DOUBLE_EQ(value, GetParam().valid ? GetParam().value : -77.0) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypedNumber,
    testing::Values(Typed{"0.25", true, 0.25}, Typed{"0.", true, 0.0}, Typed{".5", true, 0.5},
                    Typed{"-1.5", true, -1.5}, Typed{"+2", true, 2.0}, Typed{"1e2", true, 100.0},
                    Typed{"1E-2", true, 0.01}, Typed{"  3", true, 3.0}, Typed{"\t-3", true, -3.0},
                    Typed{"0x10", true, 16.0}, Typed{"-0X1p2", true, -4.0}, Typed{"7", true, 7.0},
                    Typed{"", false, 0}, Typed{"   ", false, 0}, Typed{"3 ", false, 0},
                    Typed{"1,5", false, 0}, Typed{"12px", false, 0}, Typed{"abc", false, 0},
                    Typed{"-", false, 0}, Typed{"+", false, 0}, Typed{"+-1", false, 0},
                    Typed{"--1", false, 0}, Typed{"1.2.3", false, 0}, Typed{"1e", false, 0},
                    Typed{"0x", false, 0}, Typed{"0xg", false, 0}, Typed{".", false, 0},
                    Typed{"0x.8", true, 0.5}, Typed{"0x-1", false, 0}, Typed{"0X-1e400", false, 0},
                    Typed{"0xinf", false, 0}, Typed{"-0xnan", false, 0}, Typed{"0x.", false, 0}));

TEST(NumberText, ReadsWhatIsNoFiniteNumberAsTheCLibraryDoes) {
    double value = 0.0;
    ASSERT_TRUE(ParseNumber("inf", value));
    EXPECT_TRUE(std::isinf(value) && value > 0);
    ASSERT_TRUE(ParseNumber("-inf", value));
    EXPECT_TRUE(std::isinf(value) && value < 0);
    ASSERT_TRUE(ParseNumber("nan", value));
    EXPECT_TRUE(std::isnan(value));
    ASSERT_TRUE(ParseNumber("1e999", value));
    EXPECT_TRUE(std::isinf(value) && value > 0);
    ASSERT_TRUE(ParseNumber("-1e999", value));
    EXPECT_TRUE(std::isinf(value) && value < 0);
    ASSERT_TRUE(ParseNumber("1e-999", value));
    EXPECT_EQ(value, 0.0);
}

TEST(NumberText, StaysInTheCLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German_Germany.1252", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            double value = 0.0;
            EXPECT_TRUE(ParseNumber("0.5", value));
            EXPECT_EQ(value, 0.5);
            EXPECT_FALSE(ParseNumber("0,5", value));
            EXPECT_EQ(Formatted(0.5), "0.5");
        }
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(NumberText, WriterCutsWhatIsTooLong) {
    char text[8];
    TextWriter writer(text);
    EXPECT_STREQ(text, "");
    writer.Append("abcd");
    writer.AppendNumber(12.5);
    EXPECT_STREQ(text, "abcd12.");
    writer.Append("more");
    EXPECT_STREQ(text, "abcd12.");
}

}  // namespace
}  // namespace mv
