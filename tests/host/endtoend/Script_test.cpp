// Values that travel through the host's script descriptor, both ways.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "DialogCloser.h"
#include "RandomJobs.h"
#include "RenderJob.h"

namespace endtoend {
namespace {

using hostapi::FourCharacterCode;
using hostapi::OSType;
using mv::host::HostFaults;
using mv::host::HostOffer;
using mv::host::ScriptValue;
using mv::host::ScriptValues;

const ScriptValues kDefaults = ScriptOf(oracle::Settings{});

class ScriptTest : public testing::Test {
protected:
    // The values stay in the module from test to test: begin each at the defaults.
    void SetUp() override { RunWith(kDefaults); }

    ScriptValues RunWith(const ScriptValues& values, HostOffer offer = {}, HostFaults faults = {}) {
        JobSession session(job_, offer, std::move(faults));
        session.Host().Play(values);
        EXPECT_EQ(session.Host().Call(hostapi::filterSelectorPrepare), hostapi::noErr);
        EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
        EXPECT_EQ(session.Reproach(), "");
        return session.Host().Recorded().value_or(ScriptValues{});
    }
    double FloatOf(const ScriptValues& values, const char (&key)[5]) {
        const ScriptValue* value = FindValue(values, FourCharacterCode(key));
        return value != nullptr && std::holds_alternative<double>(*value)
                   ? std::get<double>(*value)
                   : std::numeric_limits<double>::quiet_NaN();
    }
    int IntegerOf(const ScriptValues& values, const char (&key)[5]) {
        const ScriptValue* value = FindValue(values, FourCharacterCode(key));
        return value != nullptr && std::holds_alternative<std::int32_t>(*value)
                   ? std::get<std::int32_t>(*value)
                   : -1;
    }

    RenderJob job_ = PlainJob(6, 5, 3, false, 8, 0.5);
};

TEST_F(ScriptTest, EveryValueComesBackUnderItsKeyInTheSetsOrder) {
    ScriptValues values = {{FourCharacterCode("ORIX"), 0.125},
                           {FourCharacterCode("ORIY"), 0.875},
                           {FourCharacterCode("INTE"), 1.5},
                           {FourCharacterCode("STRE"), 0.75},
                           {FourCharacterCode("ZOST"), -0.25},
                           {FourCharacterCode("HORA"), 0.3},
                           {FourCharacterCode("MODE"), std::int32_t{2}},
                           {FourCharacterCode("INGR"), true},
                           {FourCharacterCode("GAMA"), false},
                           {FourCharacterCode("CONT"), 0.4},
                           {FourCharacterCode("GAMC"), 2.2},
                           {FourCharacterCode("HSLH"), 0.1},
                           {FourCharacterCode("HSLS"), -0.2},
                           {FourCharacterCode("HSLL"), 0.3},
                           {FourCharacterCode("SELL"), 10.0},
                           {FourCharacterCode("SELH"), 200.0},
                           {FourCharacterCode("SELS"), 1.25},
                           {FourCharacterCode("SELC"), 0.5},
                           {FourCharacterCode("USES"), true},
                           {FourCharacterCode("BLND"), std::int32_t{17}},
                           {FourCharacterCode("SHOW"), std::int32_t{4}}};
    const ScriptValues recorded = RunWith(values);
    // The two parameters without a key write under key 0 behind the others: meant so.
    ASSERT_EQ(recorded.size(), values.size() + 1);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(recorded[i].key, values[i].key) << i;
        EXPECT_EQ(recorded[i].value, values[i].value) << i;
    }
    EXPECT_EQ(recorded.back().key, 0u);
}

TEST_F(ScriptTest, RandomizeAndItsButtonAreWrittenUnderKeyZero) {
    JobSession session(job_);
    session.Host().Play({});
    ASSERT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    const ScriptValues& puts = session.Host().AllPuts();
    ASSERT_EQ(puts.size(), 23u);
    EXPECT_EQ(puts[21].key, 0u);
    EXPECT_EQ(puts[21].value, ScriptValue(0.05));
    EXPECT_EQ(puts[22].key, 0u);
    EXPECT_EQ(puts[22].value, ScriptValue(false));
}

TEST_F(ScriptTest, RecordedValuesComeAsANewDescriptorWithTheDialogOptional) {
    JobSession session(job_);
    session.Host().Play(kDefaults);
    session.Host().Descriptor().recordInfo = 2;
    ASSERT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_NE(session.Host().Descriptor().descriptor, nullptr);
    EXPECT_EQ(session.Host().Descriptor().recordInfo, 0);
    // The given one was disposed.
    EXPECT_EQ(session.Host().Counts().handlesMade, 2);
    EXPECT_EQ(session.Host().Counts().handlesLive, 1);
}

TEST_F(ScriptTest, OneKeyChangesOneValue) {
    const ScriptValues recorded = RunWith({{FourCharacterCode("ORIX"), 0.2}});
    EXPECT_EQ(FloatOf(recorded, "ORIX"), 0.2);
    EXPECT_EQ(FloatOf(recorded, "ORIY"), 0.5);
    EXPECT_EQ(FloatOf(RunWith({{FourCharacterCode("ORIY"), 0.9}}), "ORIX"), 0.2);
}

TEST_F(ScriptTest, AnUnknownKeyIsSteppedOver) {
    const ScriptValues recorded = RunWith({{FourCharacterCode("XXXX"), 9.0},
                                           {0, 7.0},
                                           {FourCharacterCode("orix"), 0.9},
                                           {FourCharacterCode("STRE"), 0.6}});
    EXPECT_EQ(FloatOf(recorded, "STRE"), 0.6);
    EXPECT_EQ(FloatOf(recorded, "ORIX"), 0.5);
    // Key 0 is nobody's, although two parameters write under it.
    EXPECT_EQ(recorded.back().key, 0u);
}

TEST_F(ScriptTest, AnEntryThatTheListDoesNotHaveIsRefused) {
    RunWith({{FourCharacterCode("MODE"), std::int32_t{2}}});
    for (const std::int32_t entry : {3, 0, -1, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(IntegerOf(RunWith({{FourCharacterCode("MODE"), entry}}), "MODE"), 2) << entry;
    }
    for (const std::int32_t entry : {24, 0, -5}) {
        EXPECT_EQ(IntegerOf(RunWith({{FourCharacterCode("BLND"), entry}}), "BLND"), 1) << entry;
    }
    EXPECT_EQ(IntegerOf(RunWith({{FourCharacterCode("BLND"), std::int32_t{23}}}), "BLND"), 23);
    EXPECT_EQ(IntegerOf(RunWith({{FourCharacterCode("SHOW"), std::int32_t{5}}}), "SHOW"), 1);
}

// The bounds are enforced behind the write, so the script gets its own number back once.
TEST_F(ScriptTest, HardBoundsAreEnforcedAfterTheValueWasRecorded) {
    struct Bound {
        OSType key;
        double given;
        double kept;
    };
    const Bound bounds[] = {
        {FourCharacterCode("INTE"), -1.0, 0.0},  {FourCharacterCode("STRE"), -0.1, 0.0},
        {FourCharacterCode("HORA"), -2.0, 0.0},  {FourCharacterCode("CONT"), -0.5, 0.0},
        {FourCharacterCode("GAMC"), -3.0, 0.0},  {FourCharacterCode("HSLH"), 2.0, 1.0},
        {FourCharacterCode("HSLS"), -1.5, -1.0}, {FourCharacterCode("HSLL"), 9.0, 1.0},
        {FourCharacterCode("SELL"), -1.0, 0.0},  {FourCharacterCode("SELH"), 300.0, 255.0},
        {FourCharacterCode("SELS"), 3.5, 3.0},   {FourCharacterCode("SELC"), -1.25, -1.0}};
    for (const Bound& bound : bounds) {
        const ScriptValues first = RunWith({{bound.key, bound.given}});
        EXPECT_EQ(*FindValue(first, bound.key), ScriptValue(bound.given));
        const ScriptValues second = RunWith({});
        EXPECT_EQ(*FindValue(second, bound.key), ScriptValue(bound.kept));
    }
}

TEST_F(ScriptTest, SoftBoundsAreNotEnforced) {
    const ScriptValues beyond = {{FourCharacterCode("INTE"), 7.5}, {FourCharacterCode("STRE"), 1.5},
                                 {FourCharacterCode("ZOST"), 0.7}, {FourCharacterCode("HORA"), 3.0},
                                 {FourCharacterCode("CONT"), 4.0}, {FourCharacterCode("GAMC"), 5.0},
                                 {FourCharacterCode("ORIX"), -4.0}};
    RunWith(beyond);
    const ScriptValues second = RunWith({});
    for (const auto& entry : beyond) {
        EXPECT_EQ(*FindValue(second, entry.key), entry.value) << mv::host::KeyText(entry.key);
    }
}

TEST_F(ScriptTest, AFailingGetterLeavesTheValue) {
    HostFaults faults;
    faults.failingGets = {FourCharacterCode("STRE"), FourCharacterCode("GAMA"),
                          FourCharacterCode("MODE"), FourCharacterCode("ORIX")};
    const ScriptValues recorded = RunWith({{FourCharacterCode("STRE"), 0.9},
                                           {FourCharacterCode("GAMA"), false},
                                           {FourCharacterCode("MODE"), std::int32_t{2}},
                                           {FourCharacterCode("ORIX"), 0.1},
                                           {FourCharacterCode("ORIY"), 0.1}},
                                          {}, faults);
    EXPECT_EQ(FloatOf(recorded, "STRE"), 0.25);
    EXPECT_EQ(*FindValue(recorded, FourCharacterCode("GAMA")), ScriptValue(true));
    EXPECT_EQ(IntegerOf(recorded, "MODE"), 1);
    EXPECT_EQ(FloatOf(recorded, "ORIX"), 0.5);
    EXPECT_EQ(FloatOf(recorded, "ORIY"), 0.1);
}

TEST_F(ScriptTest, AValueOfAnotherTypeLeavesTheValue) {
    const ScriptValues recorded = RunWith({{FourCharacterCode("STRE"), std::int32_t{1}},
                                           {FourCharacterCode("MODE"), 2.0},
                                           {FourCharacterCode("GAMA"), std::int32_t{0}},
                                           {FourCharacterCode("ORIX"), std::monostate{}}});
    EXPECT_EQ(FloatOf(recorded, "STRE"), 0.25);
    EXPECT_EQ(IntegerOf(recorded, "MODE"), 1);
    EXPECT_EQ(*FindValue(recorded, FourCharacterCode("GAMA")), ScriptValue(true));
    EXPECT_EQ(FloatOf(recorded, "ORIX"), 0.5);
}

TEST_F(ScriptTest, ANullReadTokenReadsNothingAndStillRenders) {
    HostFaults faults;
    faults.failOpenRead = true;
    const ScriptValues recorded = RunWith({{FourCharacterCode("STRE"), 0.9}}, {}, faults);
    EXPECT_EQ(FloatOf(recorded, "STRE"), 0.25);
}

TEST_F(ScriptTest, ANullWriteTokenWritesNothingAndStillRenders) {
    HostFaults faults;
    faults.failOpenWrite = true;
    EXPECT_TRUE(RunWith({{FourCharacterCode("STRE"), 0.9}}, {}, faults).empty());
    EXPECT_EQ(FloatOf(RunWith({}), "STRE"), 0.9);
}

TEST_F(ScriptTest, FailingPutsAreIgnored) {
    HostFaults faults;
    for (const auto& entry : kDefaults) {
        faults.failingPuts.insert(entry.key);
    }
    EXPECT_EQ(RunWith(kDefaults, {}, faults).size(), 1u);
}

TEST_F(ScriptTest, PlayInfoZeroAndTwoRunOnTheDescriptorsValues) {
    constexpr std::int16_t kWithoutDialog[] = {0, 2, 3, 99, -1};
    for (const std::int16_t playInfo : kWithoutDialog) {
        HostOffer offer;
        offer.playInfo = playInfo;
        const ScriptValues recorded = RunWith({{FourCharacterCode("STRE"), 0.66}}, offer);
        EXPECT_EQ(FloatOf(recorded, "STRE"), 0.66) << playInfo;
        RunWith(kDefaults);
    }
}

TEST_F(ScriptTest, PlayInfoOneOpensTheDialogOnTheDescriptorsValues) {
    if (kDialogWaits) {
        GTEST_SKIP() << "the dialog would wait for a person";
    }
    HostOffer offer;
    offer.playInfo = 1;
    EXPECT_EQ(FloatOf(RunWith({{FourCharacterCode("STRE"), 0.66}}, offer), "STRE"), 0.66);
}

TEST_F(ScriptTest, WithoutADescriptorBlockTheRunGoesOnWithTheValuesAsTheyAre) {
    if (kDialogWaits) {
        GTEST_SKIP() << "the dialog would wait for a person";
    }
    RunWith({{FourCharacterCode("STRE"), 0.66}});
    HostOffer offer;
    offer.descriptorParameters = false;
    EXPECT_TRUE(RunWith({{FourCharacterCode("STRE"), 0.1}}, offer).empty());
    EXPECT_EQ(FloatOf(RunWith({}), "STRE"), 0.66);
}

// Every way in which a host's descriptor procedures can be incomplete: nothing is read, nothing
// written, the descriptor is left to the host, and the dialog would open.
TEST_F(ScriptTest, IncompleteDescriptorProceduresAreNone) {
    if (kDialogWaits) {
        GTEST_SKIP() << "the dialog would wait for a person";
    }
    using Break = std::function<void(mv::host::HostSession&)>;
    std::vector<Break> breaks = {
        [](auto& host) { host.Descriptor().descriptorParametersVersion = 1; },
        [](auto& host) { host.Descriptor().readDescriptorProcs = nullptr; },
        [](auto& host) { host.Descriptor().writeDescriptorProcs = nullptr; },
        [](auto& host) { host.ReadProcs().readDescriptorProcsVersion = 1; },
        [](auto& host) { host.ReadProcs().numReadDescriptorProcs = 17; },
        [](auto& host) { host.WriteProcs().writeDescriptorProcsVersion = -1; },
        [](auto& host) { host.WriteProcs().numWriteDescriptorProcs = 15; },
    };
    constexpr std::size_t kReaders = 18;
    static_assert(sizeof(hostapi::ReadDescriptorProcs) == 8 + 8 * kReaders);
    for (std::size_t slot = 0; slot < kReaders; ++slot) {
        breaks.emplace_back([slot](auto& host) {
            auto* bytes = reinterpret_cast<unsigned char*>(&host.ReadProcs());
            std::fill_n(bytes + 8 + 8 * slot, 8, static_cast<unsigned char>(0));
        });
    }
    for (std::size_t i = 0; i < breaks.size(); ++i) {
        JobSession session(job_);
        session.Host().Play({{FourCharacterCode("STRE"), 0.9}});
        breaks[i](session.Host());
        const hostapi::Handle given = session.Host().Descriptor().descriptor;
        EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr) << i;
        EXPECT_EQ(session.Reproach(), "") << i;
        EXPECT_FALSE(session.Host().Recorded().has_value()) << i;
        EXPECT_TRUE(session.Host().AllPuts().empty()) << i;
        EXPECT_EQ(session.Host().Descriptor().descriptor, given) << i;
        EXPECT_EQ(FloatOf(RunWith({}), "STRE"), 0.25) << i;
    }
}

TEST_F(ScriptTest, MoreProceduresThanKnownAreFine) {
    JobSession session(job_);
    session.Host().Play({{FourCharacterCode("STRE"), 0.9}});
    session.Host().ReadProcs().numReadDescriptorProcs = 40;
    session.Host().WriteProcs().numWriteDescriptorProcs = 40;
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(FloatOf(session.Host().Recorded().value(), "STRE"), 0.9);
}

TEST_F(ScriptTest, ANullDescriptorMeansNoValues) {
    HostOffer offer;
    offer.playDescriptor = false;
    EXPECT_EQ(FloatOf(RunWith({{FourCharacterCode("STRE"), 0.9}}, offer), "STRE"), 0.25);
}

TEST_F(ScriptTest, WithoutUsableHandleProceduresTheDescriptorIsFreedByTheModule) {
    HostOffer none;
    none.handleProcs = false;
    none.descriptorHandle = mv::host::DescriptorHandle::PlatformAllocated;
    EXPECT_EQ(FloatOf(RunWith({{FourCharacterCode("STRE"), 0.9}}, none), "STRE"), 0.9);
    HostOffer seven;
    seven.handleProcsCount = 7;
    seven.descriptorHandle = mv::host::DescriptorHandle::PlatformAllocated;
    EXPECT_EQ(FloatOf(RunWith({{FourCharacterCode("STRE"), 0.8}}, seven), "STRE"), 0.8);
}

TEST_F(ScriptTest, AHostThatHasNoHandleForTheRecordGetsNone) {
    HostFaults faults;
    faults.failHandleAt = 2;
    JobSession session(job_, {}, faults);
    session.Host().Play(kDefaults);
    EXPECT_EQ(session.Host().Call(hostapi::filterSelectorStart), hostapi::noErr);
    EXPECT_EQ(session.Host().Descriptor().descriptor, nullptr);
    EXPECT_EQ(session.Reproach(), "");
}

}  // namespace
}  // namespace endtoend
