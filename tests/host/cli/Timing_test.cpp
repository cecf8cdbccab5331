// The report of a run's stages, which only the command line can ask for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "HostSession.h"
#include "Module.h"
#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"
#include "support/TestFiles.h"

namespace mv::host::test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::filesystem::path RealModule() {
    return BuiltProgram().parent_path() / ModuleFileName();
}

class TimingTest : public ::testing::Test {
protected:
    void SetUp() override { WriteGradientPng(folder_ / "in.png", 32, 24, 3, 8); }

    ProgramRun Blur(std::vector<std::string> options, const std::filesystem::path& module) {
        options.insert(options.begin(),
                       {PathToText(folder_ / "in.png"), PathToText(folder_ / "out.png")});
        return RunRadialBlur(options, {.module = module});
    }

    TempFolder folder_;
};

TEST_F(TimingTest, TellsEveryStageOnceAndTheSum) {
    const ProgramRun run = Blur({"--timing", "--quiet"}, RealModule());
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, StartsWith("[Measure]\n[Combined ]\nenvelope:"));
    for (const char* const stage : {"image from the host", "selection, linear light, move",
                                    "clearing", "rays", "normalization", "composition"}) {
        EXPECT_THAT(run.out, HasSubstr("%) - (1x) " + std::string(stage) + "\n"));
    }
    EXPECT_THAT(run.out, HasSubstr("\n-------------------------\nenvelope:"));
    EXPECT_THAT(run.out, HasSubstr("(100.0%) | max:"));
}

// A picture that is wide enough passes through all stages in pieces.
TEST_F(TimingTest, StagesThatRunTogetherAreToldTogether) {
    WriteGradientPng(folder_ / "in.png", 64, 48, 3, 8);
    const ProgramRun run = Blur({"--timing", "--quiet"}, RealModule());
    EXPECT_EQ(run.code, 0) << run.err;
    for (const char* const stage : {"image from the host", "clearing", "selection to composition",
                                    "normalization", "composition of seams"}) {
        EXPECT_THAT(run.out, HasSubstr("%) - (1x) " + std::string(stage) + "\n"));
    }
}

TEST_F(TimingTest, AViewHasItsOwnStages) {
    const ProgramRun run = Blur({"--timing", "--show", "selection-only"}, RealModule());
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, AllOf(HasSubstr("(1x) copy of the view\n"), Not(HasSubstr("rays"))));
}

TEST_F(TimingTest, StandsInTheJsonReport) {
    EXPECT_THAT(Blur({"--timing", "--json"}, RealModule()).out,
                HasSubstr("\"timing\": \"[Measure]"));
    EXPECT_THAT(Blur({"--json"}, RealModule()).out, Not(HasSubstr("timing")));
}

TEST_F(TimingTest, NobodyAskedNothingIsTold) {
    EXPECT_THAT(Blur({}, RealModule()).out, Not(HasSubstr("[Measure]")));
}

TEST_F(TimingTest, AModuleThatGivesNoTimesIsTold) {
    const ProgramRun run = Blur({"--timing", "--quiet"}, FakeModule());
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "the filter module gave no times\n");
}

// What the module asks of the basic suite, in order.
std::vector<std::string> asked;
std::int32_t (*acquire)(const char*, std::int32_t, const void**) = nullptr;

std::int32_t NoteAndAcquire(const char* name, std::int32_t version, const void** suite) {
    asked.emplace_back(name);
    return acquire(name, version, suite);
}

class TimingSuiteTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string reason;
        ASSERT_TRUE(module_.Load(RealModule(), reason)) << reason;
    }

    // The reports that came.
    std::vector<std::string> Run(bool offered, hostapi::OSType signature) {
        HostImage image;
        image = HostImage(12, 9, 3, 8);
        HostSession session(module_.GetEntryPoint(), MakeDocument(std::move(image), false),
                            {.timingSuite = offered});
        std::vector<std::string> reports;
        session.Hooks().timing = [&reports](const std::string& text) { reports.push_back(text); };
        session.Record().hostSig = signature;
        asked.clear();
        acquire = session.BasicSuite().AcquireSuite;
        session.BasicSuite().AcquireSuite = NoteAndAcquire;
        EXPECT_TRUE(session.Run().stored);
        EXPECT_THAT(session.GetComplaints(), IsEmpty());
        EXPECT_EQ(session.Counts().suitesHeld, 0);
        return reports;
    }

    Module module_;
};

TEST_F(TimingSuiteTest, IsAskedForOnceByTheRun) {
    const std::vector<std::string> reports = Run(true, hostapi::kCommandLineSignature);
    EXPECT_THAT(reports, ElementsAre(AllOf(StartsWith("[Measure]\n"), HasSubstr("(1x) rays"))));
    EXPECT_EQ(std::count(asked.begin(), asked.end(), hostapi::kTimingSuite), 1);
}

TEST_F(TimingSuiteTest, LeavesNothingForTheNextRun) {
    EXPECT_EQ(Run(true, hostapi::kCommandLineSignature).size(), 1U);
    EXPECT_THAT(Run(false, hostapi::kCommandLineSignature), IsEmpty());
    EXPECT_THAT(Run(true, hostapi::kCommandLineSignature),
                ElementsAre(HasSubstr("(1x) rays")));  // not twice
}

TEST_F(TimingSuiteTest, AnyOtherHostIsAskedForNothingMore) {
    for (const hostapi::OSType signature : {hostapi::FourCharacterCode("8BIM"), 0U}) {
        EXPECT_THAT(Run(true, signature), IsEmpty());
        for (const std::string& name : asked) {
            EXPECT_TRUE(name == hostapi::kPSBufferSuite || name == hostapi::kPSHandleSuite) << name;
        }
        // Four selectors, two suites each.
        EXPECT_EQ(asked.size(), 8U);
    }
}

}  // namespace
}  // namespace mv::host::test
