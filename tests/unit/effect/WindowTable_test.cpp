#include "effect/WindowTable.h"

#include <gtest/gtest.h>

#include <vector>

namespace mv {
namespace {

// The first step whose window the end of the line cuts, by asking each.
std::int32_t FirstCutByScan(const WindowRule& rule, std::int32_t n) {
    for (std::int32_t i = 0; i < n; ++i) {
        if (PlaceWindow(WindowLength(rule, i, 1.0), rule.zoomStart, i, n).isCut) {
            return i;
        }
    }
    return n;
}

// No later than that, and no more than two steps before it.
TEST(WindowTable, KnowsFromWhereOnALinesEndCutsWindows) {
    for (const double strength : {0.0, 0.05, 0.3, 1.0, 3.0}) {
        for (const double zoomStart : {-0.5, -0.2, 0.0, 0.31, 0.5, 0.7}) {
            for (const double startDistance : {0.0, 17.3}) {
                for (const double holdout : {0.0, 40.0}) {
                    for (const std::int32_t n : {1, 2, 5, 100, 1999}) {
                        const WindowRule rule{startDistance, holdout, strength, zoomStart};
                        const std::int32_t expected = FirstCutByScan(rule, n);
                        const std::int32_t found = FirstCutWindow(rule, n);
                        EXPECT_LE(found, expected) << strength << ' ' << zoomStart << ' ' << n;
                        EXPECT_GE(found, expected - 2) << strength << ' ' << zoomStart << ' ' << n;
                    }
                }
            }
        }
    }
}

TEST(WindowTable, HoldsTheSameWindowsWithKernelsAndWithout) {
    const RayKernels* kernels = SelectRayKernels();
    ASSERT_NE(kernels, nullptr);
    constexpr std::int32_t steps = 103;
    for (const WindowRule& rule : {WindowRule{0.0, 0.0, 0.3, 0.5}, WindowRule{9.7, 30.2, 1.1, -0.4},
                                   WindowRule{2.5, 0.0, 0.01, 0.0}}) {
        std::vector<double> plainMemory(WindowTable::Doubles(steps));
        std::vector<double> fastMemory(WindowTable::Doubles(steps));
        WindowTable plain;
        WindowTable fast;
        plain.SetMemory(plainMemory.data());
        fast.SetMemory(fastMemory.data());
        plain.FillAll(rule, 1, steps, 90);
        fast.FillAll(rule, 1, steps, 90, kernels);
        for (std::int32_t i = 1; i < steps; ++i) {
            const WindowPosition& a = *plain.From(i);
            const WindowPosition& b = *fast.From(i);
            EXPECT_EQ(a.highKeep, b.highKeep) << i;
            EXPECT_EQ(a.highNext, b.highNext) << i;
            EXPECT_EQ(a.lowKeep, b.lowKeep) << i;
            EXPECT_EQ(a.lowNext, b.lowNext) << i;
            EXPECT_EQ(a.divisor, b.divisor) << i;
            EXPECT_EQ(a.high, b.high) << i;
            EXPECT_EQ(a.low, b.low) << i;
        }
    }
}

}  // namespace
}  // namespace mv
