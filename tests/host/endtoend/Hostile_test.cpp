// Hosts that break the contract, one way at a time: no crash, no endless loop, no byte outside
// the buffers, and the next well-behaved host gets the right picture.
#include <gtest/gtest.h>

#include <immintrin.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "DialogCloser.h"
#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

using hostapi::FilterRecord;
using hostapi::FourCharacterCode;
using mv::host::HostOffer;
using mv::host::ScriptValues;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

RenderJob HostileJob() {
    Random random(31);
    RenderJob job = RandomPicture(random, 5, 16, 12);
    job.mask.assign(static_cast<std::size_t>(12 * job.maskRowBytes), 200);
    return job;
}

class HostileTest : public testing::Test {
protected:
    // After every test a good host gets what it asked for.
    void TearDown() override { ExpectSameBytes(HostileJob()); }
    RenderJob job_ = HostileJob();
};

// Runs a job on a record that is changed after the host has served the request.
template <class Change>
hostapi::OSErr StartWithDelivery(JobSession& session, Change change) {
    const auto deliver = session.Host().Hooks().afterAdvance;
    session.Host().Hooks().afterAdvance = [deliver, change](FilterRecord& record) {
        deliver(record);
        change(record);
    };
    return session.Start();
}

TEST_F(HostileTest, NullAbortProcMeansNobodyCancels) {
    HostOffer offer;
    offer.abortProc = false;
    JobSession session(job_, offer);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, NullInputAfterASuccessfulRequest) {
    JobSession session(job_);
    StartWithDelivery(session, [](FilterRecord& record) { record.inData = nullptr; });
    EXPECT_EQ(session.Output(), job_.output);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, NullOutputAfterASuccessfulRequest) {
    JobSession session(job_);
    StartWithDelivery(session, [](FilterRecord& record) { record.outData = nullptr; });
    EXPECT_EQ(session.Output(), job_.output);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, NoDataAtAllAfterASuccessfulRequest) {
    JobSession session(job_);
    StartWithDelivery(session, [](FilterRecord& record) {
        record.inData = record.outData = record.maskData = nullptr;
        record.inRowBytes = record.outRowBytes = record.maskRowBytes = 0;
    });
    EXPECT_EQ(session.Output(), job_.output);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, RowsOfDistanceZeroAreReadAgainAndAgain) {
    JobSession session(job_);
    StartWithDelivery(session, [](FilterRecord& record) {
        record.inRowBytes = 0;
        record.maskRowBytes = 0;
    });
    RenderJob flat = job_;
    flat.inputRowBytes = 0;
    flat.maskRowBytes = 0;
    EXPECT_EQ(session.Output(), ExpectedOutput(flat));
}

// Pictures that stand on their head in memory.
TEST_F(HostileTest, RowsFromTheBottomUp) {
    JobSession session(job_);
    StartWithDelivery(session, [this](FilterRecord& record) {
        const int last = job_.height - 1;
        record.inData = static_cast<char*>(record.inData) + last * record.inRowBytes;
        record.outData = static_cast<char*>(record.outData) + last * record.outRowBytes;
        record.maskData = static_cast<char*>(record.maskData) + last * record.maskRowBytes;
        record.inRowBytes = -record.inRowBytes;
        record.outRowBytes = -record.outRowBytes;
        record.maskRowBytes = -record.maskRowBytes;
    });
    RenderJob turned = job_;
    const auto turn = [this](std::vector<std::uint8_t>& bytes, int rowBytes) {
        const auto length = static_cast<std::size_t>(rowBytes);
        for (int y = 0; y < job_.height / 2; ++y) {
            std::swap_ranges(bytes.begin() + y * rowBytes, bytes.begin() + y * rowBytes + rowBytes,
                             bytes.end() - static_cast<std::ptrdiff_t>(length) * (y + 1));
        }
    };
    turn(turned.input, job_.inputRowBytes);
    turn(turned.output, job_.outputRowBytes);
    turn(turned.mask, job_.maskRowBytes);
    std::vector<std::uint8_t> expected = ExpectedOutput(turned);
    turn(expected, job_.outputRowBytes);
    EXPECT_EQ(Difference(job_, session.Output(), expected), "");
}

TEST_F(HostileTest, RowsAndPixelsThatNoSampleTypeIsAlignedTo) {
    Random random(32);
    for (int shape = 6; shape < kShapes; ++shape) {
        RenderJob job = RandomPicture(random, shape, 11, 9);
        const RenderJob aligned = job;
        job.Allocate(1 + random.Below(7), 1 + 2 * random.Below(3), 1, !aligned.mask.empty());
        for (int i = 0; i < 11 * 9; ++i) {
            for (int plane = 0; plane < job.facts.planes; ++plane) {
                job.Set(i % 11, i / 11, plane, aligned.Get(i % 11, i / 11, plane));
            }
        }
        job.settings.mode = 1 + shape % 2;
        ExpectSameBytes(job);
    }
}

TEST_F(HostileTest, SourceAndDestinationMayBeTheSameBuffer) {
    RenderJob job = job_;
    job.inputRowBytes = job.outputRowBytes;
    job.input.resize(job.output.size());
    job.output = job.input;
    JobSession session(job);
    StartWithDelivery(session, [](FilterRecord& record) { record.inData = record.outData; });
    EXPECT_EQ(Difference(job, session.Output(), ExpectedOutput(job)), "");
}

TEST_F(HostileTest, RectanglesThatCannotBe) {
    const hostapi::Rect rects[] = {{0, 0, 0, 0},      {0, 0, -1, -1},        {5, 5, 2, 2},
                                   {0, 10, 12, 3},    {9, 0, 9, 16},         {0, 16, 12, 16},
                                   {0, 0, -32768, 5}, {0, 32767, 12, -32768}};
    for (const hostapi::Rect& rect : rects) {
        JobSession session(job_);
        EXPECT_EQ(
            StartWithDelivery(
                session, [rect](FilterRecord& record) { record.outRect = record.inRect = rect; }),
            hostapi::noErr);
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(HostileTest, SizesThatCannotBe) {
    const hostapi::Point sizes[] = {{0, 0}, {0, 7}, {7, 0}, {-1, 7}, {7, -1}, {-32768, -32768}};
    for (const hostapi::Point& size : sizes) {
        JobSession session(job_);
        session.Host().Record().imageSize = size;
        EXPECT_EQ(session.Start(), hostapi::noErr) << size.v << " " << size.h;
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
}

// A working image of 4 GiB or more is never there: refused before a single sample is touched.
TEST_F(HostileTest, APictureThatNoBlockHolds) {
    static FilterRecord* record = nullptr;
    static GuardedBytes samples(64);
    std::fill_n(samples.Data(), samples.Size(), std::uint8_t{0x77});
    for (const int planes : {2, 3, 4}) {
        JobSession session(job_);
        record = &session.Host().Record();
        record->imageSize = {32767, 32767};
        record->planes = static_cast<std::int16_t>(planes);
        record->inLayerPlanes = static_cast<std::int16_t>(planes - 1);
        record->imageMode = 7;
        record->haveMask = 0;
        record->advanceState = []() -> hostapi::OSErr {
            record->inData = record->outData = samples.Data();
            record->inRowBytes = record->outRowBytes = 4;
            return hostapi::noErr;
        };
        EXPECT_EQ(session.Start(), hostapi::memFullErr) << planes;
        EXPECT_EQ(session.Reproach(), "");
        EXPECT_EQ(session.Host().Counts().progressCalls, 1);
        EXPECT_EQ(std::count(samples.Data(), samples.Data() + 64, 0x77), 64);
    }
}

TEST_F(HostileTest, OnePixel) {
    for (int shape = 0; shape < kShapes; ++shape) {
        Random random(static_cast<std::uint32_t>(shape));
        ExpectSameBytes(RandomPicture(random, shape, 1, 1));
    }
}

// Every field that chooses a shape takes every extreme value: only buffers that are large enough
// for what the record says are promised to it, so the samples stay where they are.
TEST_F(HostileTest, CountsAtTheirExtremes) {
    const std::int16_t extremes[] = {-32768, -1, 0, 1, 2, 3, 4, 5, 32767};
    for (const std::int16_t layer : extremes) {
        for (const std::int16_t transparency : extremes) {
            for (const std::int16_t other : extremes) {
                RenderJob job = job_;
                JobSession session(job);
                session.Host().Record().inLayerPlanes = layer;
                session.Host().Record().inTransparencyMask = transparency;
                session.Host().Record().inNonLayerPlanes = other;
                EXPECT_EQ(session.Start(), hostapi::noErr);
                job.facts.layerPlanes = layer;
                job.facts.transparencyMask = transparency;
                job.facts.nonLayerPlanes = other;
                EXPECT_EQ(Difference(job, session.Output(), ExpectedOutput(job)), "");
            }
        }
    }
}

TEST_F(HostileTest, PlanesBelowWhatTheLayoutReads) {
    for (const std::int16_t planes : {std::int16_t{-32768}, std::int16_t{-1}, std::int16_t{0},
                                      std::int16_t{1}, std::int16_t{2}, std::int16_t{3}}) {
        JobSession session(job_);
        EXPECT_EQ(
            StartWithDelivery(session, [planes](FilterRecord& record) { record.planes = planes; }),
            hostapi::noErr);
        if (planes < 3) {
            EXPECT_EQ(session.Output(), job_.output) << planes;
        }
        EXPECT_EQ(session.Reproach(), "");
    }
}

// Four kinds of impossible value under every key that takes a number.
TEST_F(HostileTest, NumbersThatAreNoNumbersUnderEveryKey) {
    const double values[] = {
        kNaN,  -kNaN,  kInfinity,    -kInfinity,    1e300, -1e300,
        1e308, 1e-320, 2147483648.0, -2147483649.0, 4e9,   9.3e18,
    };
    const ScriptValues defaults = ScriptOf(oracle::Settings{});
    for (const auto& entry : defaults) {
        if (!std::holds_alternative<double>(entry.value)) {
            continue;
        }
        for (const double value : values) {
            for (const int mode : {1, 2}) {
                RenderJob job = job_;
                job.settings = {};
                job.settings.mode = mode;
                job.settings.originX = 0.3;
                JobSession session(job);
                ScriptValues played = ScriptOf(job.settings);
                mv::host::SetValue(played, entry.key, value);
                session.Host().Play(played);
                EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr)
                    << mv::host::KeyText(entry.key) << " " << value;
                EXPECT_EQ(session.Reproach(), "");
            }
        }
    }
}

// A NaN never counts as a change, so it never gets in.
TEST_F(HostileTest, ANaNLeavesEveryValue) {
    const ScriptValues defaults = ScriptOf(oracle::Settings{});
    ScriptValues bad = defaults;
    for (auto& entry : bad) {
        if (std::holds_alternative<double>(entry.value)) {
            entry.value = kNaN;
        }
    }
    JobSession first(job_);
    first.Host().Play(defaults);
    EXPECT_EQ(first.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    JobSession second(job_);
    second.Host().Play(bad);
    EXPECT_EQ(second.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(second.Output(), first.Output());
    EXPECT_EQ(second.Host().Recorded().value().front().value, mv::host::ScriptValue(0.5));
}

// Values that are huge but still lead to one definite result.
TEST_F(HostileTest, HugeCentresGiveTheBytesOfTheSecondComputation) {
    Random random(33);
    const double centres[] = {1e6,  -1e6,  5e7,       -5e7,       1e9,   -1e9,
                              1e18, -1e18, kInfinity, -kInfinity, 1e300, -1e300};
    for (const double x : centres) {
        for (const double y : {0.3, 1e7, -1e9, 1e300, -kInfinity}) {
            for (const int mode : {1, 2}) {
                RenderJob job = RandomPicture(random, random.Below(18), 1 + random.Below(14),
                                              1 + random.Below(14));
                job.settings.mode = mode;
                job.settings.originX = x;
                job.settings.originY = y;
                ExpectSameBytes(job);
                std::swap(job.settings.originX, job.settings.originY);
                ExpectSameBytes(job);
            }
        }
    }
}

TEST_F(HostileTest, HugeBlursGiveTheBytesOfTheSecondComputation) {
    Random random(34);
    // With the last but one only the first steps have finite lengths; with some coordinates are
    // no longer exact. Windows that a line's end cuts do not come last then.
    const double lengths[] = {1e3, 1e9, 1e15, 1e16, 1e17, 1e18, 1e300, 1.7e308, kInfinity};
    const double starts[] = {0.5, -0.5, 0.0, 1e6, -1e6, 1e300, -1e300, kInfinity, -kInfinity};
    for (const double strength : lengths) {
        for (const double start : starts) {
            for (const int mode : {1, 2}) {
                RenderJob job = RandomPicture(random, random.Below(18), 13, 10);
                job.settings.mode = mode;
                job.settings.strength = strength;
                job.settings.zoomStart = start;
                ExpectSameBytes(job);
            }
        }
    }
}

TEST_F(HostileTest, HugeGainsGiveTheBytesOfTheSecondComputationInIntegers) {
    Random random(35);
    for (const double gain : {1e6, 1e30, 1e300, kInfinity}) {
        for (int shape = 0; shape < 12; ++shape) {
            RenderJob job = RandomPicture(random, shape, 9, 8);
            job.settings.intensity = gain;
            ExpectSameBytes(job);
            job.settings.intensity = 1.0;
            job.settings.contrast = gain;
            ExpectSameBytes(job);
            job.settings.contrast = 0.0;
            job.settings.gammaCorrective = gain;
            ExpectSameBytes(job);
            job.settings.holdoutRadius = gain;
            ExpectSameBytes(job);
        }
    }
}

// No host should give them. Each step converts them within the range of the type that it converts
// to, which the sanitizer for such conversions sees; what is written is white at most, and the same
// each time.
TEST_F(HostileTest, SixteenBitSamplesAboveWhiteComeOutAsWhiteAtMost) {
    constexpr int kFirstShape = 6;
    constexpr std::uint16_t kWhite = 32768;
    Random random(38);
    for (int number = 0; number < 6 * 4 * 2 * 3; ++number) {
        RenderJob job = RandomPicture(random, kFirstShape + number % 6, 12, 9);
        ASSERT_EQ(job.facts.depth, 16);
        for (int i = 0; i < 12 * 9; ++i) {
            for (int plane = 0; plane < job.facts.planes; ++plane) {
                const double value = random.OneIn(4) ? 65535.0 : 32768.0 + random.Below(32768);
                job.Set(i % 12, i / 12, plane, value);
            }
        }
        job.settings.selectionShow = 1 + number / 6 % 4;
        job.settings.mode = 1 + number / 24 % 2;
        job.settings.blendMode = 1 + random.Below(23);
        job.settings.strength = random.OneIn(4) ? 0.0 : random.Between(0.0, 1.0);
        job.settings.selectionSoften = random.OneIn(2) ? 0.0 : random.Between(0.0, 3.0);
        job.settings.hue = random.OneIn(2) ? 0.0 : random.Between(-1.0, 1.0);
        job.settings.gammaCorrection = random.OneIn(2);
        std::fill(job.output.begin(), job.output.end(), std::uint8_t{0});
        const std::vector<std::uint8_t> output = RenderedOutput(job);
        ASSERT_EQ(output, RenderedOutput(job)) << Describe(job);
        for (std::size_t at = 0; at + 1 < output.size(); at += 2) {
            std::uint16_t sample = 0;
            std::memcpy(&sample, &output[at], sizeof sample);
            ASSERT_LE(sample, kWhite) << Describe(job);
        }
    }
}

// One sample of a float picture is no number. The gray shape has one channel, so that everything
// it spoils follows; it must be spoilt on its own rays alone.
TEST_F(HostileTest, FloatSamplesThatAreNoNumbersInGray) {
    Random random(36);
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        for (const int shape : {12, 15}) {
            for (const int mode : {1, 2}) {
                RenderJob job = RandomPicture(random, shape, 19, 15);
                for (int i = 0; i < 19 * 15; ++i) {
                    for (int plane = 0; plane < job.facts.planes; ++plane) {
                        job.Set(i % 19, i / 19, plane, random.Unit());
                    }
                }
                job.Set(5, 4, 0, bad);
                job.settings.mode = mode;
                job.settings.originX = 0.7;
                ExpectSameBytes(job);
                // The centre in the middle of a pixel: nothing moves, and nothing is mixed.
                job.settings.originX = 0.5;
                ExpectSameBytes(job);
            }
        }
    }
}

TEST_F(HostileTest, FloatSamplesThatAreNoNumbersInEveryShapeBlendAndView) {
    Random random(37);
    const double bads[] = {kNaN, kInfinity, -kInfinity, 3e38, -3e38, 1e-40};
    for (int round = 0; round < 23 * 12; ++round) {
        RenderJob job = RandomPicture(random, 12 + round % 6, 15, 13);
        for (const double bad : bads) {
            job.Set(random.Below(15), random.Below(13), random.Below(job.facts.planes), bad);
        }
        job.settings.blendMode = 1 + round % 23;
        job.settings.selectionShow = round % 7 == 0 ? 2 + round % 3 : 1;
        job.settings.mode = 1 + round % 2;
        job.settings.hue = round % 3 * 0.2;
        job.settings.saturation = round % 2 * 0.4;
        JobSession session(job);
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Reproach(), "");
    }
}

// What a bad sample may not reach: the result at places whose value does not depend on it at all.
TEST_F(HostileTest, ABadSampleSpoilsItsOwnRaysOnly) {
    Random random(38);
    for (const double bad : {kNaN, kInfinity}) {
        for (const int mode : {1, 2}) {
            RenderJob job = PlainJob(31, 29, 3, false, 32, 0.5);
            for (int i = 0; i < 31 * 29; ++i) {
                for (int plane = 0; plane < 3; ++plane) {
                    job.Set(i % 31, i / 31, plane, random.Unit());
                }
            }
            job.settings.mode = mode;
            // The centre is a pixel's middle, at 15 and 14: no move. The sample at (25, 14) lies
            // to its right; rays to the left, upward and downward never come near it. A ray adds
            // to the pixel that it passes and to the next one.
            const std::vector<std::uint8_t> clean = RenderedOutput(job);
            job.Set(25, 14, 1, bad);
            const std::vector<std::uint8_t> spoilt = RenderedOutput(job);
            for (int y = 0; y < 29; ++y) {
                for (int x = 0; x < 31; ++x) {
                    const bool away = x < 15 || std::abs(y - 14) > x - 14;
                    const std::size_t at = static_cast<std::size_t>((y * 31 + x) * 12);
                    if (away) {
                        EXPECT_EQ(std::memcmp(&clean[at], &spoilt[at], 12), 0) << x << " " << y;
                    }
                }
            }
        }
    }
}

TEST_F(HostileTest, ADescriptorWhoseKeysNeverEnd) {
    JobSession session(job_);
    session.Host().Play(ScriptOf(job_.settings));
    session.Host().ReadProcs().getKeyProc = [](hostapi::PIReadDescriptor, hostapi::OSType* key,
                                               hostapi::OSType* type,
                                               std::int32_t* flags) -> hostapi::Boolean {
        *key = FourCharacterCode("ZZZZ");
        *type = hostapi::typeFloat;
        *flags = 0;
        return 1;
    };
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, GettersThatGiveOutNothingThatWasAsked) {
    JobSession session(job_);
    session.Host().Play(ScriptOf(job_.settings));
    // Success, and nothing stored.
    session.Host().ReadProcs().getFloatProc = [](hostapi::PIReadDescriptor,
                                                 double*) -> hostapi::OSErr { return 0; };
    session.Host().ReadProcs().getIntegerProc = [](hostapi::PIReadDescriptor,
                                                   std::int32_t*) -> hostapi::OSErr { return 0; };
    session.Host().ReadProcs().getBooleanProc = [](hostapi::PIReadDescriptor,
                                                   hostapi::Boolean* value) -> hostapi::OSErr {
        *value = 0xFF;
        return 0;
    };
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(session.Reproach(), "");
}

TEST_F(HostileTest, NullWriteProcedures) {
    using Puts = hostapi::WriteDescriptorProcs;
    const std::function<void(Puts&)> breaks[] = {
        [](Puts& puts) { puts.openWriteDescriptorProc = nullptr; },
        [](Puts& puts) { puts.putFloatProc = nullptr; },
        [](Puts& puts) { puts.putIntegerProc = nullptr; },
        [](Puts& puts) { puts.putBooleanProc = nullptr; },
        [](Puts& puts) { puts.putObjectProc = nullptr; },
    };
    for (const auto& breakIt : breaks) {
        JobSession session(job_);
        breakIt(session.Host().WriteProcs());
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), ExpectedOutput(job_));
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(HostileTest, ABasicSuiteThatLiesAboutSuccess) {
    // Success, and null in the cell: both suites.
    JobSession session(job_);
    session.Host().BasicSuite().AcquireSuite = [](const char*, std::int32_t,
                                                  const void** suite) -> std::int32_t {
        *suite = nullptr;
        return 0;
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Output(), ExpectedOutput(job_));
}

TEST_F(HostileTest, HandleProceduresThatAreNotAllThere) {
    const std::function<void(hostapi::HandleProcs&)> breaks[] = {
        [](hostapi::HandleProcs& procs) { procs.handleProcsVersion = 0; },
        [](hostapi::HandleProcs& procs) { procs.disposeProc = nullptr; },
        [](hostapi::HandleProcs& procs) { procs.newProc = nullptr; },
        [](hostapi::HandleProcs& procs) { procs.getSizeProc = nullptr; },
        [](hostapi::HandleProcs& procs) { procs.setSizeProc = nullptr; },
    };
    for (const auto& breakIt : breaks) {
        HostOffer offer;
        offer.descriptorHandle = mv::host::DescriptorHandle::PlatformAllocated;
        JobSession session(job_, offer);
        breakIt(session.Host().Handles());
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), ExpectedOutput(job_));
    }
}

TEST_F(HostileTest, ARecordOfZerosIsRefusedByStartAndServedByTheRest) {
    const DialogCloser closer;
    FilterRecord record{};
    std::intptr_t data = 0;
    for (const std::int16_t selector :
         {hostapi::filterSelectorParameters, hostapi::filterSelectorPrepare,
          hostapi::filterSelectorContinue, hostapi::filterSelectorFinish}) {
        std::int16_t result = 77;
        Entry()(selector, &record, &data, &result);
        EXPECT_EQ(result, 0) << selector;
    }
    std::int16_t result = 77;
    Entry()(hostapi::filterSelectorStart, &record, &data, &result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(data, 0);
}

// The module renders in the default environment, on every thread, and gives the host its own back.
TEST_F(HostileTest, AnotherRoundingModeStaysTheHostsOwn) {
    const std::vector<std::uint8_t> expected = ExpectedOutput(job_);
    for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        JobSession session(job_);
        std::fesetround(rounding);
        const hostapi::OSErr status = session.Start();
        const int after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(status, hostapi::noErr);
        EXPECT_EQ(after, rounding);
        EXPECT_EQ(session.Output(), expected) << rounding;
    }
}

// Denormals flushed to zero, as some hosts have it.
TEST_F(HostileTest, FlushedDenormalsStayTheHostsOwn) {
    const RenderJob job = [] {
        Random random(39);
        RenderJob made = RandomPicture(random, 14, 12, 10);
        for (int i = 0; i < 120; ++i) {
            for (int plane = 0; plane < 3; ++plane) {
                made.Set(i % 12, i / 12, plane, 1e-39 * (1 + random.Below(50)));
            }
        }
        made.settings.gammaCorrection = false;
        made.settings.blendMode = 5;
        return made;
    }();
    const std::vector<std::uint8_t> expected = ExpectedOutput(job);
    JobSession session(job);
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | 0x8040u);
    const hostapi::OSErr status = session.Start();
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(status, hostapi::noErr);
    EXPECT_EQ(after & 0x8040u, 0x8040u);
    EXPECT_EQ(session.Output(), expected);
}

}  // namespace
}  // namespace endtoend
