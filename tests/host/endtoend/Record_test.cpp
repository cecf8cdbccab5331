// What the module asks of the host, and which of the delivered planes it takes for what.
#include <gtest/gtest.h>

#include <cstring>

#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

using hostapi::FilterRecord;
using hostapi::Rect;

bool SameRect(const Rect& a, const Rect& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The record as it stands when the module calls advanceState, after `change` was made to it.
template <class Change>
FilterRecord RequestOf(const RenderJob& job, Change change) {
    JobSession session(job);
    change(session.Host().Record());
    FilterRecord request{};
    session.Host().Hooks().beforeAdvance = [&request](FilterRecord& record) { request = record; };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    return request;
}

RenderJob MaskedJob() {
    RenderJob job = PlainJob(21, 13, 3, false, 8, 0.5);
    job.mask.assign(21 * 13, 128);
    return job;
}

TEST(RecordRequest, IsTheWholeImageOnceWithAllItsPlanes) {
    RenderJob job = PlainJob(21, 13, 3, true, 8, 0.5);
    const FilterRecord request = RequestOf(job, [](FilterRecord& record) {
        record.filterRect = {3, 4, 5, 6};
        record.inputRate = record.maskRate = 0;
        record.inLoPlane = record.outLoPlane = 2;
        record.wantsAbsolute = 1;
    });
    const Rect whole{0, 0, 13, 21};
    EXPECT_TRUE(SameRect(request.inRect, whole));
    EXPECT_TRUE(SameRect(request.outRect, whole));
    EXPECT_TRUE(SameRect(request.filterRect, whole));
    EXPECT_EQ(request.inLoPlane, 0);
    EXPECT_EQ(request.outLoPlane, 0);
    EXPECT_EQ(request.inHiPlane, 3);
    EXPECT_EQ(request.outHiPlane, 3);
    EXPECT_EQ(request.inputRate, 0x00010000);
    EXPECT_EQ(request.maskRate, 0x00010000);
    EXPECT_EQ(request.inputPadding, 255);
    EXPECT_EQ(request.outputPadding, 255);
    EXPECT_EQ(request.maskPadding, 0);
    EXPECT_EQ(request.wantsAbsolute, 0);
}

TEST(RecordRequest, WithoutAMaskLeavesMaskRectAndAutoMask) {
    const RenderJob job = PlainJob(9, 7, 3, false, 8, 0.5);
    const FilterRecord request = RequestOf(job, [](FilterRecord& record) {
        record.maskRect = {1, 2, 3, 4};
        record.autoMask = 1;
    });
    EXPECT_TRUE(SameRect(request.maskRect, {1, 2, 3, 4}));
    EXPECT_EQ(request.autoMask, 1);
}

TEST(RecordRequest, WithAMaskAsksForItAndMasksByItself) {
    const FilterRecord request =
        RequestOf(MaskedJob(), [](FilterRecord& record) { record.autoMask = 1; });
    EXPECT_TRUE(SameRect(request.maskRect, {0, 0, 13, 21}));
    EXPECT_EQ(request.autoMask, 0);
}

TEST(RecordRequest, WithAFloatingSelectionLeavesAutoMaskToTheHost) {
    const FilterRecord request = RequestOf(MaskedJob(), [](FilterRecord& record) {
        record.autoMask = 1;
        record.isFloating = 1;
    });
    EXPECT_TRUE(SameRect(request.maskRect, {0, 0, 13, 21}));
    EXPECT_EQ(request.autoMask, 1);
}

TEST(RecordRequest, LeavesTheThirtyTwoBitCoordinatesAlone) {
    const RenderJob job = PlainJob(9, 7, 3, false, 8, 0.5);
    hostapi::BigDocumentStruct big{};
    JobSession session(job);
    session.Host().Record().bigDocumentData = &big;
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(big.PluginUsing32BitCoordinates, 0);
}

// The view "selection only" writes white to everything that is a colour or alpha of the chosen
// layout and nothing else, so it shows which planes those are.
struct ShapeCase {
    const char* name;
    oracle::ImageFacts facts;
    std::vector<int> written;  // planes; empty when the shape is not served
};

std::vector<int> WrittenPlanes(const oracle::ImageFacts& facts) {
    RenderJob job;
    job.width = 5;
    job.height = 4;
    job.facts = facts;
    job.Allocate(0, 0, 0, false);
    job.settings.selectionShow = 3;
    JobSession session(job);
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(session.Reproach(), "");
    RenderJob result = job;
    result.input = session.Output();
    const double white = facts.depth == 32 ? 1.0 : facts.depth == 16 ? 32768.0 : 255.0;
    RenderJob untouched = job;
    untouched.input = job.output;
    std::vector<int> planes;
    for (int plane = 0; plane < facts.planes; ++plane) {
        bool allWhite = true;
        bool allKept = true;
        for (int i = 0; i < 20; ++i) {
            const double value = result.Get(i % 5, i / 5, plane);
            allWhite = allWhite && value == white;
            allKept = allKept && value == untouched.Get(i % 5, i / 5, plane);
        }
        EXPECT_TRUE(allWhite || allKept) << plane;
        if (allWhite) {
            planes.push_back(plane);
        }
    }
    return planes;
}

TEST(RecordShape, IsChosenFromModeDepthAndPlanes) {
    // imageMode, depth, planes, layer planes, transparency, other planes
    const ShapeCase cases[] = {
        {"gray with transparency", {1, 8, 2, 1, 1, 0}, {0, 1}},
        {"flat gray", {1, 8, 1, 0, 0, 1}, {0}},
        {"16-bit gray", {10, 16, 1, 1, 0, 0}, {0}},
        {"32-bit gray with transparency", {17, 32, 2, 1, 1, 0}, {0, 1}},
        {"flat RGB", {3, 8, 3, 0, 0, 3}, {0, 1, 2}},
        {"RGB with transparency", {3, 8, 4, 3, 1, 0}, {0, 1, 2, 3}},
        {"16-bit RGB with transparency", {11, 16, 4, 3, 1, 0}, {0, 1, 2, 3}},
        {"32-bit RGB with transparency", {16, 32, 4, 3, 1, 0}, {0, 1, 2, 3}},
        {"RGB whose transparency is not delivered", {3, 8, 3, 3, 1, 0}, {0, 1, 2}},
        {"multichannel of one", {7, 8, 1, 0, 0, 1}, {0}},
        {"multichannel of two", {7, 8, 2, 0, 0, 2}, {0, 1}},
        {"16-bit multichannel of two", {14, 16, 2, 0, 0, 2}, {0, 1}},
        {"multichannel of five", {7, 8, 5, 0, 0, 5}, {0, 1, 2}},
        {"two channels with transparency", {7, 8, 3, 2, 1, 0}, {0, 1, 2}},
        {"RGB with a mask behind", {3, 8, 5, 3, 1, 0}, {0, 1, 2, 3}},
        {"flat RGB with two channels behind", {3, 8, 5, 3, 0, 2}, {0, 1, 2}},
        {"an old host without depth", {3, 0, 3, 3, 0, 0}, {0, 1, 2}},
        {"nothing counted but planes", {3, 8, 3, 0, 0, 0}, {0, 1, 2}},
        {"four planes and no counts", {3, 8, 4, 0, 0, 0}, {0, 1, 2}},
        {"transparency without layer planes", {3, 8, 4, 0, 1, 0}, {0, 1, 2, 3}},
        {"gray cut from three, alpha in its own layout's place", {1, 8, 4, 3, 1, 0}, {0, 1}},
        {"gray cut from two", {1, 8, 2, 2, 0, 0}, {0}},
        {"RGB cut from four, alpha in its own layout's place", {3, 8, 5, 4, 1, 0}, {0, 1, 2, 3}},
        {"a 16-bit mode with 8-bit samples", {11, 8, 3, 3, 0, 0}, {0, 1, 2}},
        {"an 8-bit mode with 32-bit samples", {3, 32, 3, 3, 0, 0}, {0, 1, 2}},
        {"RGB of one layer plane", {3, 8, 3, 1, 0, 0}, {0}},
        {"CMYK", {4, 8, 4, 4, 0, 0}, {}},
        {"Lab", {9, 8, 3, 3, 0, 0}, {}},
        {"bitmap", {0, 8, 1, 1, 0, 0}, {}},
        {"indexed", {2, 8, 1, 1, 0, 0}, {}},
        {"duotone", {8, 8, 1, 1, 0, 0}, {}},
        {"16-bit Lab", {12, 16, 3, 3, 0, 0}, {}},
        {"16-bit duotone", {15, 16, 1, 1, 0, 0}, {}},
        {"an unknown mode", {18, 8, 3, 3, 0, 0}, {}},
        {"a negative mode", {-1, 8, 3, 3, 0, 0}, {}},
        {"one bit", {3, 1, 3, 3, 0, 0}, {}},
        {"24 bits", {3, 24, 3, 3, 0, 0}, {}},
        {"64 bits", {3, 64, 3, 3, 0, 0}, {}},
        {"a negative depth", {3, -8, 3, 3, 0, 0}, {}},
        {"a negative count", {3, 8, 3, -3, 0, 0}, {}},
        {"fewer planes than colours", {3, 8, 2, 3, 0, 0}, {}},
        {"fewer planes than colours, with transparency", {3, 8, 2, 3, 1, 0}, {}},
        {"gray with transparency in one plane", {1, 8, 1, 0, 1, 0}, {}},
        {"no planes", {3, 8, 0, 3, 0, 0}, {}},
        {"no planes and no counts", {3, 8, 0, 0, 0, 0}, {}},
    };
    for (const ShapeCase& shape : cases) {
        EXPECT_EQ(WrittenPlanes(shape.facts), shape.written) << shape.name;
    }
}

TEST(RecordShape, AnUnservedImageIsNotTouched) {
    for (const int mode : {4, 9, 13}) {
        RenderJob job = PlainJob(6, 5, 3, true, 8, 0.25);
        job.facts.imageMode = mode;
        JobSession session(job);
        EXPECT_EQ(session.Start(), hostapi::noErr);
        EXPECT_EQ(session.Output(), job.output);
        EXPECT_EQ(session.Host().Counts().buffersAsked, 0);
        EXPECT_EQ(session.Reproach(), "");
    }
}

// The record's own rectangle decides, as it stands after the host has served the request.
TEST(RecordShape, ARectangleThatTheHostMadeSmallerIsTheImage) {
    Random random(8);
    RenderJob job = RandomPicture(random, 2, 20, 16);
    JobSession session(job);
    const auto deliver = session.Host().Hooks().afterAdvance;
    session.Host().Hooks().afterAdvance = [&](FilterRecord& record) {
        deliver(record);
        record.outRect.right = 13;
        record.outRect.bottom = 9;
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    RenderJob smaller = job;
    smaller.width = 13;
    smaller.height = 9;
    EXPECT_EQ(Difference(smaller, session.Output(), ExpectedOutput(smaller)), "");
}

TEST(RecordShape, AMaskThatIsPromisedButNotDeliveredIsNone) {
    RenderJob job = MaskedJob();
    JobSession session(job);
    const auto deliver = session.Host().Hooks().afterAdvance;
    session.Host().Hooks().afterAdvance = [&](FilterRecord& record) {
        deliver(record);
        record.maskData = nullptr;
    };
    EXPECT_EQ(session.Start(), hostapi::noErr);
    RenderJob unmasked = job;
    unmasked.mask.clear();
    EXPECT_EQ(Difference(job, session.Output(), ExpectedOutput(unmasked)), "");
}

TEST(RecordShape, ADeliveredMaskCountsWhateverTheHostPromised) {
    RenderJob job = MaskedJob();
    JobSession session(job);
    session.Host().Record().haveMask = 0;
    EXPECT_EQ(session.Start(), hostapi::noErr);
    EXPECT_EQ(Difference(job, session.Output(), ExpectedOutput(job)), "");
}

}  // namespace
}  // namespace endtoend
