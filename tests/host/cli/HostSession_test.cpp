// The host library itself, with small modules made of functions.
#include "HostSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

#include "support/ChildProcess.h"

namespace mv::host::test {
namespace {

using hostapi::FilterRecord;
using hostapi::FourCharacterCode;
using hostapi::OSErr;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Bytes = std::vector<std::uint8_t>;

// The body of the module of the running test.
std::function<OSErr(std::int16_t selector, FilterRecord& record)> moduleBody;

void TestModule(std::int16_t selector, void* block, std::intptr_t*, std::int16_t* result) {
    *result = selector == hostapi::filterSelectorAbout
                  ? hostapi::noErr
                  : moduleBody(selector, *static_cast<FilterRecord*>(block));
}

HostImage Numbered(int width, int height, int planes, int depth) {
    HostImage image(width, height, planes, depth);
    int value = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int plane = 0; plane < planes; ++plane) {
                image.Set(x, y, plane, ++value);
            }
        }
    }
    return image;
}

class HostSessionTest : public ::testing::Test {
protected:
    void TearDown() override { moduleBody = nullptr; }

    // Runs `body` in the start selector; the other selectors do nothing.
    static void OnStart(std::function<OSErr(FilterRecord&)> body) {
        moduleBody = [body = std::move(body)](std::int16_t selector, FilterRecord& record) {
            return selector == hostapi::filterSelectorStart ? body(record) : hostapi::noErr;
        };
    }
    static void RequestAll(FilterRecord& record) {
        record.inRect = record.outRect = {0, 0, record.imageSize.v, record.imageSize.h};
    }
    static Bytes DeliveredRow(const void* data, std::int32_t rowBytes, int y, int count) {
        const auto* const row =
            static_cast<const std::uint8_t*>(data) + static_cast<std::ptrdiff_t>(y) * rowBytes;
        return Bytes(row, row + count);
    }
};

struct Declaration {
    int planes;
    int depth;
    bool alpha;
    bool mask;
    int mode;
    int layer;
    int transparency;
    int nonLayer;
    int filterCase;
};

class DeclarationTest : public HostSessionTest,
                        public ::testing::WithParamInterface<Declaration> {};

TEST_P(DeclarationTest, IsThatOfPublishedHosts) {
    const Declaration expected = GetParam();
    HostSession session(
        TestModule, MakeDocument(HostImage(4, 3, expected.planes, expected.depth), expected.alpha,
                                 expected.mask ? Bytes(12, 255) : Bytes()));
    const FilterRecord& record = session.Record();
    EXPECT_EQ(record.imageMode, expected.mode);
    EXPECT_EQ(record.depth, expected.depth);
    EXPECT_EQ(record.planes, expected.planes);
    EXPECT_EQ(record.inLayerPlanes, expected.layer);
    EXPECT_EQ(record.inTransparencyMask, expected.transparency);
    EXPECT_EQ(record.inNonLayerPlanes, expected.nonLayer);
    EXPECT_EQ(record.outLayerPlanes, expected.layer);
    EXPECT_EQ(record.outTransparencyMask, expected.transparency);
    EXPECT_EQ(record.outNonLayerPlanes, expected.nonLayer);
    EXPECT_EQ(record.filterCase, expected.filterCase);
    EXPECT_EQ(record.haveMask, expected.mask ? 1 : 0);
    EXPECT_EQ(record.imageSize.h, 4);
    EXPECT_EQ(record.imageSize.v, 3);
    EXPECT_EQ(record.wholeSize.h, 4);
    EXPECT_EQ(record.filterRect.right, 4);
    EXPECT_EQ(record.filterRect.bottom, 3);
}

INSTANTIATE_TEST_SUITE_P(Documents, DeclarationTest,
                         ::testing::Values(Declaration{3, 8, false, false, 3, 0, 0, 3, 1},
                                           Declaration{3, 8, false, true, 3, 0, 0, 3, 2},
                                           Declaration{4, 8, true, false, 3, 3, 1, 0, 4},
                                           Declaration{4, 8, true, true, 3, 3, 1, 0, 5},
                                           Declaration{1, 8, false, false, 1, 0, 0, 1, 1},
                                           Declaration{2, 8, true, false, 1, 1, 1, 0, 4},
                                           Declaration{3, 16, false, false, 11, 0, 0, 3, 1},
                                           Declaration{1, 16, false, false, 10, 0, 0, 1, 1},
                                           Declaration{4, 32, true, true, 16, 3, 1, 0, 5},
                                           Declaration{1, 32, false, false, 17, 0, 0, 1, 1}));

TEST_F(HostSessionTest, MultichannelDocumentsHaveTheirModes) {
    EXPECT_EQ(MakeMultichannelDocument(HostImage(1, 1, 5, 8)).imageMode, 7);
    EXPECT_EQ(MakeMultichannelDocument(HostImage(1, 1, 5, 16)).imageMode, 14);
    EXPECT_EQ(MakeMultichannelDocument(HostImage(1, 1, 5, 8)).nonLayerPlanes, 5);
}

TEST_F(HostSessionTest, ARunCallsTheSelectorsInOrder) {
    std::vector<int> selectors;
    moduleBody = [&](std::int16_t selector, FilterRecord& record) {
        selectors.push_back(selector);
        if (selector == hostapi::filterSelectorStart) {
            RequestAll(record);
        } else if (selector == hostapi::filterSelectorContinue && selectors.size() == 5) {
            record.inRect = record.outRect = {};
        }
        return hostapi::noErr;
    };
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 1, 8), false));
    const RunOutcome outcome = session.Run();
    EXPECT_THAT(selectors, ElementsAre(1, 2, 3, 4, 4, 5));
    EXPECT_TRUE(outcome.stored);
    EXPECT_EQ(outcome.continueCalls, 2);
}

TEST_F(HostSessionTest, ARepeatLeavesTheParametersOut) {
    std::vector<int> selectors;
    moduleBody = [&](std::int16_t selector, FilterRecord&) {
        selectors.push_back(selector);
        return hostapi::noErr;
    };
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 1, 8), false));
    session.Run(false);
    EXPECT_THAT(selectors, ElementsAre(2, 3, 5));
}

TEST_F(HostSessionTest, AnErrorFromStartEndsTheRunWithoutFinish) {
    std::vector<int> selectors;
    moduleBody = [&](std::int16_t selector, FilterRecord&) {
        selectors.push_back(selector);
        return selector == hostapi::filterSelectorStart ? OSErr{-108} : OSErr{0};
    };
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 1, 8), false));
    const RunOutcome outcome = session.Run();
    EXPECT_THAT(selectors, ElementsAre(1, 2, 3));
    EXPECT_EQ(outcome.status, -108);
    EXPECT_EQ(outcome.selector, hostapi::filterSelectorStart);
    EXPECT_FALSE(outcome.stored);
}

TEST_F(HostSessionTest, AnErrorFromContinueIsFollowedByFinish) {
    std::vector<int> selectors;
    moduleBody = [&](std::int16_t selector, FilterRecord& record) {
        selectors.push_back(selector);
        RequestAll(record);
        return selector == hostapi::filterSelectorContinue ? OSErr{-50} : OSErr{0};
    };
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 1, 8), false));
    const RunOutcome outcome = session.Run();
    EXPECT_THAT(selectors, ElementsAre(1, 2, 3, 4, 5));
    EXPECT_EQ(outcome.status, -50);
    EXPECT_FALSE(outcome.stored);
}

TEST_F(HostSessionTest, AdvanceDeliversInterleavedRowsWithPadding) {
    Bytes row0;
    Bytes row1;
    std::int32_t rowBytes = 0;
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.advanceState(), 0);
        rowBytes = record.inRowBytes;
        row0 = DeliveredRow(record.inData, rowBytes, 0, 6);
        row1 = DeliveredRow(record.inData, rowBytes, 1, 6);
        EXPECT_EQ(record.outRowBytes, 6);
        EXPECT_EQ(DeliveredRow(record.outData, 6, 1, 6), row1);
        EXPECT_EQ(record.inColumnBytes, 3);
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 3, 8), false), {.inRowPadding = 5});
    EXPECT_TRUE(session.Run().stored);
    EXPECT_EQ(rowBytes, 11);
    EXPECT_THAT(row0, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(row1, ElementsAre(7, 8, 9, 10, 11, 12));
    EXPECT_THAT(session.GetComplaints(), IsEmpty());
}

TEST_F(HostSessionTest, APlaneRangeIsDeliveredAlone) {
    Bytes row;
    OnStart([&](FilterRecord& record) {
        record.inRect = {0, 0, 1, 2};
        record.inLoPlane = record.inHiPlane = 1;
        record.outRect = {};
        EXPECT_EQ(record.advanceState(), 0);
        EXPECT_EQ(record.inRowBytes, 2);
        EXPECT_TRUE(record.outData == nullptr);
        EXPECT_EQ(record.outRowBytes, 0);
        row = DeliveredRow(record.inData, 2, 0, 2);
        record.inRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 3, 8), false));
    session.Run();
    EXPECT_THAT(row, ElementsAre(2, 5));
}

TEST_F(HostSessionTest, APlaneThatTheImageLacksIsRefused) {
    OSErr error = 0;
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        record.inHiPlane = 3;
        error = record.advanceState();
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 3, 8), false));
    session.Call(hostapi::filterSelectorStart);
    EXPECT_EQ(error, hostapi::paramErr);
}

TEST_F(HostSessionTest, AReducedRequestTakesEveryNthPixel) {
    Bytes row0;
    Bytes row1;
    Bytes mask;
    OnStart([&](FilterRecord& record) {
        record.inRect = record.maskRect = {0, 0, 2, 2};
        record.inputRate = record.maskRate = 0x00020000;
        EXPECT_EQ(record.advanceState(), 0);
        row0 = DeliveredRow(record.inData, record.inRowBytes, 0, 2);
        row1 = DeliveredRow(record.inData, record.inRowBytes, 1, 2);
        mask = DeliveredRow(record.maskData, record.maskRowBytes, 1, 2);
        record.inRect = record.maskRect = {};
        return hostapi::noErr;
    });
    Bytes selection(25);
    for (std::size_t i = 0; i < selection.size(); ++i) {
        selection[i] = static_cast<std::uint8_t>(100 + i);
    }
    HostSession session(TestModule, MakeDocument(Numbered(5, 5, 1, 8), false, selection));
    session.Run();
    EXPECT_THAT(row0, ElementsAre(1, 3));
    EXPECT_THAT(row1, ElementsAre(11, 13));
    EXPECT_THAT(mask, ElementsAre(110, 112));
}

// One pixel of overhang on each side, with each kind of padding.
TEST_F(HostSessionTest, OverhangIsPaddedAsTheModuleAsks) {
    Bytes white;
    Bytes edge;
    OSErr strict = 0;
    OSErr unknown = 0;
    OnStart([&](FilterRecord& record) {
        record.outRect = {};
        record.inRect = {-1, -1, 1, 3};
        strict = record.advanceState();
        record.inputPadding = 256;
        unknown = record.advanceState();
        record.inputPadding = 255;
        EXPECT_EQ(record.advanceState(), 0);
        white = DeliveredRow(record.inData, record.inRowBytes, 1, 4);
        EXPECT_THAT(DeliveredRow(record.inData, record.inRowBytes, 0, 4),
                    ElementsAre(255, 255, 255, 255));
        record.inputPadding = -1;
        EXPECT_EQ(record.advanceState(), 0);
        edge = DeliveredRow(record.inData, record.inRowBytes, 0, 4);
        record.inRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(2, 2, 1, 8), false));
    session.Run();
    EXPECT_EQ(strict, hostapi::paramErr);
    EXPECT_EQ(unknown, hostapi::paramErr);
    EXPECT_THAT(white, ElementsAre(255, 1, 2, 255));
    EXPECT_THAT(edge, ElementsAre(1, 1, 2, 2));
}

TEST_F(HostSessionTest, OutputIsStoredWhereItWasDelivered) {
    OnStart([&](FilterRecord& record) {
        record.inRect = {};
        record.outRect = {1, 1, 2, 3};
        record.outLoPlane = record.outHiPlane = 1;
        EXPECT_EQ(record.advanceState(), 0);
        std::memset(record.outData, 77, 2);
        record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(3, 2, 2, 8), true));
    EXPECT_TRUE(session.Run().stored);
    EXPECT_THAT(session.Result().bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 77, 11, 77));
    EXPECT_THAT(session.Source().bytes, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

TEST_F(HostSessionTest, AFreshRunStartsFromTheSource) {
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.advanceState(), 0);
        auto* const out = static_cast<std::uint8_t*>(record.outData);
        out[0] = static_cast<std::uint8_t>(out[0] + 1);
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    session.Run();
    EXPECT_THAT(session.Result().bytes, ElementsAre(2));
}

TEST_F(HostSessionTest, WritingBehindARowIsNoticed) {
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.advanceState(), 0);
        static_cast<std::uint8_t*>(record.outData)[3] = 1;
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(3, 2, 1, 8), false),
                        {.outRowPadding = 2});
    session.Run();
    EXPECT_THAT(session.GetComplaints(),
                ElementsAre("memory outside the pixels of outData was written to"));
}

TEST_F(HostSessionTest, BehindAGuardedBufferNothingCanBeRead) {
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.advanceState(), 0);
        // 16 bytes, the alignment of blocks, end exactly at the guard page.
        const auto* const data = static_cast<const std::uint8_t*>(record.inData);
        EXPECT_EQ(data[15], 16);
        EXPECT_TRUE(IsReadable(data + 15));
        EXPECT_FALSE(IsReadable(data + 16));
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(16, 1, 1, 8), false),
                        {.placement = Placement::GuardPage});
    EXPECT_TRUE(session.Run().stored);
}

// A whole input is the picture itself; output is a copy.
TEST_F(HostSessionTest, CopiesCanBeSpared) {
    const void* input = nullptr;
    OnStart([&](FilterRecord& record) {
        record.inRect = record.outRect = {0, 0, 2, 16};
        record.inHiPlane = record.outHiPlane = 0;
        EXPECT_EQ(record.advanceState(), hostapi::noErr);
        input = record.inData;
        // The record's members are packed, and a reference to one may not be.
        void* const output = record.outData;
        EXPECT_NE(output, input);
        EXPECT_EQ(std::int32_t{record.outRowBytes}, 16);
        static_cast<std::uint8_t*>(output)[17] = 99;
        record.inRect = {0, 1, 2, 16};
        EXPECT_EQ(record.advanceState(), hostapi::noErr);
        EXPECT_EQ(record.inRowBytes, 15);  // a part is a copy
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(16, 2, 1, 8), false),
                        {.freshBytes = FreshBytes::Unset, .sparesCopies = true});
    EXPECT_TRUE(session.Run().stored);
    EXPECT_EQ(input, session.Source().bytes.data());
    EXPECT_EQ(session.Result().Get(1, 1, 0), 99.0);
    EXPECT_EQ(session.Result().Get(2, 1, 0), session.Source().Get(2, 1, 0));
}

const hostapi::PSBufferSuite1* AcquireBuffers(FilterRecord& record) {
    const void* suite = nullptr;
    EXPECT_EQ(record.sSPBasic->AcquireSuite(hostapi::kPSBufferSuite, 1, &suite), 0);
    return static_cast<const hostapi::PSBufferSuite1*>(suite);
}

TEST_F(HostSessionTest, BuffersAreCounted) {
    OnStart([&](FilterRecord& record) {
        const hostapi::PSBufferSuite1* const suite = AcquireBuffers(record);
        std::uint32_t size = 1000;
        hostapi::Ptr first = suite->New(&size, 1000);
        hostapi::Ptr second = suite->New(nullptr, 500);
        EXPECT_EQ(suite->GetSize(first), 1000U);
        std::memset(first, 1, 1000);
        suite->Dispose(&first);
        EXPECT_EQ(first, nullptr);
        suite->Dispose(&first);
        EXPECT_NE(second, nullptr);
        record.sSPBasic->ReleaseSuite(hostapi::kPSBufferSuite, 1);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    const SessionCounts counts = session.Counts();
    EXPECT_EQ(counts.buffersAsked, 2);
    EXPECT_EQ(counts.buffersLive, 1);
    EXPECT_EQ(counts.bufferBytesLive, 500U);
    EXPECT_EQ(counts.bufferBytesPeak, 1500U);
    EXPECT_EQ(counts.suitesAcquired, 1);
    EXPECT_EQ(counts.suitesReleased, 1);
    EXPECT_EQ(counts.suitesHeld, 0);
    EXPECT_THAT(session.GetComplaints(), IsEmpty());
}

TEST_F(HostSessionTest, APlannedFaultHitsTheNthBuffer) {
    std::vector<bool> given;
    OnStart([&](FilterRecord& record) {
        const hostapi::PSBufferSuite1* const suite = AcquireBuffers(record);
        for (int i = 0; i < 4; ++i) {
            given.push_back(suite->New(nullptr, 10) != nullptr);
        }
        return hostapi::noErr;
    });
    HostSession once(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                     {.failBufferAt = 2});
    once.Run();
    HostSession fromThere(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                          {.failBufferAt = 3, .failBuffersAfter = true});
    fromThere.Run();
    HostSession limited(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                        {.bufferBytesLimit = 25});
    limited.Run();
    EXPECT_THAT(given, ElementsAre(true, false, true, true, true, true, false, false, true, true,
                                   false, false));
}

TEST_F(HostSessionTest, MisuseOfBuffersIsNoticed) {
    OnStart([&](FilterRecord& record) {
        const hostapi::PSBufferSuite1* const suite = AcquireBuffers(record);
        char strange = 0;
        hostapi::Ptr pointer = &strange;
        suite->Dispose(&pointer);
        hostapi::Ptr block = suite->New(nullptr, 8);
        block[8] = 1;
        suite->Dispose(&block);
        record.sSPBasic->ReleaseSuite(hostapi::kPSBufferSuite, 1);
        suite->New(nullptr, 8);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    EXPECT_THAT(session.GetComplaints(),
                ElementsAre("a buffer was disposed that the host does not have",
                            "memory around a buffer was written to",
                            "a suite was used after it was released"));
}

TEST_F(HostSessionTest, ARefusedSuiteLeavesTheCellOrClearsIt) {
    int marker = 0;
    const void* suite = nullptr;
    std::int32_t error = 0;
    OnStart([&](FilterRecord& record) {
        suite = &marker;
        error = record.sSPBasic->AcquireSuite(hostapi::kPSHandleSuite, 2, &suite);
        return hostapi::noErr;
    });
    HostSession leaves(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false),
                       {.handleSuite = false});
    leaves.Run();
    EXPECT_EQ(error, hostapi::kSPSuiteNotFoundError);
    EXPECT_EQ(suite, &marker);
    HostSession clears(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false),
                       {.handleSuite = false, .refusedSuiteIsCleared = true});
    clears.Run();
    EXPECT_EQ(suite, nullptr);
}

TEST_F(HostSessionTest, OtherVersionsOfASuiteAreRefused) {
    std::vector<std::int32_t> errors;
    OnStart([&](FilterRecord& record) {
        const void* suite = nullptr;
        errors.push_back(record.sSPBasic->AcquireSuite(hostapi::kPSBufferSuite, 2, &suite));
        errors.push_back(record.sSPBasic->AcquireSuite(hostapi::kPSHandleSuite, 1, &suite));
        errors.push_back(record.sSPBasic->AcquireSuite(nullptr, 1, &suite));
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    EXPECT_THAT(errors, ElementsAre(0x53214664, 0x53214664, 0x5061726D));
}

TEST_F(HostSessionTest, HandlesKeepTheirContentsThroughAResize) {
    OnStart([&](FilterRecord& record) {
        const hostapi::HandleProcs& procs = *record.handleProcs;
        const hostapi::Handle handle = procs.newProc(3);
        std::memcpy(*handle, "abc", 3);
        EXPECT_EQ(procs.getSizeProc(handle), 3);
        EXPECT_EQ(procs.setSizeProc(handle, 5), 0);
        EXPECT_EQ(std::string(*handle, 3), "abc");
        EXPECT_EQ(procs.lockProc(handle, 0), *handle);
        procs.unlockProc(handle);
        procs.disposeProc(handle);
        procs.disposeProc(nullptr);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    EXPECT_EQ(session.Counts().handlesMade, 1);
    EXPECT_EQ(session.Counts().handlesLive, 0);
    EXPECT_THAT(session.GetComplaints(), IsEmpty());
}

TEST_F(HostSessionTest, AStrangeHandleIsNoticed) {
    OnStart([&](FilterRecord& record) {
        char* data = nullptr;
        record.handleProcs->disposeProc(&data);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    EXPECT_THAT(session.GetComplaints(),
                ElementsAre("a handle was disposed that the host does not have"));
}

constexpr hostapi::OSType kReal = FourCharacterCode("REAL");
constexpr hostapi::OSType kWhole = FourCharacterCode("WHOL");
constexpr hostapi::OSType kFlag = FourCharacterCode("FLAG");

TEST_F(HostSessionTest, ValuesComeInOrderWithTheirTypes) {
    std::vector<hostapi::OSType> keys;
    double real = 0.0;
    std::int32_t whole = 0;
    hostapi::Boolean flag = 0;
    hostapi::OSType wanted[] = {kWhole, FourCharacterCode("MISS"), kReal, 0};
    OnStart([&](FilterRecord& record) {
        hostapi::PIDescriptorParameters& block = *record.descriptorParameters;
        hostapi::ReadDescriptorProcs& procs = *block.readDescriptorProcs;
        void* const token = procs.openReadDescriptorProc(block.descriptor, wanted);
        hostapi::OSType key = 0;
        hostapi::OSType type = 0;
        std::int32_t flags = 1;
        while (procs.getKeyProc(token, &key, &type, &flags) != 0) {
            keys.push_back(key);
            if (key == kReal) {
                EXPECT_EQ(type, hostapi::typeFloat);
                EXPECT_EQ(procs.getIntegerProc(token, &whole), hostapi::paramErr);
                EXPECT_EQ(procs.getFloatProc(token, &real), 0);
            } else if (key == kWhole) {
                EXPECT_EQ(type, hostapi::typeInteger);
                EXPECT_EQ(procs.getPinnedIntegerProc(token, 0, 5, &whole),
                          hostapi::coercedParamErr);
            } else {
                EXPECT_EQ(type, hostapi::typeBoolean);
                EXPECT_EQ(procs.getBooleanProc(token, &flag), 0);
            }
        }
        EXPECT_EQ(procs.closeReadDescriptorProc(token), hostapi::paramErr);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Play({{kReal, 0.75}, {kFlag, true}, {kWhole, 9}});
    session.Run();
    EXPECT_THAT(keys, ElementsAre(kReal, kFlag, kWhole));
    EXPECT_EQ(real, 0.75);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(whole, 5);
    // What was delivered is struck out; what stays was missing.
    EXPECT_THAT(wanted,
                ElementsAre(hostapi::typeNull, FourCharacterCode("MISS"), hostapi::typeNull, 0U));
    EXPECT_EQ(session.Counts().descriptorTokensOpen, 0);
    EXPECT_EQ(session.Counts().handlesLive, 0);
}

TEST_F(HostSessionTest, AFailingGetterLeavesTheValue) {
    double real = 3.0;
    OSErr error = 0;
    OnStart([&](FilterRecord& record) {
        hostapi::PIDescriptorParameters& block = *record.descriptorParameters;
        hostapi::ReadDescriptorProcs& procs = *block.readDescriptorProcs;
        hostapi::OSType keys[] = {kReal, 0};
        void* const token = procs.openReadDescriptorProc(block.descriptor, keys);
        hostapi::OSType key = 0;
        hostapi::OSType type = 0;
        std::int32_t flags = 0;
        procs.getKeyProc(token, &key, &type, &flags);
        error = procs.getFloatProc(token, &real);
        procs.closeReadDescriptorProc(token);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                        {.failingGets = {kReal}});
    session.Play({{kReal, 0.5}});
    session.Run();
    EXPECT_EQ(error, hostapi::errMissingParameter);
    EXPECT_EQ(real, 3.0);
}

TEST_F(HostSessionTest, WhatIsWrittenIsRecorded) {
    OnStart([&](FilterRecord& record) {
        hostapi::PIDescriptorParameters& block = *record.descriptorParameters;
        hostapi::WriteDescriptorProcs& procs = *block.writeDescriptorProcs;
        void* const token = procs.openWriteDescriptorProc();
        const double real = 0.25;
        EXPECT_EQ(procs.putFloatProc(token, kReal, &real), 0);
        EXPECT_EQ(procs.putBooleanProc(token, 0, 1), 0);
        EXPECT_EQ(procs.putIntegerProc(token, 0, 4), 0);
        EXPECT_EQ(procs.closeWriteDescriptorProc(token, &block.descriptor), 0);
        EXPECT_NE(block.descriptor, nullptr);
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    ASSERT_TRUE(session.Recorded().has_value());
    ASSERT_EQ(session.Recorded()->size(), 2U);
    EXPECT_EQ(*FindValue(*session.Recorded(), kReal), ScriptValue(0.25));
    EXPECT_EQ(*FindValue(*session.Recorded(), 0), ScriptValue(4));
    EXPECT_EQ(session.AllPuts().size(), 3U);
    EXPECT_EQ(session.Descriptor().descriptor, nullptr);
    EXPECT_EQ(session.Counts().handlesLive, 0);
}

TEST_F(HostSessionTest, AbortIsAnsweredFromThePlannedProgressCallOn) {
    std::vector<int> answers;
    OnStart([&](FilterRecord& record) {
        for (int i = 1; i <= 4; ++i) {
            record.progressProc(i, 4);
            answers.push_back(record.abortProc());
        }
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                        {.abortAtProgress = 3});
    session.Run();
    EXPECT_THAT(answers, ElementsAre(0, 0, 1, 1));
    EXPECT_EQ(session.Counts().progressCalls, 4);
    EXPECT_EQ(session.ProgressCalls()[1], (std::pair<std::int32_t, std::int32_t>(2, 4)));
}

TEST_F(HostSessionTest, TheNthAdvanceFails) {
    std::vector<int> errors;
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        errors = {record.advanceState(), record.advanceState(), record.advanceState()};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false), {},
                        {.failAdvanceAt = 2, .advanceError = -36});
    session.Call(hostapi::filterSelectorStart);
    EXPECT_THAT(errors, ElementsAre(0, -36, 0));
}

TEST_F(HostSessionTest, AHostThatKeepsDeliveriesDoesNotRefillThem) {
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.advanceState(), 0);
        void* const before = record.inData;
        static_cast<std::uint8_t*>(before)[0] = 99;
        EXPECT_EQ(record.advanceState(), 0);
        EXPECT_TRUE(record.inData == before);
        EXPECT_EQ(static_cast<std::uint8_t*>(record.inData)[0], 99);
        record.inRect.right = 1;
        EXPECT_EQ(record.advanceState(), 0);
        EXPECT_EQ(static_cast<std::uint8_t*>(record.inData)[0], 1);
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(2, 1, 1, 8), false),
                        {.refillsAlways = false});
    EXPECT_TRUE(session.Run().stored);
}

// The second thread is at the door while the first one sits in the progress hook.
TEST_F(HostSessionTest, CallsOnTwoThreadsAtOnceAreNoticed) {
    std::atomic<bool> inHook{false};
    std::atomic<bool> atDoor{false};
    OnStart([&](FilterRecord& record) {
        std::thread other([&] {
            while (!inHook) {
                std::this_thread::yield();
            }
            atDoor = true;
            record.abortProc();
        });
        record.progressProc(1, 2);
        other.join();
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Hooks().progress = [&](std::int32_t, std::int32_t) {
        inHook = true;
        while (!atDoor) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    };
    session.Run();
    EXPECT_EQ(session.Counts().abortCalls, 1);
    EXPECT_THAT(session.GetComplaints(),
                ElementsAre("host procedures were called on two threads at once"));
}

TEST_F(HostSessionTest, AProcedureOutsideOfACallIsCountedAsStray) {
    OnStart([](FilterRecord&) { return hostapi::noErr; });
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Run();
    const int before = HostSession::StrayCalls();
    EXPECT_EQ(session.Record().advanceState(), hostapi::memFullErr);
    EXPECT_EQ(session.Record().abortProc(), 0);
    EXPECT_EQ(HostSession::StrayCalls(), before + 2);
}

TEST_F(HostSessionTest, AResultThatIsNotStoredIsNoticed) {
    HostSession session([](std::int16_t, void*, std::intptr_t*, std::int16_t*) {},
                        MakeDocument(Numbered(1, 1, 1, 8), false));
    session.Call(hostapi::filterSelectorPrepare);
    EXPECT_THAT(session.GetComplaints(), ElementsAre("the result of a selector was not stored"));
}

TEST_F(HostSessionTest, AboutGetsItsOwnRecord) {
    static hostapi::AboutRecord* seen = nullptr;
    HostSession session(
        [](std::int16_t selector, void* block, std::intptr_t*, std::int16_t* result) {
            EXPECT_EQ(selector, 0);
            seen = static_cast<hostapi::AboutRecord*>(block);
            *result = 0;
        },
        MakeDocument(Numbered(1, 1, 1, 8), false));
    EXPECT_EQ(session.CallAbout(), 0);
    EXPECT_EQ(seen, &session.About());
    EXPECT_EQ(seen->sSPBasic, &session.BasicSuite());
}

TEST_F(HostSessionTest, AutoMaskRestrictsTheResultToTheSelection) {
    OnStart([&](FilterRecord& record) {
        RequestAll(record);
        EXPECT_EQ(record.autoMask, 1);
        EXPECT_EQ(record.advanceState(), 0);
        std::memset(record.outData, 200, 3);
        record.inRect = record.outRect = {};
        return hostapi::noErr;
    });
    HostSession session(TestModule, MakeDocument(Numbered(3, 1, 1, 8), false, {0, 51, 255}));
    session.Run();
    // 2 + (200 - 2) * 51 / 255 = 41.6.
    EXPECT_THAT(session.Result().bytes, ElementsAre(1, 42, 200));
}

TEST_F(HostSessionTest, WhatIsTakenAwayIsNotThere) {
    HostSession session(TestModule, MakeDocument(Numbered(1, 1, 1, 8), false),
                        {.advanceState = false,
                         .progressProc = false,
                         .abortProc = false,
                         .colorServices = false,
                         .platformData = false,
                         .basicSuite = false,
                         .handleProcs = false,
                         .descriptorParameters = false});
    // Compared here and not by the macro, which would bind references to packed members.
    const FilterRecord& record = session.Record();
    EXPECT_TRUE(record.advanceState == nullptr);
    EXPECT_TRUE(record.progressProc == nullptr);
    EXPECT_TRUE(record.abortProc == nullptr);
    EXPECT_TRUE(record.colorServices == nullptr);
    EXPECT_TRUE(record.platformData == nullptr);
    EXPECT_TRUE(record.sSPBasic == nullptr);
    EXPECT_TRUE(record.handleProcs == nullptr);
    EXPECT_TRUE(record.descriptorParameters == nullptr);
    EXPECT_TRUE(record.displayPixels == nullptr);
}

}  // namespace
}  // namespace mv::host::test
