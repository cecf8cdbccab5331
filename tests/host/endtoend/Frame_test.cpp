// The six selectors, seen from the host: results, suites, what stays untouched.
#include <gtest/gtest.h>

#include <cstring>

#include "DialogCloser.h"
#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

using hostapi::FilterRecord;
using mv::host::HostFaults;
using mv::host::HostOffer;
using mv::host::HostSession;

constexpr std::int16_t kSelectors[] = {
    hostapi::filterSelectorParameters, hostapi::filterSelectorPrepare, hostapi::filterSelectorStart,
    hostapi::filterSelectorContinue, hostapi::filterSelectorFinish};

// A picture and settings under which the result differs from the source and from the destination.
RenderJob SmallJob() {
    Random random(4711);
    RenderJob job = RandomPicture(random, 5, 15, 11);
    job.settings.originX = 0.37;
    job.settings.originY = 0.61;
    job.settings.strength = 0.5;
    return job;
}

// The module remembers a Handle suite of an earlier call when a host leaves the cell of a refused
// suite untouched; a host that clears it brings the module back to its first state.
void ForgetSuites() {
    HostOffer offer;
    offer.bufferSuite = false;
    offer.handleSuite = false;
    offer.refusedSuiteIsCleared = true;
    const RenderJob job = SmallJob();
    HostSession session(Entry(), DocumentOf(job), offer);
    ASSERT_EQ(session.Call(hostapi::filterSelectorParameters), hostapi::noErr);
}

class FrameTest : public testing::Test {
protected:
    void SetUp() override { ForgetSuites(); }
    // A run in such a host ends for lack of memory and touches nothing.
    void ExpectNoMemory(const HostOffer& offer) const {
        JobSession session(job_, offer);
        EXPECT_EQ(session.Start(), hostapi::memFullErr);
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
    RenderJob job_ = SmallJob();
};

TEST_F(FrameTest, AboutShowsItsBoxAndTouchesNothing) {
    const DialogCloser closer;
    JobSession session(job_);
    const FilterRecord before = session.Host().Record();
    EXPECT_EQ(session.Host().CallAbout(), hostapi::noErr);
    EXPECT_EQ(std::memcmp(&before, &session.Host().Record(), sizeof before), 0);
    EXPECT_EQ(session.Host().Counts().progressCalls, 0);
    EXPECT_EQ(session.Host().Counts().advanceCalls, 0);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(FrameTest, AboutTakesTheBasicSuiteFromTheAboutRecord) {
    const DialogCloser closer;
    JobSession session(job_);
    session.Host().Record().sSPBasic = nullptr;
    EXPECT_EQ(session.Host().CallAbout(), hostapi::noErr);
    EXPECT_EQ(session.Host().Counts().suitesAcquired, 2);
    EXPECT_EQ(session.Host().Counts().suitesReleased, 2);
}

TEST_F(FrameTest, ParametersContinueAndFinishLeaveTheRecordAsItIs) {
    JobSession session(job_);
    for (const std::int16_t selector :
         {hostapi::filterSelectorParameters, hostapi::filterSelectorContinue,
          hostapi::filterSelectorFinish}) {
        const FilterRecord before = session.Host().Record();
        EXPECT_EQ(session.Host().Call(selector), hostapi::noErr);
        EXPECT_EQ(std::memcmp(&before, &session.Host().Record(), sizeof before), 0) << selector;
    }
    EXPECT_EQ(session.Host().Counts().advanceCalls, 0);
    EXPECT_EQ(session.Output(), job_.output);
}

TEST_F(FrameTest, PrepareTellsTheHostToKeepItsMemoryAndNothingElse) {
    JobSession session(job_);
    FilterRecord expected = session.Host().Record();
    ASSERT_NE(expected.maxSpace, 0);
    ASSERT_NE(expected.bufferSpace, 0);
    expected.maxSpace = 0;
    expected.bufferSpace = 0;
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
    EXPECT_EQ(std::memcmp(&expected, &session.Host().Record(), sizeof expected), 0);
}

TEST_F(FrameTest, PrepareDividesByNothingThatAHostMayLeaveZero) {
    JobSession session(job_);
    FilterRecord& record = session.Host().Record();
    record.filterRect = {};
    record.inLayerPlanes = record.inTransparencyMask = record.inNonLayerPlanes = 0;
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
    record.filterRect = {-32768, -32768, 32767, 32767};
    record.inLayerPlanes = record.inNonLayerPlanes = 32767;
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
}

TEST_F(FrameTest, TheDataCellAndTheParametersHandleAreNotUsed) {
    const DialogCloser closer;
    JobSession session(job_);
    session.Host().Data() = 0x1122334455667788;
    session.Host().Record().parameters = reinterpret_cast<hostapi::Handle>(0x10);
    session.Host().Play(ScriptOf(job_.settings));
    for (const std::int16_t selector : kSelectors) {
        EXPECT_EQ(session.Host().Call(selector), hostapi::noErr) << selector;
        EXPECT_EQ(session.Host().Data(), 0x1122334455667788) << selector;
        const hostapi::Handle parameters = session.Host().Record().parameters;
        EXPECT_EQ(parameters, reinterpret_cast<hostapi::Handle>(0x10));
    }
    session.Host().CallAbout();
    EXPECT_EQ(session.Host().Data(), 0x1122334455667788);
}

TEST_F(FrameTest, AnUnknownSelectorGivesMinusOneAndReleasesTheSuites) {
    JobSession session(job_);
    int calls = 0;
    constexpr std::int16_t kUnknown[] = {-1, 6, 7, 255, 256, 32767, -32768};
    for (const std::int16_t selector : kUnknown) {
        const FilterRecord before = session.Host().Record();
        EXPECT_EQ(session.Host().Call(selector), -1) << selector;
        EXPECT_EQ(std::memcmp(&before, &session.Host().Record(), sizeof before), 0) << selector;
        ++calls;
        EXPECT_EQ(session.Host().Counts().suitesAcquired, 2 * calls);
        EXPECT_EQ(session.Host().Counts().suitesReleased, 2 * calls);
    }
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(FrameTest, BothSuitesAreHeldForOneCallOnly) {
    JobSession session(job_);
    session.Host().Play(ScriptOf(job_.settings));
    int calls = 0;
    for (const std::int16_t selector : kSelectors) {
        session.Host().Call(selector);
        ++calls;
        EXPECT_EQ(session.Host().Counts().suitesAcquired, 2 * calls);
        EXPECT_EQ(session.Host().Counts().suitesHeld, 0);
    }
}

void ExpectRefusal(JobSession& session, const RenderJob& job) {
    const DialogCloser closer;
    FilterRecord& record = session.Host().Record();
    record.inRect = record.outRect = record.maskRect = {1, 2, 3, 4};
    session.Host().Play(ScriptOf(job.settings));
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), 1);
    EXPECT_EQ(session.Host().Counts().advanceCalls, 0);
    EXPECT_EQ(session.Host().Counts().progressCalls, 0);
    EXPECT_FALSE(session.Host().Recorded().has_value());
    EXPECT_EQ(session.Output(), job.output);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(FrameTest, WithoutAdvanceStateStartTellsTheUserAndClearsTheRectangles) {
    HostOffer offer;
    offer.advanceState = false;
    JobSession session(job_, offer);
    ExpectRefusal(session, job_);
}

TEST_F(FrameTest, WithoutProgressProcStartTellsTheUserAndClearsTheRectangles) {
    HostOffer offer;
    offer.progressProc = false;
    JobSession session(job_, offer);
    ExpectRefusal(session, job_);
}

TEST_F(FrameTest, AFailingRequestIsPassedOnAfterTheValuesWereRecorded) {
    constexpr hostapi::OSErr kErrors[] = {-108, -128, -30100, 1, 2, 32767, -32768};
    for (const hostapi::OSErr error : kErrors) {
        HostFaults faults;
        faults.failAdvanceAt = 1;
        faults.advanceError = error;
        JobSession session(job_, {}, faults);
        EXPECT_EQ(session.Start(), error);
        EXPECT_TRUE(session.Host().Recorded().has_value());
        EXPECT_EQ(session.Host().Counts().buffersAsked, 0);
        EXPECT_EQ(session.Host().Counts().progressCalls, 0);
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
    ExpectSameBytes(job_);
}

TEST_F(FrameTest, AWholeRunNeedsOneRequestAndNoContinue) {
    HostSession session(Entry(), DocumentOf(job_));
    session.Play(ScriptOf(job_.settings));
    const mv::host::RunOutcome outcome = session.Run();
    EXPECT_EQ(outcome.status, hostapi::noErr);
    EXPECT_EQ(outcome.selector, hostapi::filterSelectorFinish);
    EXPECT_EQ(outcome.continueCalls, 0);
    EXPECT_TRUE(outcome.stored);
    EXPECT_EQ(session.Counts().advanceCalls, 1);
    EXPECT_EQ(session.Counts().buffersLive, 0);
    EXPECT_TRUE(session.GetComplaints().empty());
}

// Through the host's own buffers and its own store, with its row padding.
TEST_F(FrameTest, TheHostStoresWhatTheSecondComputationGives) {
    RenderJob job = PlainJob(23, 17, 3, true, 16, 0.0);
    Random random(3);
    mv::host::HostImage image(23, 17, 4, 16);
    for (int y = 0; y < 17; ++y) {
        for (int x = 0; x < 23; ++x) {
            for (int plane = 0; plane < 4; ++plane) {
                image.Set(x, y, plane, random.Below(32769));
            }
        }
    }
    std::vector<std::uint8_t> mask(23 * 17);
    for (std::uint8_t& value : mask) {
        value = static_cast<std::uint8_t>(random.Below(256));
    }
    job.input = image.bytes;
    job.output = image.bytes;
    job.mask = mask;
    job.settings.blendMode = 3;
    HostOffer offer;
    offer.inRowPadding = 2;
    offer.outRowPadding = 6;
    offer.maskRowPadding = 3;
    HostSession session(Entry(), mv::host::MakeDocument(image, true, mask), offer);
    session.Play(ScriptOf(job.settings));
    EXPECT_EQ(session.Run().status, hostapi::noErr);
    EXPECT_EQ(Difference(job, session.Result().bytes, ExpectedOutput(job)), "");
    EXPECT_TRUE(session.GetComplaints().empty());
    // Once more as a repeat of the last filter, without the parameters selector.
    session.Play(ScriptOf(job.settings));
    EXPECT_EQ(session.Run(false).status, hostapi::noErr);
    EXPECT_EQ(Difference(job, session.Result().bytes, ExpectedOutput(job)), "");
}

TEST_F(FrameTest, ValuesStayInTheModuleBetweenRuns) {
    job_.settings.strength = 0.83;
    job_.settings.hue = 0.25;
    const std::vector<std::uint8_t> expected = ExpectedOutput(job_);
    EXPECT_EQ(RenderedOutput(job_), expected);
    JobSession session(job_);
    session.Host().Play({});
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(session.Output(), expected);
}

TEST_F(FrameTest, SelectorsOutOfOrderOrRepeatedAreServed) {
    JobSession session(job_);
    HostSession& host = session.Host();
    host.Play(ScriptOf(job_.settings));
    EXPECT_EQ(host.Call(hostapi::filterSelectorFinish), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorContinue), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
    host.Play(ScriptOf(job_.settings));
    EXPECT_EQ(host.Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorPrepare), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorPrepare), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorParameters), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorFinish), hostapi::noErr);
    EXPECT_EQ(host.Call(hostapi::filterSelectorFinish), hostapi::noErr);
    EXPECT_EQ(session.Reproach(), "");
    // The destination is not the source: a second start over the same buffers gives the same.
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
}

TEST_F(FrameTest, ProgressStaysWithinItsTotalAndEndsAtTheBarsStart) {
    JobSession session(job_);
    ASSERT_EQ(session.Start(), hostapi::noErr);
    const auto& calls = session.Host().ProgressCalls();
    ASSERT_GT(calls.size(), 10u);
    for (const auto& [done, total] : calls) {
        EXPECT_GT(total, 0);
        EXPECT_GE(done, 0);
        EXPECT_LE(done, total);
    }
    EXPECT_EQ(calls.back(), std::make_pair(0, 1));
    EXPECT_EQ(session.Host().Counts().abortCalls, session.Host().Counts().progressCalls);
}

TEST_F(FrameTest, WithoutTheHandleSuiteMemoryComesFromTheModuleItself) {
    HostOffer offer;
    offer.handleSuite = false;
    JobSession session(job_, offer);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Host().Counts().buffersAsked, 0);
    EXPECT_EQ(session.Host().Counts().suitesAcquired, session.Host().Counts().suitesReleased);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
}

TEST_F(FrameTest, WithTheHandleSuiteAloneThereIsNoMemory) {
    HostOffer offer;
    offer.bufferSuite = false;
    ExpectNoMemory(offer);
}

TEST_F(FrameTest, WithoutABasicSuiteMemoryComesFromTheModuleItself) {
    HostOffer offer;
    offer.basicSuite = false;
    JobSession session(job_, offer);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Host().Counts().suitesAcquired, 0);
    EXPECT_EQ(session.Host().Counts().buffersAsked, 0);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
}

// The Handle suite's pointer outlives a call when nothing overwrites it, and it is that pointer
// that decides where memory comes from: meant so.
TEST_F(FrameTest, AStaleHandleSuiteWithoutABufferSuiteGivesNoMemory) {
    ExpectSameBytes(job_);
    HostOffer offer;
    offer.basicSuite = false;
    ExpectNoMemory(offer);
}

TEST_F(FrameTest, AStaleHandleSuiteWithABufferSuiteUsesTheHostsMemory) {
    ExpectSameBytes(job_);
    HostOffer offer;
    offer.handleSuite = false;
    JobSession session(job_, offer);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_GT(session.Host().Counts().buffersAsked, 0);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
    EXPECT_EQ(session.Reproach(), "");
}

}  // namespace
}  // namespace endtoend
