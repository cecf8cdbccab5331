// Hosts whose record says one thing and whose buffers, rectangles, threads or callbacks do another.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#include "DialogCloser.h"
#include "HostMemory.h"
#include "RandomJobs.h"
#include "RenderJob.h"
#include "TestLength.h"

namespace endtoend {
namespace {

using hostapi::FilterRecord;
using mv::host::HostOffer;
using mv::host::HostSession;

RenderJob LieJob(int shape = 5) {
    Random random(51);
    RenderJob job = RandomPicture(random, shape, 16, 12);
    job.mask.clear();
    return job;
}

class LiesTest : public testing::Test {
protected:
    // After every test a good host gets what it asked for.
    void TearDown() override { ExpectSameBytes(LieJob()); }
    RenderJob job_ = LieJob();
};

// Changes the record right after the host has served the request.
void ChangeDelivery(JobSession& session, const std::function<void(FilterRecord&)>& change) {
    const auto deliver = session.Host().Hooks().afterAdvance;
    session.Host().Hooks().afterAdvance = [deliver, change](FilterRecord& record) {
        deliver(record);
        change(record);
    };
}

// Delivers mask rows of so many bytes, so many of them, and nothing behind the last one.
void DeliverMask(JobSession& session, const GuardedBytes& mask, int rowBytes) {
    session.Host().Record().haveMask = 1;
    ChangeDelivery(session, [&mask, rowBytes](FilterRecord& record) {
        record.maskData = mask.Data();
        record.maskRowBytes = rowBytes;
    });
}

TEST_F(LiesTest, AMaskWhoseRowsAreTooShortIsNone) {
    for (const int rowBytes : {0, 1, 8, 15, -15}) {
        const GuardedBytes mask(static_cast<std::size_t>(std::max(std::abs(rowBytes) * 12, 1)));
        std::fill_n(mask.Data(), mask.Size(), std::uint8_t{9});
        JobSession session(job_);
        DeliverMask(session, mask, rowBytes);
        EXPECT_EQ(session.Start(), hostapi::noErr) << rowBytes;
        EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "") << rowBytes;
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(LiesTest, AMaskOfFewerRowsOrColumnsThanAskedForIsNone) {
    const hostapi::Rect smaller[] = {{0, 0, 11, 16}, {0, 0, 6, 16}, {0, 0, 12, 15}, {4, 4, 12, 16}};
    for (const hostapi::Rect& rect : smaller) {
        const int rows = rect.bottom - rect.top;
        const GuardedBytes mask(static_cast<std::size_t>(rows * 16));
        std::fill_n(mask.Data(), mask.Size(), std::uint8_t{9});
        JobSession session(job_);
        DeliverMask(session, mask, 16);
        ChangeDelivery(session, [rect](FilterRecord& record) { record.maskRect = rect; });
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(LiesTest, AMaskLargerThanTheImageIsReadFromItsCorner) {
    RenderJob masked = job_;
    masked.mask.assign(12 * 20, 60);
    masked.maskRowBytes = 20;
    JobSession session(masked);
    ChangeDelivery(session, [](FilterRecord& record) { record.maskRect = {0, 0, 12, 20}; });
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(Difference(masked, session.Output(), ExpectedOutput(masked)), "");
}

// More was said to be there than was delivered: nothing is read, nothing is written.
TEST_F(LiesTest, AnOutputRectangleThatOutgrowsTheImageIsNotServed) {
    const hostapi::Rect rects[] = {
        {0, 0, 13, 16},         {0, 0, 12, 17},   {0, 0, 30000, 30000}, {-1, 0, 12, 16},
        {0, -32768, 12, 32767}, {-5, -5, 20, 20}, {0, 0, 32767, 32767}, {-32768, 0, 32767, 16}};
    for (const hostapi::Rect& rect : rects) {
        JobSession session(job_);
        ChangeDelivery(session, [rect](FilterRecord& record) { record.outRect = rect; });
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(LiesTest, AnInputRectangleThatTheHostMadeSmallerIsNotServed) {
    for (const hostapi::Rect& rect : {hostapi::Rect{0, 0, 6, 16}, hostapi::Rect{0, 0, 12, 8}}) {
        const GuardedBytes half(job_.input.size() / 2);
        JobSession session(job_);
        ChangeDelivery(session, [&half, rect](FilterRecord& record) {
            record.inRect = rect;
            record.inData = half.Data();
        });
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), job_.output);
        EXPECT_EQ(session.Reproach(), "");
    }
}

// Both rectangles moved and smaller: their common size is the image.
TEST_F(LiesTest, RectanglesThatTheHostMovedAreServedByTheirSize) {
    JobSession session(job_);
    ChangeDelivery(session, [](FilterRecord& record) {
        record.inRect = {100, 200, 109, 213};
        record.outRect = {-9, -13, 0, 0};
    });
    EXPECT_EQ(session.Start(), hostapi::noErr);
    RenderJob smaller = job_;
    smaller.width = 13;
    smaller.height = 9;
    EXPECT_EQ(Difference(smaller, session.Output(), ExpectedOutput(smaller)), "");
}

TEST_F(LiesTest, FivePlanesOfWhichFourAreRead) {
    RenderJob job;
    job.width = 16;
    job.height = 12;
    job.facts = job_.facts;
    job.facts.planes = 5;
    job.facts.layerPlanes = 3;
    job.facts.transparencyMask = 1;
    job.facts.imageMode = 3;
    job.facts.depth = 8;
    job.Allocate(3, 1, 0, false);
    Random random(52);
    for (std::uint8_t& byte : job.input) {
        byte = static_cast<std::uint8_t>(random.Below(256));
    }
    ExpectSameBytes(job);
    // Of the fifth plane nothing is written.
    const std::vector<std::uint8_t> output = RenderedOutput(job);
    for (int y = 0; y < job.height; ++y) {
        for (int x = 0; x < job.width; ++x) {
            EXPECT_EQ(output[static_cast<std::size_t>(y * job.outputRowBytes + x * 5 + 4)], 0x5A);
        }
    }
}

// The depth decides on the samples' size, the mode on the colours: a mode of 16 bits with a depth
// of 8 is a picture of bytes.
TEST_F(LiesTest, DepthEightWithAModeOfSixteenBits) {
    for (const int mode : {11, 10, 14, 16}) {
        RenderJob job = LieJob(4);
        job.facts.imageMode = mode;
        ExpectSameBytes(job);
    }
    RenderJob deep = LieJob(10);
    deep.facts.imageMode = 3;
    ExpectSameBytes(deep);
}

TEST_F(LiesTest, APlayInfoThatNobodyDefined) {
    for (const std::int16_t playInfo : {std::int16_t{0}, std::int16_t{2}, std::int16_t{3},
                                        std::int16_t{99}, std::int16_t{-1}, std::int16_t{-32768}}) {
        HostOffer offer;
        offer.playInfo = playInfo;
        JobSession session(job_, offer);
        EXPECT_EQ(session.Start(), hostapi::noErr) << playInfo;
        EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "") << playInfo;
        EXPECT_EQ(session.Reproach(), "");
    }
}

// The longest sides that hosts have. A blur walks 60,000 rays of up to 30,000 steps, which is left
// to the long form.
TEST_F(LiesTest, SidesOfThirtyThousandPixels) {
    for (const bool isWide : {true, false}) {
        for (int mode = 0; mode < Times(1, 3); ++mode) {
            Random random(53);
            RenderJob job = RandomPicture(random, 1, isWide ? 30000 : 2, isWide ? 2 : 30000);
            job.settings = {};
            job.settings.mode = std::max(mode, 1);
            job.settings.strength = mode == 0 ? 0.0 : 0.01;
            job.settings.intensity = 0.7;
            JobSession session(job);
            EXPECT_EQ(session.Start(), hostapi::noErr);
            EXPECT_EQ(session.Reproach(), "");
            EXPECT_NE(session.Output(), job.output);
        }
    }
}

// A picture of 30000 by 30000 pixels and a host that has no memory for it: told so at once.
TEST_F(LiesTest, ThirtyThousandSquaredWithoutTheMemory) {
    static FilterRecord* record = nullptr;
    static GuardedBytes samples(64);
    std::fill_n(samples.Data(), samples.Size(), std::uint8_t{0x77});
    mv::host::HostFaults faults;
    faults.bufferBytesLimit = std::uint64_t{64} << 20;
    JobSession session(job_, {}, faults);
    record = &session.Host().Record();
    record->imageSize = {30000, 30000};
    record->planes = 1;
    record->inLayerPlanes = 1;
    record->inTransparencyMask = 0;
    record->imageMode = 1;
    record->depth = 8;
    record->haveMask = 0;
    record->advanceState = []() -> hostapi::OSErr {
        record->inData = record->outData = samples.Data();
        record->inRowBytes = record->outRowBytes = 30000;
        return hostapi::noErr;
    };
    EXPECT_EQ(session.Start(), hostapi::memFullErr);
    EXPECT_EQ(session.Reproach(), "");
    EXPECT_EQ(std::count(samples.Data(), samples.Data() + 64, 0x77), 64);
}

// A call inside a call is refused, whichever selector, and the outer one goes on undisturbed.
TEST_F(LiesTest, ReEntryFromProgressProcIsRefused) {
    for (std::int16_t selector = -1; selector <= 6; ++selector) {
        JobSession session(job_);
        HostSession inner(Entry(), DocumentOf(job_));
        int refused = 0;
        session.Host().Hooks().progress = [&](std::int32_t, std::int32_t) {
            std::int16_t result = 77;
            std::intptr_t data = 0;
            Entry()(selector, &inner.Record(), &data, &result);
            refused += result == hostapi::filterBadParameters ? 1 : 0;
        };
        EXPECT_EQ(session.Start(), hostapi::noErr) << selector;
        EXPECT_EQ(refused, session.Host().Counts().progressCalls) << selector;
        EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "") << selector;
        EXPECT_EQ(session.Reproach(), "");
    }
}

TEST_F(LiesTest, ReEntryFromAdvanceStateAndFromTheDescriptorIsRefused) {
    JobSession session(job_);
    static int refused = 0;
    refused = 0;
    const auto enter = [] {
        FilterRecord record{};
        std::int16_t result = 77;
        std::intptr_t data = 0;
        Entry()(hostapi::filterSelectorStart, &record, &data, &result);
        refused += result == hostapi::filterBadParameters ? 1 : 0;
    };
    ChangeDelivery(session, [enter](FilterRecord&) { enter(); });
    session.Host().WriteProcs().putFloatProc = [](hostapi::PIWriteDescriptor, hostapi::OSType,
                                                  const double*) -> hostapi::OSErr {
        FilterRecord record{};
        std::int16_t result = 77;
        std::intptr_t data = 0;
        Entry()(hostapi::filterSelectorPrepare, &record, &data, &result);
        refused += result == hostapi::filterBadParameters ? 1 : 0;
        return hostapi::noErr;
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_GE(refused, 10);
    EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
}

TEST_F(LiesTest, AnotherThreadForEachCall) {
    for (int round = 0; round < 10; ++round) {
        JobSession session(job_);
        session.Host().Play(ScriptOf(job_.settings));
        for (const std::int16_t selector :
             {hostapi::filterSelectorParameters, hostapi::filterSelectorPrepare,
              hostapi::filterSelectorStart, hostapi::filterSelectorContinue,
              hostapi::filterSelectorFinish}) {
            hostapi::OSErr status = 77;
            std::thread([&] { status = session.Host().Call(selector); }).join();
            EXPECT_EQ(status, hostapi::noErr) << selector;
        }
        EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
        EXPECT_EQ(session.Reproach(), "");
    }
}

// Two threads at once: one is served, the other is told so; neither sees half of the other.
TEST_F(LiesTest, TwoThreadsAtOnce) {
    JobSession session(job_);
    hostapi::OSErr second = 77;
    bool started = false;
    session.Host().Hooks().progress = [&](std::int32_t, std::int32_t) {
        if (!started) {
            started = true;
            std::thread([&] {
                FilterRecord record{};
                std::intptr_t data = 0;
                Entry()(hostapi::filterSelectorStart, &record, &data, &second);
            }).join();
        }
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_TRUE(started);
    EXPECT_EQ(second, hostapi::filterBadParameters);
    EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
}

// A page that cannot be written to.
class ReadOnlyCell {
public:
    ReadOnlyCell() : page_(mv::host::ReserveGuardedPages(mv::host::PageSize())) {
#ifdef _WIN32
        DWORD before = 0;
        isReadOnly_ = VirtualProtect(page_, mv::host::PageSize(), PAGE_READONLY, &before) != 0;
#else
        isReadOnly_ = mprotect(page_, mv::host::PageSize(), PROT_READ) == 0;
#endif
    }
    ~ReadOnlyCell() {
        mv::host::FreeGuardedPages(page_, mv::host::PageSize());
    }
    ReadOnlyCell(const ReadOnlyCell&) = delete;
    ReadOnlyCell& operator=(const ReadOnlyCell&) = delete;

    bool IsReadOnly() const {
        return isReadOnly_;
    }
    std::intptr_t* Cell() const {
        return static_cast<std::intptr_t*>(page_);
    }

private:
    void* page_;
    bool isReadOnly_ = false;
};

TEST_F(LiesTest, ADataCellThatCannotBeWrittenOrIsNotThere) {
    const DialogCloser closer;
    const ReadOnlyCell cell;
    ASSERT_TRUE(cell.IsReadOnly());
    HostSession host(Entry(), DocumentOf(job_));
    for (std::intptr_t* const data : {cell.Cell(), static_cast<std::intptr_t*>(nullptr)}) {
        for (const std::int16_t selector :
             {hostapi::filterSelectorParameters, hostapi::filterSelectorPrepare,
              hostapi::filterSelectorContinue, hostapi::filterSelectorFinish}) {
            std::int16_t result = 77;
            Entry()(selector, &host.Record(), data, &result);
            EXPECT_EQ(result, 0) << selector;
        }
        std::int16_t result = 77;
        FilterRecord nothing{};
        Entry()(hostapi::filterSelectorStart, &nothing, data, &result);
        EXPECT_EQ(result, 1);
    }
}

TEST_F(LiesTest, WithoutAWindow) {
    HostOffer offer;
    offer.platformData = false;
    JobSession session(job_, offer);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
}

TEST_F(LiesTest, NoRecordAndNoResultAtAll) {
    const DialogCloser closer;
    for (std::int16_t selector = 0; selector <= 6; ++selector) {
        std::int16_t result = 77;
        Entry()(selector, nullptr, nullptr, &result);
        EXPECT_NE(result, 77) << selector;
        Entry()(selector, nullptr, nullptr, nullptr);
    }
}

// Everything that the module has no business with points nowhere.
TEST_F(LiesTest, UnusedPointersOfTheRecordAreNotFollowed) {
    JobSession session(job_);
    FilterRecord& record = session.Host().Record();
    FilterRecord strange;
    std::memset(&strange, 0xD1, sizeof strange);
    record.parameters = strange.parameters;
    record.hostProc = strange.hostProc;
    record.bufferProcs = strange.bufferProcs;
    record.resourceProcs = strange.resourceProcs;
    record.processEvent = strange.processEvent;
    record.premiereHook = strange.premiereHook;
    record.getPropertyObsolete = strange.getPropertyObsolete;
    record.colorServices = strange.colorServices;
    record.imageServicesProcs = strange.imageServicesProcs;
    record.propertyProcs = strange.propertyProcs;
    record.channelPortProcs = strange.channelPortProcs;
    record.documentInfo = strange.documentInfo;
    record.plugInRef = strange.plugInRef;
    record.iCCprofileData = strange.iCCprofileData;
    record.bigDocumentData = strange.bigDocumentData;
    record.input3DScene = strange.input3DScene;
    record.output3DScene = strange.output3DScene;
    record.iCCWorkingProfileData = strange.iCCWorkingProfileData;
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(Difference(job_, session.Output(), ExpectedOutput(job_)), "");
    EXPECT_EQ(session.Reproach(), "");
}

}  // namespace
}  // namespace endtoend
