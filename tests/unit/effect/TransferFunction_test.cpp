#include "effect/TransferFunction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "effect/kernels/RayKernels.h"
#include "support/InstructionSets.h"

namespace mv {
namespace {

class GammaTable : public testing::TestWithParam<InstructionSet> {
protected:
    void SetUp() override { ASSERT_TRUE(ForceInstructionSet(GetParam())); }
    void TearDown() override { UseDetectedInstructionSet(); }
};

std::vector<float> Filled(double exponent, bool gammaOn, double white) {
    std::vector<float> table(kGammaTableSize, -1.0f);
    FillGammaTable(table.data(), exponent, gammaOn, white);
    return table;
}

// Each power is rounded to single precision before the next step.
TEST_P(GammaTable, HoldsThePowerAndTheTransferFunction) {
    for (const double exponent : {1.0, 0.5, 0.45, 2.2, 10.0, 0.1, 0.0, -1.0}) {
        for (const bool gammaOn : {false, true}) {
            const std::vector<float> table = Filled(exponent, gammaOn, 255.0);
            for (std::int32_t i = 0; i < kGammaTableSize; ++i) {
                const float signal = static_cast<float>(i) * 3.051851e-5f;
                auto v = static_cast<float>(std::pow(static_cast<double>(signal), exponent));
                if (gammaOn) {
                    v = static_cast<float>(
                        v >= 0.018 ? 1.099 * std::pow(static_cast<double>(v), 0.45) - 0.099
                                   : 4.5 * static_cast<double>(v));
                }
                ASSERT_EQ(table[static_cast<std::size_t>(i)], v * 255.0f)
                    << i << " to the power " << exponent;
            }
        }
    }
}

TEST_P(GammaTable, EndsAtWhite) {
    EXPECT_NEAR(Filled(1.0, true, 32768.0).back(), 32768.0, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Sets, GammaTable, testing::ValuesIn(test::ServedInstructionSets()));

}  // namespace
}  // namespace mv
