// The host's memory fails at every single request, the user cancels at every single question:
// the right status, nothing left behind, and the next render is right.
#include <gtest/gtest.h>

#include <string>

#include "RandomJobs.h"
#include "RenderJob.h"
#include "TestLength.h"

namespace endtoend {
namespace {

using mv::host::HostFaults;

RenderJob FaultJob(int shape, int mode, bool masked) {
    Random random(static_cast<std::uint32_t>(shape * 2 + mode));
    RenderJob job;
    do {
        job = RandomPicture(random, shape, 14, 11);
    } while (job.mask.empty() == masked);
    job.settings.mode = mode;
    job.settings.originX = 0.3;
    job.settings.originY = 0.55;
    return job;
}

int BuffersOf(const RenderJob& job) {
    JobSession session(job);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Host().Counts().buffersLive, 0);
    return session.Host().Counts().buffersAsked;
}

// A render either has no memory and has written nothing, or it does without the block and is right.
void FailEveryBuffer(const RenderJob& job) {
    const std::vector<std::uint8_t> expected = ExpectedOutput(job);
    const int asked = BuffersOf(job);
    ASSERT_GT(asked, 1);
    int refused = 0;
    for (const bool allLater : {false, true}) {
        for (int n = 1; n <= asked; ++n) {
            HostFaults faults;
            faults.failBufferAt = n;
            faults.failBuffersAfter = allLater;
            JobSession session(job, {}, faults);
            const hostapi::OSErr status = session.Start();
            refused += status == hostapi::memFullErr ? 1 : 0;
            EXPECT_TRUE(status == hostapi::memFullErr || (status == hostapi::noErr && n > 1))
                << status << " at " << n << " of " << asked;
            EXPECT_TRUE(session.Output() == (status == hostapi::noErr ? expected : job.output))
                << status << " at " << n << " of " << asked;
            EXPECT_EQ(session.Reproach(), "") << n;
            ASSERT_EQ(session.Host().Counts().bufferBytesLive, 0u);
        }
        ExpectSameBytes(job);
    }
    // Working image, tables and lines: most blocks a render cannot do without.
    EXPECT_GE(refused, asked);
}

TEST(BufferFault, EveryRequestOfANormalRender) {
    FailEveryBuffer(FaultJob(2, 1, true));
}
TEST(BufferFault, EveryRequestOfAnAbberativeRender) {
    FailEveryBuffer(FaultJob(5, 2, false));
}
TEST(BufferFault, EveryRequestOfAFloatRender) {
    FailEveryBuffer(FaultJob(17, 2, true));
}
TEST(BufferFault, EveryRequestOfAGrayRender) {
    FailEveryBuffer(FaultJob(6, 1, false));
}

TEST(BufferFault, EveryRequestWithoutABlur) {
    RenderJob job = FaultJob(2, 1, true);
    job.settings.strength = 0.0;
    FailEveryBuffer(job);
}

TEST(BufferFault, EveryRequestOfAView) {
    RenderJob job = FaultJob(8, 1, true);
    job.settings.selectionShow = 3;
    FailEveryBuffer(job);
}

TEST(BufferFault, EveryRequestOfEveryShapeInBothModes) {
    for (int shape = 0; shape < kShapes; ++shape) {
        for (const int mode : {1, 2}) {
            SCOPED_TRACE("shape " + std::to_string(shape) + ", mode " + std::to_string(mode));
            FailEveryBuffer(FaultJob(shape, mode, (shape + mode) % 2 == 0));
        }
    }
}

// Only a start needs blocks; a host that has none is no reason for the others to fail.
TEST(BufferFault, TheOtherSelectorsAskForNothing) {
    const RenderJob job = FaultJob(5, 2, true);
    HostFaults faults;
    faults.failBufferAt = 1;
    faults.failBuffersAfter = true;
    JobSession session(job, {}, faults);
    for (const std::int16_t selector :
         {hostapi::filterSelectorParameters, hostapi::filterSelectorPrepare,
          hostapi::filterSelectorContinue, hostapi::filterSelectorFinish}) {
        EXPECT_EQ(session.Host().Call(selector), hostapi::noErr) << selector;
    }
    EXPECT_EQ(session.Host().Counts().buffersAsked, 0);
    EXPECT_EQ(session.Reproach(), "");
}

TEST(BufferFault, AHostWithoutEnoughMemoryForThePicture) {
    const RenderJob job = FaultJob(2, 1, false);
    for (const std::uint64_t limit : {0ull, 1ull, 1000ull, 140000ull}) {
        HostFaults faults;
        faults.bufferBytesLimit = limit;
        JobSession session(job, {}, faults);
        EXPECT_EQ(session.Start(), hostapi::memFullErr) << limit;
        EXPECT_EQ(session.Output(), job.output);
        EXPECT_EQ(session.Reproach(), "");
    }
    ExpectSameBytes(job);
}

// The destination may hold the rows that were finished when the user cancelled, and nothing else.
void ExpectOldOrNewSamples(const RenderJob& job, const std::vector<std::uint8_t>& output,
                           const std::vector<std::uint8_t>& finished) {
    for (std::size_t i = 0; i < output.size(); ++i) {
        ASSERT_TRUE(output[i] == job.output[i] || output[i] == finished[i]) << i << Describe(job);
    }
}

void CancelAtEveryProgressCall(const RenderJob& job) {
    const std::vector<std::uint8_t> expected = ExpectedOutput(job);
    int calls = 0;
    {
        JobSession session(job);
        ASSERT_EQ(session.Start(), hostapi::noErr);
        calls = session.Host().Counts().progressCalls;
    }
    ASSERT_GT(calls, job.height);
    for (int n = 1; n <= calls; ++n) {
        HostFaults faults;
        faults.abortAtProgress = n;
        JobSession session(job, {}, faults);
        const hostapi::OSErr status = session.Start();
        EXPECT_EQ(session.Reproach(), "") << n;
        // The last question follows the render and its answer is not taken.
        EXPECT_EQ(status, n == calls ? hostapi::noErr : hostapi::userCanceledErr)
            << n << " of " << calls;
        if (status == hostapi::noErr) {
            EXPECT_EQ(session.Output(), expected) << n;
        } else {
            ExpectOldOrNewSamples(job, session.Output(), expected);
        }
        if (n % 16 == 0) {
            ExpectSameBytes(job);
        }
    }
    ExpectSameBytes(job);
}

TEST(Cancel, AtEveryProgressCallOfANormalRender) {
    CancelAtEveryProgressCall(FaultJob(2, 1, true));
}
TEST(Cancel, AtEveryProgressCallOfAnAbberativeRender) {
    CancelAtEveryProgressCall(FaultJob(17, 2, false));
}

// Large enough for every stage to report again and again; the long form takes every shape.
TEST(Cancel, AtEveryProgressCallOfSixtyFourByFortyEight) {
    for (int number = 0; number < Times(2, 2 * kShapes); ++number) {
        Random random(static_cast<std::uint32_t>(61 + number));
        RenderJob job = RandomPicture(random, (5 + 7 * (number / 2)) % kShapes, 64, 48);
        job.settings.mode = 1 + number % 2;
        job.settings.originX = 0.4;
        CancelAtEveryProgressCall(job);
    }
}

TEST(Cancel, AtEveryProgressCallOfAView) {
    // Without alpha: a view writes it twice.
    RenderJob job = FaultJob(8, 1, true);
    job.settings.selectionShow = 2;
    CancelAtEveryProgressCall(job);
}

TEST(Cancel, AtEveryProgressCallWithoutABlur) {
    RenderJob job = FaultJob(11, 1, false);
    job.settings.strength = 0.0;
    CancelAtEveryProgressCall(job);
}

// Threads share the work differently from run to run: each answer must hold every time.
TEST(Cancel, AgainAndAgainInTheLastStage) {
    const RenderJob job = FaultJob(2, 1, false);
    JobSession clean(job);
    ASSERT_EQ(clean.Start(), hostapi::noErr);
    const int calls = clean.Host().Counts().progressCalls;
    for (int round = 0; round < 60; ++round) {
        HostFaults faults;
        faults.abortAtProgress = calls - 1 - round % job.height;
        JobSession session(job, {}, faults);
        EXPECT_EQ(session.Start(), hostapi::userCanceledErr) << faults.abortAtProgress;
        EXPECT_EQ(session.Reproach(), "");
    }
}

// A host may forget its user's answer: once said, it holds for this render and for no other.
TEST(Cancel, SaidOnceOnlyAtEveryQuestion) {
    const RenderJob job = FaultJob(2, 1, false);
    JobSession clean(job);
    ASSERT_EQ(clean.Start(), hostapi::noErr);
    const int calls = clean.Host().Counts().progressCalls;
    for (int n = 1; n < calls; ++n) {
        JobSession session(job);
        int asked = 0;
        session.Host().Hooks().abortAsked = [&asked, n] { return ++asked == n; };
        EXPECT_EQ(session.Start(), hostapi::userCanceledErr) << n << " of " << calls;
        EXPECT_EQ(session.Reproach(), "");
    }
    ExpectSameBytes(job);
}

TEST(Cancel, TheUsersAnswerAtTheVeryFirstQuestion) {
    const RenderJob job = FaultJob(8, 2, true);
    HostFaults faults;
    faults.abortAtAsk = 1;
    JobSession session(job, {}, faults);
    EXPECT_EQ(session.Start(), hostapi::userCanceledErr);
    EXPECT_EQ(session.Output(), job.output);
    EXPECT_TRUE(session.Host().Recorded().has_value());
    EXPECT_EQ(session.Reproach(), "");
    ExpectSameBytes(job);
}

// Truth is any value but 0, in the eight bits that are defined.
TEST(Cancel, AnyValueButZeroIsYes) {
    const RenderJob job = FaultJob(2, 1, false);
    JobSession session(job);
    session.Host().Record().abortProc = []() -> hostapi::Boolean { return 0x80; };
    EXPECT_EQ(session.Start(), hostapi::userCanceledErr);
    EXPECT_EQ(session.Reproach(), "");
}

TEST(HandleFault, EveryHandleOfARunMayBeMissing) {
    const RenderJob job = FaultJob(2, 1, false);
    for (int n = 1; n <= 3; ++n) {
        HostFaults faults;
        faults.failHandleAt = n;
        JobSession session(job, {}, faults);
        session.Host().Play(ScriptOf(job.settings));
        EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
        EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
        EXPECT_EQ(session.Reproach(), "") << n;
    }
    ExpectSameBytes(job);
}

}  // namespace
}  // namespace endtoend
