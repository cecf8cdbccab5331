#include "effect/kernels/RowKernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "effect/ShiftColumns.h"
#include "effect/TransferFunction.h"
#include "effect/kernels/RayKernels.h"

namespace mv {
namespace {

class RowKernelsOfEachSet : public testing::TestWithParam<const RowKernels*> {};

std::vector<float> SignalValues() {
    std::vector<float> values;
    for (int i = 0; i <= 32768; ++i) {
        values.push_back(static_cast<float>(i));
    }
    std::uint32_t state = 5;
    for (int i = 0; i < 300000; ++i) {
        state = state * 1664525u + 1013904223u;
        values.push_back(static_cast<float>(state >> 8) * 0.003f - 500.0f);
    }
    const float inf = std::numeric_limits<float>::infinity();
    for (const float odd : {std::numeric_limits<float>::quiet_NaN(), inf, -inf, 1e30f, -1e30f,
                            -0.0f, 1e-40f, 524288.0f}) {
        values.push_back(odd);
    }
    return values;
}

// The second formula is the C library's power, rounded to single precision.
TEST_P(RowKernelsOfEachSet, LinearizesAsTheCLibraryDoes) {
    const std::vector<float> values = SignalValues();
    std::vector<float> decoded = values;
    GetParam()->linearize(decoded.data(), static_cast<std::int32_t>(decoded.size()), 1, -1,
                          3.0517578125e-5, 32768.0f);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double x = values[i] * 3.0517578125e-5;
        const double linear =
            x > 0.081 ? std::pow(x * 0.9099181073703367 + 0.09008189262966335, 2.2222222222222223)
                      : x * 0.2222222222222222;
        const float expected = static_cast<float>(linear) * 32768.0f;
        const bool isSame = std::memcmp(&decoded[i], &expected, 4) == 0 ||
                            (std::isnan(decoded[i]) && std::isnan(expected));
        ASSERT_TRUE(isSame) << values[i] << ": " << decoded[i] << " and " << expected;
    }
}

TEST_P(RowKernelsOfEachSet, LinearizesAllButTheAlphaChannel) {
    for (const std::int32_t period : {2, 3, 4}) {
        std::vector<float> row(static_cast<std::size_t>(period) * 7, 200.0f);
        GetParam()->linearize(row.data(), period * 7, period, period - 1, 0.00392156862745098,
                              255.0f);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool isAlpha = static_cast<std::int32_t>(i) % period == period - 1;
            EXPECT_EQ(row[i], isAlpha ? 200.0f : LinearizeChannel<255>(200.0f)) << i;
        }
    }
}

float ToneOf(double color, const ToneRule& rule) {
    const double v = std::pow((color + 0.5) * rule.contrast + color, rule.exponent);
    const double value = rule.isEncoded ? EncodeRec709(v) : v;
    return value > 0.0 || value == 0.0 ? static_cast<float>(value) : 0.0f;
}

TEST_P(RowKernelsOfEachSet, TonesFloatsAsTheCLibraryDoes) {
    std::vector<double> colors = {
        0.0,   -0.0,  -0.3, 1e-310, 1e-40, 0.018, std::nextafter(0.018, 0.0),
        1e300, 1e-60, 1e17, 1e19,   2e18,  1.0,   0.5};
    const double inf = std::numeric_limits<double>::infinity();
    colors.insert(colors.end(), {inf, -inf, std::numeric_limits<double>::quiet_NaN()});
    std::uint32_t state = 5;
    for (int i = 0; i < 60000; ++i) {
        state = state * 1664525u + 1013904223u;
        const double share = (state >> 8) / 16777216.0;
        colors.push_back(i % 3 == 0   ? share * 0.04
                         : i % 3 == 1 ? share * 1.2 - 0.05
                                      : std::exp2(share * 140.0 - 70.0));
    }
    colors.resize(colors.size() + 3);
    double* bound = &colors[colors.size() - 3];
    std::vector<float> toned(colors.size());
    for (const double exponent : {1.0, 0.45, 2.2, 3.7, 0.01, 9.0, 15.9, 40.0}) {
        // Powers that come out at the bound of the transfer function and beside it.
        bound[0] = std::pow(0.018, 1.0 / exponent);
        bound[1] = std::nextafter(bound[0], 1.0);
        bound[2] = std::nextafter(bound[0], 0.0);
        for (const bool isEncoded : {false, true}) {
            for (const double contrast : {0.0, 0.4, -0.3}) {
                const ToneRule rule{contrast, exponent, isEncoded};
                GetParam()->toneFloats(toned.data(), colors.data(),
                                       static_cast<std::int32_t>(colors.size()), rule);
                for (std::size_t i = 0; i < colors.size(); ++i) {
                    const float expected = ToneOf(colors[i], rule);
                    ASSERT_EQ(std::memcmp(&toned[i], &expected, 4), 0)
                        << colors[i] << " to the power " << exponent << ": " << toned[i] << " and "
                        << expected;
                }
            }
        }
    }
}

TEST_P(RowKernelsOfEachSet, ToneIndicesBoundWhatIsBeyondWhite) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double colors[] = {-3.0, 0.0, 127.5, 255.0, 900.0, nan, 1.0};
    std::int32_t indices[7] = {};
    GetParam()->toneIndices(indices, colors, 7, 0.0, 255.0, 128.49803921568628);
    const std::int32_t expected[] = {0, 0, 16383, 32767, 32767, 0, 128};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(indices[i], expected[i]) << i;
    }
    GetParam()->toneIndices(indices, colors, 7, 1.0, 255.0, 128.49803921568628);
    // (127.5 + 127.5) * 1 + 127.5 lies above white.
    EXPECT_EQ(indices[2], 32767);
    EXPECT_EQ(indices[1], static_cast<std::int32_t>(127.5 * 128.49803921568628));
}

TEST_P(RowKernelsOfEachSet, DividesSumsByTheirWeights) {
    const float sums[] = {6.0f, 9.0f, 12.0f, 3.0f, 1.0f, 2.0f, 3.0f, 0.0f, 5.0f, 5.0f, 5.0f, 0.5f};
    float out[9] = {};
    GetParam()->normalize[3](out, sums, 3);
    const float expected[] = {2, 3, 4, 0, 0, 0, 10, 10, 10};
    for (int i = 0; i < 9; ++i) {
        EXPECT_FLOAT_EQ(out[i], expected[i]) << i;
    }
}

// Columns of a shifted row with the memory that they need.
struct ColumnsOf {
    ColumnsOf(std::int32_t width, double shift) : memory(ShiftColumns::Bytes(width) / 8 + 1) {
        columns.Fill(memory.data(), width, shift);
    }
    std::vector<double> memory;
    ShiftColumns columns;
};

// Widths around whole registers, shifts that round to another share from some column on.
TEST_P(RowKernelsOfEachSet, ShiftsAsTheBilinearFormulaDoes) {
    std::uint32_t state = 3;
    for (const std::int32_t width : {1, 2, 3, 5, 8, 17, 300}) {
        for (const double shift : {-0.5, 0.5, 0.1, -0.3, 0.0, 0.49999999999}) {
            ColumnsOf shifted(width, shift);
            for (const int channels : {1, 2, 3, 4}) {
                const auto count = static_cast<std::size_t>(width * channels);
                std::vector<float> rows(2 * count);
                for (float& value : rows) {
                    state = state * 1664525u + 1013904223u;
                    value = static_cast<float>(state >> 8) * 1e-5f;
                }
                const float* upper = rows.data();
                const float* lower = upper + count;
                const double fy = 0.3;
                std::vector<float> floats(count + 1, -1.0f);
                std::vector<double> doubles(count + 1, -1.0);
                const ShiftedColumns& columns = shifted.columns.Get();
                GetParam()->shiftToFloat[channels](floats.data(), upper, lower, columns, fy, 0,
                                                   width);
                const std::int32_t from = width / 3;
                GetParam()->shiftToDouble[channels](doubles.data(), upper, lower, columns, fy, 0.7,
                                                    from, width);
                for (std::int32_t x = 0; x < width; ++x) {
                    const double px = x + shift;
                    const auto ix = static_cast<std::int32_t>(px);
                    const double fx = px - ix;
                    const std::int32_t right = ix == width - 1 ? ix : ix + 1;
                    for (int c = 0; c < channels; ++c) {
                        const auto at = [&](const float* row, std::int32_t column) {
                            return static_cast<double>(row[column * channels + c]);
                        };
                        const double value = (1.0 - fx) * (1.0 - fy) * at(upper, ix) +
                                             fx * (1.0 - fy) * at(upper, right) +
                                             (1.0 - fx) * fy * at(lower, ix) +
                                             fx * fy * at(lower, right);
                        const auto i = static_cast<std::size_t>(x * channels + c);
                        ASSERT_EQ(floats[i], static_cast<float>(value)) << width << " " << x;
                        if (x >= from) {
                            const auto to = static_cast<std::size_t>((x - from) * channels + c);
                            ASSERT_EQ(doubles[to], value * 0.7) << width << " " << x;
                        }
                    }
                }
                // Nothing beyond what was asked for.
                EXPECT_EQ(floats[count], -1.0f);
                EXPECT_EQ(doubles[static_cast<std::size_t>((width - from) * channels)], -1.0);
            }
        }
    }
}

// The share of x + 0.1 changes where doubles around x have fewer places: at powers of two.
TEST(ShiftColumns, RunsEndWhereTheShareChanges) {
    ColumnsOf shifted(20, 0.1);
    const std::int32_t* ends = shifted.columns.Get().runEnds;
    std::vector<std::int32_t> found;
    do {
        found.push_back(*ends);
    } while (*ends++ != 20);
    for (std::size_t i = 0; i + 1 < found.size(); ++i) {
        const std::int32_t x = found[i];
        EXPECT_TRUE(x + 0.1 - x != x - 1 + 0.1 - (x - 1) || x == 19) << x;
    }
    // The last column has no right neighbour.
    EXPECT_EQ(found[found.size() - 2], 19);
    ColumnsOf half(20, -0.5);
    EXPECT_EQ(half.columns.Get().runEnds[0], 1);
    EXPECT_EQ(half.columns.Get().runEnds[1], 20);
}

INSTANTIATE_TEST_SUITE_P(Sets, RowKernelsOfEachSet, testing::ValuesIn([] {
                             std::vector<const RowKernels*> sets{&kRowKernelsSse2};
                             if (DetectInstructionSet() >= InstructionSet::Avx2) {
                                 sets.push_back(&kRowKernelsAvx2);
                             }
                             if (DetectInstructionSet() >= InstructionSet::Avx512) {
                                 sets.push_back(&kRowKernelsAvx512);
                             }
                             return sets;
                         }()));

TEST(InstructionSet, CanBeForcedToWhatTheProcessorServes) {
    EXPECT_TRUE(ForceInstructionSet(InstructionSet::Plain));
    EXPECT_EQ(SelectRowKernels(), nullptr);
    EXPECT_EQ(SelectRayKernels(), nullptr);
    EXPECT_TRUE(ForceInstructionSet(InstructionSet::Sse2));
    EXPECT_EQ(SelectRowKernels(), &kRowKernelsSse2);
    EXPECT_EQ(ForceInstructionSet(InstructionSet::Avx2),
              DetectInstructionSet() >= InstructionSet::Avx2);
    EXPECT_EQ(ForceInstructionSet(InstructionSet::Avx512),
              DetectInstructionSet() == InstructionSet::Avx512);
    UseDetectedInstructionSet();
    EXPECT_NE(SelectRowKernels(), nullptr);
}

}  // namespace
}  // namespace mv
