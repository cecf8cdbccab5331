// The module's bytes against those of the second computation.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <set>
#include <tuple>

#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

constexpr int kJobs = 2484;  // 18 shapes, 23 blends, both modes, all views several times

TEST(RandomJobs, ReachEveryShapeModeBlendAndView) {
    std::set<std::tuple<int, int, int>> shapesByBlend;
    std::set<std::tuple<int, int>> shapesByMode;
    std::set<std::tuple<int, int>> shapesByView;
    for (int number = 0; number < kJobs; ++number) {
        const RenderJob job = RandomJob(number);
        const std::optional<oracle::Shape> shape = oracle::ChooseShape(job.facts);
        ASSERT_TRUE(shape) << Describe(job);
        EXPECT_EQ(shape->colors, 1 + number % 3);
        const int id = shape->colors + 4 * (shape->alpha ? 1 : 0) + 8 * shape->SampleBytes();
        if (job.settings.selectionShow == 1) {
            shapesByBlend.insert({id, job.settings.blendMode, 0});
            shapesByMode.insert({id, job.settings.mode});
        }
        shapesByView.insert({id, job.settings.selectionShow});
    }
    EXPECT_EQ(shapesByBlend.size(), 18u * 23u);
    EXPECT_EQ(shapesByMode.size(), 18u * 2u);
    EXPECT_EQ(shapesByView.size(), 18u * 4u);
}

TEST(RandomJobs, GiveTheBytesOfTheSecondComputation) {
    int different = 0;
    for (int number = 0; number < kJobs; ++number) {
        const RenderJob job = RandomJob(number);
        const std::string difference = Difference(job, RenderedOutput(job), ExpectedOutput(job));
        if (!difference.empty() && ++different <= 10) {
            ADD_FAILURE() << "job " << number << ": " << difference;
        }
    }
    EXPECT_EQ(different, 0) << "jobs of " << kJobs;
    RecordProperty("jobs", kJobs);
}

// How far the samples of two renders of one job lie apart.
struct Distances {
    long long integers = 0;
    long long differentIntegers = 0;
    long long floats = 0;
    long long differentFloats = 0;
    double largestStep = 0.0;   // integers, in steps
    double largestShare = 0.0;  // floats, of the value or of white
    std::string largest;        // the job of the largest difference, with the two values

    void Add(const RenderJob& here, const RenderJob& there) {
        const int channels = oracle::ChooseShape(here.facts).value().Channels();
        for (int i = 0; i < here.width * here.height * channels; ++i) {
            const int x = i / channels % here.width;
            const int y = i / channels / here.width;
            const double a = here.Get(x, y, i % channels);
            const double b = there.Get(x, y, i % channels);
            if (AddSample(here.facts.depth == 32, a, b)) {
                largest = std::to_string(a) + " and " + std::to_string(b) + " at " +
                          std::to_string(x) + ", " + std::to_string(y) + ": " + Describe(here);
            }
        }
    }

private:
    // True when no samples of the kind were as far apart before.
    bool AddSample(bool isFloat, double here, double there) {
        const bool same = here == there || (std::isnan(here) && std::isnan(there));
        (isFloat ? floats : integers) += 1;
        (isFloat ? differentFloats : differentIntegers) += same ? 0 : 1;
        if (same) {
            return false;
        }
        const double distance = std::abs(here - there);
        double& farthest = isFloat ? largestShare : largestStep;
        const double share = isFloat ? distance / std::fmax(1.0, std::abs(there)) : distance;
        const bool isLargest = share > farthest;
        farthest = std::fmax(farthest, share);
        return isLargest;
    }
};

// The job with its result in place of its source.
RenderJob ResultOf(const RenderJob& job) {
    RenderJob result = job;
    result.input = RenderedOutput(job);
    result.inputRowBytes = job.outputRowBytes;
    return result;
}

TEST(RandomJobs, WriteTheirResultsForAnotherSystem) {
    const char* const name = std::getenv("RADIAL_BLUR_WRITE_RESULTS");
    if (name == nullptr) {
        GTEST_SKIP() << "no file for the results is named";
    }
    std::ofstream file(name, std::ios::binary);
    for (int number = 0; number < kJobs; ++number) {
        const std::vector<std::uint8_t> bytes = RenderedOutput(RandomJob(number));
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    EXPECT_TRUE(file.flush());
}

// Two systems' mathematical libraries may round `pow` differently: by one step at most.
TEST(RandomJobs, DifferByOneStepAtMostFromAnotherSystemsResults) {
    const char* const name = std::getenv("RADIAL_BLUR_READ_RESULTS");
    if (name == nullptr) {
        GTEST_SKIP() << "no file of results is named";
    }
    std::ifstream file(name, std::ios::binary);
    Distances distances;
    for (int number = 0; number < kJobs; ++number) {
        const RenderJob here = ResultOf(RandomJob(number));
        RenderJob there = here;
        file.read(reinterpret_cast<char*>(there.input.data()),
                  static_cast<std::streamsize>(there.input.size()));
        ASSERT_TRUE(file);
        distances.Add(here, there);
    }
    std::printf("%lld of %lld integer samples differ, by %g at most\n", distances.differentIntegers,
                distances.integers, distances.largestStep);
    std::printf("%lld of %lld float samples differ, by %g of their value at most\n",
                distances.differentFloats, distances.floats, distances.largestShare);
    EXPECT_LE(distances.largestStep, 1.0) << distances.largest;
    // Floats may differ by more where a blend jumps: a gray that is 0 here and hardly more there
    // has another saturation. They must be rare.
    EXPECT_LE(distances.differentFloats * 100000, distances.floats) << distances.largest;
}

TEST(RandomJobs, GiveTheSameBytesWhenRenderedAgain) {
    for (int number = 0; number < 200; ++number) {
        const RenderJob job = RandomJob(7 * number);
        JobSession session(job);
        ASSERT_EQ(session.Start(), hostapi::noErr);
        const std::vector<std::uint8_t> first = session.Output();
        for (int again = 0; again < 3; ++again) {
            ASSERT_EQ(RenderedOutput(job), first) << Describe(job);
        }
    }
}

TEST(LargerPictures, GiveTheBytesOfTheSecondComputation) {
    int different = 0;
    for (int number = 0; number < 18 * 20; ++number) {
        RenderJob job = RandomLargeJob(number);
        // The plain blur is what is seen best.
        if (number % 3 != 0) {
            job.settings.blendMode = 1;
            job.settings.selectionShow = 1;
        }
        const std::string difference = Difference(job, RenderedOutput(job), ExpectedOutput(job));
        if (!difference.empty() && ++different <= 10) {
            ADD_FAILURE() << "job " << number << ": " << difference;
        }
    }
    EXPECT_EQ(different, 0);
}

// Larger than a cache, so that the four sides run into one another on several threads.
TEST(LargerPictures, GiveTheSameBytesEveryTimeAndThoseOfTheSecondComputation) {
    for (int number = 0; number < kShapes; ++number) {
        Random random(static_cast<std::uint32_t>(number) + 900u);
        RenderJob job = RandomPicture(random, number, 260 + random.Below(60), 190 + number);
        job.settings.originX = number % 3 == 0 ? 0.43217 : number % 3 == 1 ? -0.3 : 1.0;
        job.settings.originY = number % 2 == 0 ? 0.61 : 1.4;
        job.settings.strength = 0.3;
        job.settings.mode = 1 + number / 9;
        const std::vector<std::uint8_t> expected = ExpectedOutput(job);
        for (int again = 0; again < 3; ++again) {
            ASSERT_EQ(Difference(job, RenderedOutput(job), expected), "") << again;
        }
    }
}

}  // namespace
}  // namespace endtoend
