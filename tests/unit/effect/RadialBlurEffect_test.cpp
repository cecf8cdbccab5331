#include "effect/RadialBlurEffect.h"

#include <gtest/gtest.h>

#include <utility>

#include "effect/kernels/RayKernels.h"
#include "support/InstructionSets.h"
#include "support/TestRender.h"

namespace mv {
namespace {

using test::TestFilter;
using test::TestPicture;
using test::TestShape;

struct Settings {
    double originX;
    double originY;
    double strength;
    double start;
    double holdout;
    double low;
    double soften;
    bool withMask;
};

constexpr Settings kSettings[] = {
    {0.5, 0.5, 0.25, 0.5, 0.0, 0.0, 0.0, false}, {0.31, 0.77, 0.9, 0.0, 0.2, 30.0, 0.0, true},
    {0.0, 0.0, 0.6, 0.5, 0.0, 0.0, 1.5, false},  {1.0, 0.3, 1.4, -0.5, 0.0, 0.0, 0.0, true},
    {-0.4, 0.6, 0.5, 0.2, 0.3, 0.0, 0.0, false}, {1.7, -0.9, 0.4, 0.5, 0.0, 10.0, 0.7, true},
    {0.98, 0.99, 0.3, 0.7, 0.0, 0.0, 0.0, true}};

void SetValues(TestFilter& filter, const Settings& s, int mode) {
    filter.SetOrigin(s.originX, s.originY);
    filter.SetValue("Strength", s.strength);
    filter.SetValue("ZoomStart", s.start);
    filter.SetValue("HoldoutRadius", s.holdout);
    filter.SetValue("SelectionLow", s.low);
    filter.SetValue("SelectionSoften", s.soften);
    filter.SetValue("Mode", mode);
}

std::vector<std::uint8_t> Render(TestFilter& filter, TestPicture& picture, const Settings& s,
                                 int mode) {
    SetValues(filter, s, mode);
    return test::RenderPicture(filter, picture);
}

class EveryInstructionSet : public testing::TestWithParam<InstructionSet> {
protected:
    void SetUp() override { ASSERT_TRUE(ForceInstructionSet(GetParam())); }
    void TearDown() override { UseDetectedInstructionSet(); }
};

// The plain form on one thread is the reference of every other form.
TEST_P(EveryInstructionSet, GivesThePlainFormsBytesInAllShapesAndModes) {
    const InstructionSet set = GetParam();
    TestFilter one(1);
    for (const TestShape& shape : test::AllShapes()) {
        for (const Settings& settings : kSettings) {
            TestPicture picture = test::MakeNoise(shape, 61, 43, 7, settings.withMask);
            for (const int mode : {1, 2}) {
                ForceInstructionSet(InstructionSet::Plain);
                const auto expected = Render(one, picture, settings, mode);
                ForceInstructionSet(set);
                EXPECT_EQ(Render(one, picture, settings, mode), expected)
                    << shape.colors << " colours, alpha " << shape.alpha << ", depth "
                    << shape.depth << ", origin " << settings.originX << ", mode " << mode;
            }
        }
    }
}

// Planes that are no channels lie between the pixels, and stay as they were.
TEST_P(EveryInstructionSet, GivesThePlainFormsBytesBetweenFurtherPlanes) {
    const InstructionSet set = GetParam();
    TestFilter one(1);
    for (const int depth : {8, 16, 32}) {
        for (const TestShape& shape : {TestShape{3, true, depth, 5}, TestShape{3, true, depth, 7},
                                       TestShape{3, false, depth, 4}}) {
            for (const Settings& settings : kSettings) {
                TestPicture picture = test::MakeNoise(shape, 61, 43, 7, settings.withMask);
                ForceInstructionSet(InstructionSet::Plain);
                const auto expected = Render(one, picture, settings, 1);
                ForceInstructionSet(set);
                EXPECT_EQ(Render(one, picture, settings, 1), expected)
                    << shape.planes << " planes, depth " << depth << ", origin "
                    << settings.originX;
            }
        }
    }
}

// Larger than what of it is in memory at a time.
TEST_P(EveryInstructionSet, GivesThePlainFormsBytesInALargerPicture) {
    const InstructionSet set = GetParam();
    TestFilter one(1);
    TestFilter three(3);
    for (const TestShape& shape : {TestShape{3, false, 8, 3}, TestShape{1, true, 16, 2}}) {
        for (const Settings& settings : kSettings) {
            TestPicture picture = test::MakeNoise(shape, 610, 530, 7, settings.withMask);
            for (const int mode : {1, 2}) {
                ForceInstructionSet(InstructionSet::Plain);
                const auto expected = Render(one, picture, settings, mode);
                ForceInstructionSet(set);
                EXPECT_EQ(Render(one, picture, settings, mode), expected)
                    << "origin " << settings.originX << ", mode " << mode;
                EXPECT_EQ(Render(three, picture, settings, mode), expected)
                    << "origin " << settings.originX << ", mode " << mode;
            }
        }
    }
}

// Stages run one after the other there, since the picture is read before any of it is written.
TEST_P(EveryInstructionSet, GivesThePlainFormsBytesWhereInputAndOutputAreOne) {
    const InstructionSet set = GetParam();
    TestFilter three(3);
    for (const TestShape& shape : test::AllShapes()) {
        for (const Settings& settings : kSettings) {
            TestPicture picture = test::MakeNoise(shape, 61, 43, 7, settings.withMask);
            for (const int mode : {1, 2}) {
                SetValues(three, settings, mode);
                ForceInstructionSet(InstructionSet::Plain);
                const auto expected = test::RenderInPlace(three, picture);
                ForceInstructionSet(set);
                EXPECT_EQ(test::RenderInPlace(three, picture), expected)
                    << shape.colors << " colours, alpha " << shape.alpha << ", depth "
                    << shape.depth << ", origin " << settings.originX << ", mode " << mode;
            }
        }
    }
}

// Rays of two sides run side by side for so long that one side waits for the other.
TEST_P(EveryInstructionSet, GivesThePlainFormsBytesInANarrowPicture) {
    const InstructionSet set = GetParam();
    TestFilter one(1);
    TestFilter three(3);
    const TestShape shape = test::AllShapes().front();
    for (const auto& [width, height] : {std::pair{3, 2600}, {2600, 2}}) {
        TestPicture picture = test::MakeNoise(shape, width, height, 7, false);
        for (const int mode : {1, 2}) {
            const Settings settings = kSettings[1];
            ForceInstructionSet(InstructionSet::Plain);
            const auto expected = Render(one, picture, settings, mode);
            ForceInstructionSet(set);
            EXPECT_EQ(Render(one, picture, settings, mode), expected) << mode;
            EXPECT_EQ(Render(three, picture, settings, mode), expected) << mode;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, EveryInstructionSet, testing::ValuesIn(test::FastInstructionSets()));

TEST(RadialBlurEffect, GivesTheSameBytesWithAnyNumberOfThreads) {
    TestFilter one(1);
    for (const int threads : {2, 3, 8, 64}) {
        TestFilter many(threads);
        for (const Settings& settings : kSettings) {
            TestPicture picture = test::MakeNoise({3, true, 8, 4}, 97, 64, 11, settings.withMask);
            for (const int mode : {1, 2}) {
                EXPECT_EQ(Render(many, picture, settings, mode),
                          Render(one, picture, settings, mode))
                    << threads << " threads, origin " << settings.originX << ", mode " << mode;
            }
        }
    }
}

TEST(RadialBlurEffect, GivesTheSameBytesWhateverTheOrderOfTheSides) {
    TestFilter forward(1);
    TestFilter backward(1, true);
    std::uint32_t seed = 1;
    const auto next = [&seed](int count) {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<int>((seed >> 8) % static_cast<std::uint32_t>(count));
    };
    for (int i = 0; i < 150; ++i) {
        TestPicture picture =
            test::MakeNoise({3, false, 16, 3}, 1 + next(70), 1 + next(50), seed, false);
        const Settings settings{
            next(9) / 4.0 - 0.5, next(1000) / 500.0 - 0.5, 0.5, 0.5, 0.0, 0.0, 0.0, false};
        EXPECT_EQ(Render(backward, picture, settings, 1 + i % 2),
                  Render(forward, picture, settings, 1 + i % 2))
            << picture.width << " x " << picture.height << ", origin " << settings.originX << ", "
            << settings.originY;
    }
}

TEST(RadialBlurEffect, LeavesPlanesBehindTheShapesChannelsAlone) {
    TestFilter filter(1);
    TestPicture picture = test::MakeNoise({3, false, 8, 5}, 20, 10, 3, false);
    const auto out = test::RenderPicture(filter, picture);
    for (std::size_t pixel = 0; pixel < 200; ++pixel) {
        EXPECT_EQ(out[pixel * 5 + 3], 0xA5);
        EXPECT_EQ(out[pixel * 5 + 4], 0xA5);
    }
}

TEST(RadialBlurEffect, WithoutStrengthAndGammaKeepsThePicture) {
    TestFilter filter(1);
    filter.SetValue("Strength", 0.0);
    filter.SetValue("GammaCorrection", 0.0);
    for (const int depth : {16, 32}) {
        TestPicture picture = test::MakeNoise({3, false, depth, 3}, 24, 18, 5, false);
        if (depth == 32) {
            // Lightness beyond 0..1 is no member of the full selection.
            for (std::size_t i = 0; i < picture.bytes.size(); i += 4) {
                const float value = static_cast<float>(i % 1000) / 1000.0f;
                std::memcpy(&picture.bytes[i], &value, 4);
            }
        }
        const auto out = test::RenderPicture(filter, picture);
        if (depth == 32) {
            EXPECT_EQ(out, picture.bytes);
            continue;
        }
        // The tone table has 32768 entries: a level may come out one lower.
        for (std::size_t i = 0; i < out.size(); i += 2) {
            std::uint16_t in = 0;
            std::uint16_t result = 0;
            std::memcpy(&in, &picture.bytes[i], 2);
            std::memcpy(&result, &out[i], 2);
            EXPECT_LE(in - result, 2);
            EXPECT_GE(in - result, 0);
        }
    }
}

TEST(RadialBlurEffect, ShowsTheSizeSelectionUnscaledAndWhiteWithoutAMask) {
    TestFilter filter(1);
    filter.SetValue("SelectionShow", 4);
    filter.SetValue("UseSizeSelection", 1);
    TestPicture picture = test::MakeNoise({1, true, 16, 2}, 9, 6, 5, true);
    const auto masked = test::RenderPicture(filter, picture);
    for (std::size_t i = 0; i < picture.mask.size(); ++i) {
        std::uint16_t values[2];
        std::memcpy(values, &masked[i * 4], 4);
        EXPECT_EQ(values[0], picture.mask[i]);
        EXPECT_EQ(values[1], 32768);
    }
    picture.mask.clear();
    const auto bare = test::RenderPicture(filter, picture);
    std::uint16_t white = 0;
    std::memcpy(&white, bare.data(), 2);
    EXPECT_EQ(white, 32768);
}

TEST(RadialBlurEffect, ComesOutBlackWhereNoRayRuns) {
    TestFilter filter(1);
    TestPicture picture{{3, false, 8, 3}, 1, 1, {200, 100, 50}, {}};
    EXPECT_EQ(test::RenderPicture(filter, picture), (std::vector<std::uint8_t>{0, 0, 0}));
}

TEST(RadialBlurEffect, SurvivesNumbersThatAreNone) {
    TestFilter filter(2);
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double value : {nan, inf, -inf, 1e300, -1e300}) {
        for (const int mode : {1, 2}) {
            for (const char* name : {"Strength", "ZoomStart", "HoldoutRadius", "Intensity",
                                     "Contrast", "GammaCorrectionCorrective", "Hue", "Saturation",
                                     "Lightness", "SelectionLow", "SelectionSoften"}) {
                TestFilter fresh(1);
                fresh.SetValue("Mode", mode);
                fresh.SetValue(name, value);
                TestPicture picture = test::MakeNoise({3, true, 32, 4}, 17, 13, 9, false);
                EXPECT_EQ(test::RenderPicture(fresh, picture).size(), picture.bytes.size());
            }
            filter.SetOrigin(value, -value);
            TestPicture picture = test::MakeNoise({3, false, 8, 3}, 17, 13, 9, false);
            EXPECT_EQ(test::RenderPicture(filter, picture).size(), picture.bytes.size());
        }
    }
}

}  // namespace
}  // namespace mv
