#include "platform/Environment.h"

#include <gtest/gtest.h>

#include <new>

#include "support/AllocationFault.h"
#include "support/ScopedEnvironment.h"

namespace mv {
namespace {

using test::ScopedEnvironment;

constexpr const char* kName = "RADIAL_BLUR_TEST_VARIABLE";

TEST(Environment, UnsetVariableLeavesTheValue) {
    const ScopedEnvironment unset(kName, std::nullopt);
    std::string value = "before";
    EXPECT_FALSE(ReadEnvironment(kName, value));
    EXPECT_EQ(value, "before");
}

TEST(Environment, ReadsTheValueAsItIsNow) {
    std::string value;
    const ScopedEnvironment first(kName, "one");
    EXPECT_TRUE(ReadEnvironment(kName, value));
    EXPECT_EQ(value, "one");
    const ScopedEnvironment second(kName, "two words");
    EXPECT_TRUE(ReadEnvironment(kName, value));
    EXPECT_EQ(value, "two words");
}

TEST(Environment, ReadsValuesOfAnyLength) {
    for (const std::size_t length : {1u, 126u, 127u, 128u, 129u, 5000u}) {
        const std::string expected(length, 'x');
        const ScopedEnvironment set(kName, expected);
        std::string value;
        EXPECT_TRUE(ReadEnvironment(kName, value));
        EXPECT_EQ(value, expected);
    }
}

#ifndef _WIN32
TEST(Environment, VariableSetToNothingCountsAsSet) {
    const ScopedEnvironment empty(kName, "");
    std::string value = "before";
    EXPECT_TRUE(ReadEnvironment(kName, value));
    EXPECT_EQ(value, "");
}
#endif

TEST(Environment, NoMemoryIsNotTakenForNoVariable) {
    const ScopedEnvironment set(kName, std::string(1000, 'x'));
    std::string value = "before";
    bool thrown = false;
    {
        const test::AllocationDrought drought;
        try {
            ReadEnvironment(kName, value);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(value, "before");
}

}  // namespace
}  // namespace mv
