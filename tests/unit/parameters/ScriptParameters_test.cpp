#include "parameters/ScriptParameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameters.h"
#include "support/AllocationFault.h"
#include "support/FakeDescriptorHost.h"
#include "support/ParameterProbe.h"
#include "support/TraceFile.h"

namespace mv::test {

namespace {

using hostapi::FourCharacterCode;
using hostapi::OSType;

constexpr OSType kOriginX = FourCharacterCode("ORIX");
constexpr OSType kOriginY = FourCharacterCode("ORIY");
constexpr OSType kStrength = FourCharacterCode("STRE");
constexpr OSType kMode = FourCharacterCode("MODE");
constexpr OSType kGamma = FourCharacterCode("GAMA");
constexpr OSType kCount = FourCharacterCode("CNT ");
constexpr OSType kRed = FourCharacterCode("RED ");
constexpr OSType kBlue = FourCharacterCode("BLUE");
constexpr OSType kRubbishKey = 0x12345678;

}  // namespace

class ScriptParameters : public ::testing::Test {
protected:
    ScriptParameters() {
        origin.SetScriptKeys(kOriginX, kOriginY);
        origin.Set(0.5, 0.5);
        strength.SetScriptKey(kStrength);
        strength.SetMinimum(0.0, true);
        strength.SetMaximum(1.0, true);
        strength.Set(0.25);
        mode.SetScriptKey(kMode);
        mode.AddEntry("normal");
        mode.AddEntry("abberative");
        gamma.SetScriptKey(kGamma);
        gamma.Set(true);
        count.SetScriptKey(kCount);
        colour.SetScriptKeys(kRed, 0, kBlue);
        for (pfParameter* parameter : std::initializer_list<pfParameter*>{
                 &origin, &strength, &mode, &gamma, &count, &colour, &keyless}) {
            parameters.Add(parameter);
        }
    }

    pfParameterPosition origin;
    pfParameterFloat strength;
    pfParameterList mode;
    pfParameterBool gamma;
    pfParameterInt count;
    pfParameterRGB colour;
    pfParameterFloat keyless;
    pfParameters parameters;
    FakeDescriptorHost fake;
};

TEST_F(ScriptParameters, WithoutDescriptorParametersTheDialogShowsAndNothingIsWritten) {
    fake.record.descriptorParameters = nullptr;
    EXPECT_TRUE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    EXPECT_EQ(fake.opens, 0);
    EXPECT_EQ(fake.writeOpens, 0);
}

TEST_F(ScriptParameters, ANullRecordIsAHostWithoutScripting) {
    EXPECT_TRUE(parameters.ReadScriptParams(nullptr));
    EXPECT_EQ(parameters.WriteScriptParams(nullptr), 0);
}

TEST_F(ScriptParameters, WithoutPlayInfoOneTheValuesAreTakenAndTheDialogStaysAway) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kStrength, 0.75), IntegerEntry(kMode, 2), BooleanEntry(kGamma, false),
                   IntegerEntry(kCount, -5)};
    EXPECT_FALSE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(strength.Get(), 0.75);
    EXPECT_EQ(mode.Get(), 2);
    EXPECT_FALSE(gamma.Get());
    EXPECT_EQ(count.Get(), -5);
}

TEST_F(ScriptParameters, SilentPlayShowsNoDialogEither) {
    fake.descriptorParameters.playInfo = hostapi::plugInDialogSilent;
    EXPECT_FALSE(parameters.ReadScriptParams(&fake.record));
}

TEST_F(ScriptParameters, PlayingWithDialogsFillsTheDialogWithTheRecordedValues) {
    fake.OfferDescriptor();
    fake.descriptorParameters.playInfo = hostapi::plugInDialogDisplay;
    fake.played = {FloatEntry(kStrength, 0.75)};
    EXPECT_TRUE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(strength.Get(), 0.75);
}

TEST_F(ScriptParameters, WithoutADescriptorThePlayInfoStillDecides) {
    fake.descriptorParameters.playInfo = hostapi::plugInDialogDontDisplay;
    EXPECT_FALSE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(fake.opens, 1);
    EXPECT_EQ(fake.closes, 0);
    EXPECT_TRUE(fake.disposed.empty());
}

TEST_F(ScriptParameters, KeysAreAskedForInTheOrderOfTheSetAndEndWithZero) {
    fake.OfferDescriptor();
    parameters.ReadScriptParams(&fake.record);
    const std::vector<OSType> expected = {kOriginX, kOriginY, kStrength, kMode,
                                          kGamma,   kCount,   kRed,      kBlue};
    EXPECT_EQ(fake.requestedKeys, expected);
}

TEST_F(ScriptParameters, AnUnknownKeyIsPassedOver) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kRubbishKey, 9.0), FloatEntry(kStrength, 0.75)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(strength.Get(), 0.75);
    EXPECT_EQ(origin.GetX(), 0.5);
}

TEST_F(ScriptParameters, KeyZeroReachesNoParameterWithoutAKey) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(0, 9.0)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(keyless.Get(), 0.0);
    EXPECT_EQ(colour.GetGreen(), 1.0);
}

TEST_F(ScriptParameters, OneCoordinateAloneLeavesTheOther) {
    fake.OfferDescriptor();
    CountingControl control;
    control.Bind(&origin);
    fake.played = {FloatEntry(kOriginX, 0.125)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(origin.GetX(), 0.125);
    EXPECT_EQ(origin.GetY(), 0.5);
    EXPECT_EQ(control.refreshes, 1);
}

TEST_F(ScriptParameters, OneChannelAloneLeavesTheOthers) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kBlue, 0.25)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(colour.GetRed(), 1.0);
    EXPECT_EQ(colour.GetGreen(), 1.0);
    EXPECT_EQ(colour.GetBlue(), 0.25);
}

TEST_F(ScriptParameters, ASelectionOutsideTheListIsRefused) {
    fake.OfferDescriptor();
    CallCounter counter;
    counter.WatchOver(mode);
    fake.played = {IntegerEntry(kMode, 3), IntegerEntry(kMode, 0)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(mode.Get(), 1);
    EXPECT_EQ(counter.calls, 0);
}

TEST_F(ScriptParameters, AValueBeyondAHardBoundStandsUntilItIsValidated) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kStrength, 7.5)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(strength.Get(), 7.5);
    parameters.ValidateAll();
    EXPECT_EQ(strength.Get(), 1.0);
}

TEST_F(ScriptParameters, ValuesThatAreNotFiniteAreStoredAsTheyComeButForNoNumber) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kOriginX, std::numeric_limits<double>::infinity()),
                   FloatEntry(kOriginY, std::numeric_limits<double>::quiet_NaN())};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_TRUE(std::isinf(origin.GetX()));
    // What is no number never differs from anything, so it is no change.
    EXPECT_EQ(origin.GetY(), 0.5);
}

TEST_F(ScriptParameters, AFailingReaderLeavesTheValueAsItWas) {
    fake.OfferDescriptor();
    fake.failingReaders = true;
    fake.played = {FloatEntry(kStrength, 0.75), IntegerEntry(kMode, 2),
                   BooleanEntry(kGamma, false), IntegerEntry(kCount, 4),
                   FloatEntry(kOriginX, 0.0),   FloatEntry(kRed, 0.0)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(strength.Get(), 0.25);
    EXPECT_EQ(mode.Get(), 1);
    EXPECT_TRUE(gamma.Get());
    EXPECT_EQ(count.Get(), 0);
    EXPECT_EQ(origin.GetX(), 0.5);
    EXPECT_EQ(colour.GetRed(), 1.0);
}

TEST_F(ScriptParameters, ChangeCallbacksRunForSwitchesNumbersAndListsButNotForWholeNumbers) {
    fake.OfferDescriptor();
    CallCounter flags;
    CallCounter numbers;
    CallCounter lists;
    CallCounter wholes;
    flags.WatchOver(gamma);
    numbers.WatchOver(strength);
    lists.WatchOver(mode);
    wholes.WatchOver(count);
    // None of these but the last is a change.
    fake.played = {FloatEntry(kStrength, 0.25), IntegerEntry(kMode, 1), BooleanEntry(kGamma, true),
                   IntegerEntry(kCount, 4)};
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(flags.calls, 1);
    EXPECT_EQ(numbers.calls, 1);
    EXPECT_EQ(lists.calls, 1);
    EXPECT_EQ(wholes.calls, 0);
}

TEST_F(ScriptParameters, AHostThatNeverRunsOutOfKeysIsLeftInTheEnd) {
    fake.OfferDescriptor();
    fake.endless = true;
    fake.played = {FloatEntry(kStrength, 0.75)};
    EXPECT_FALSE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(strength.Get(), 0.75);
    EXPECT_EQ(fake.keysYielded, 65536);
    EXPECT_EQ(fake.closes, 1);
}

TEST_F(ScriptParameters, TheDescriptorIsDisposedOnceByTheHostAndForgotten) {
    fake.OfferDescriptor();
    const hostapi::Handle offered = fake.descriptorParameters.descriptor;
    parameters.ReadScriptParams(&fake.record);
    EXPECT_EQ(fake.disposed, std::vector<hostapi::Handle>{offered});
    EXPECT_EQ(fake.descriptorParameters.descriptor, nullptr);
    EXPECT_EQ(fake.closes, 1);
}

TEST_F(ScriptParameters, WithoutWholeHandleProceduresTheDescriptorIsFreed) {
    // Freed by the C library: the address sanitizer would see it if it were not.
    const std::function<void()> takings[] = {
        [this] { fake.record.handleProcs = nullptr; },
        [this] { fake.handles.handleProcsVersion = 2; },
        [this] { fake.handles.numHandleProcs = 7; },
        [this] { fake.handles.newProc = nullptr; },
        [this] { fake.handles.disposeProc = nullptr; },
        [this] { fake.handles.getSizeProc = nullptr; },
        [this] { fake.handles.setSizeProc = nullptr; },
    };
    const hostapi::HandleProcs whole = fake.handles;
    for (const auto& take : takings) {
        fake.handles = whole;
        fake.record.handleProcs = &fake.handles;
        take();
        fake.OfferDescriptor();
        parameters.ReadScriptParams(&fake.record);
        EXPECT_EQ(fake.descriptorParameters.descriptor, nullptr);
        EXPECT_TRUE(fake.disposed.empty());
    }
}

TEST_F(ScriptParameters, ADescriptorThatCannotBeOpenedStaysUntilTheNewOneReplacesIt) {
    fake.OfferDescriptor();
    const hostapi::Handle offered = fake.descriptorParameters.descriptor;
    fake.refuseReading = true;
    EXPECT_FALSE(parameters.ReadScriptParams(&fake.record));
    EXPECT_EQ(fake.closes, 0);
    EXPECT_EQ(fake.descriptorParameters.descriptor, offered);
    parameters.WriteScriptParams(&fake.record);
    EXPECT_EQ(fake.disposed, std::vector<hostapi::Handle>{offered});
    EXPECT_EQ(fake.descriptorParameters.descriptor, fake.recordedHandle);
}

TEST_F(ScriptParameters, WithoutMemoryForTheKeysTheDialogShows) {
    fake.OfferDescriptor();
    fake.played = {FloatEntry(kStrength, 0.75)};
    bool shown = false;
    {
        const AllocationDrought drought;
        shown = parameters.ReadScriptParams(&fake.record);
    }
    EXPECT_TRUE(shown);
    EXPECT_EQ(fake.opens, 0);
    EXPECT_EQ(strength.Get(), 0.25);
    std::free(fake.descriptorParameters.descriptor);
}

TEST_F(ScriptParameters, EveryParameterIsWrittenInOrderAndUnderKeyZeroIfItHasNone) {
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    ASSERT_EQ(fake.recorded.size(), 10u);
    const OSType keys[] = {kOriginX, kOriginY, kStrength, kMode, kGamma, kCount, kRed, 0, kBlue, 0};
    for (std::size_t i = 0; i < fake.recorded.size(); ++i) {
        EXPECT_EQ(fake.recorded[i].key, keys[i]) << i;
    }
    EXPECT_EQ(fake.recorded[0].number, 0.5);
    EXPECT_EQ(fake.recorded[2].number, 0.25);
    EXPECT_EQ(fake.recorded[3].type, hostapi::typeInteger);
    EXPECT_EQ(fake.recorded[3].integer, 1);
    EXPECT_EQ(fake.recorded[4].type, hostapi::typeBoolean);
    EXPECT_TRUE(fake.recorded[4].flag);
    EXPECT_EQ(fake.recorded[9].type, hostapi::typeFloat);
}

TEST_F(ScriptParameters, TheNewDescriptorTakesThePlaceOfTheOldOneAndTheDialogIsOptional) {
    fake.OfferDescriptor();
    const hostapi::Handle offered = fake.descriptorParameters.descriptor;
    parameters.WriteScriptParams(&fake.record);
    EXPECT_EQ(fake.disposed, std::vector<hostapi::Handle>{offered});
    EXPECT_EQ(fake.order, (std::vector<char>{'d', 'c'}));
    EXPECT_EQ(fake.descriptorParameters.descriptor, fake.recordedHandle);
    EXPECT_EQ(fake.descriptorParameters.recordInfo, hostapi::plugInDialogOptional);
}

TEST_F(ScriptParameters, WhatTheHostSaysAtTheCloseIsTheResult) {
    fake.closeResult = hostapi::paramErr;
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), hostapi::paramErr);
    EXPECT_EQ(fake.descriptorParameters.recordInfo, hostapi::plugInDialogOptional);
}

TEST_F(ScriptParameters, WithoutAWriteTokenNothingIsTouched) {
    fake.refuseWriting = true;
    fake.OfferDescriptor();
    const hostapi::Handle offered = fake.descriptorParameters.descriptor;
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    EXPECT_TRUE(fake.recorded.empty());
    EXPECT_EQ(fake.descriptorParameters.descriptor, offered);
    EXPECT_EQ(fake.descriptorParameters.recordInfo, hostapi::plugInDialogNone);
    std::free(offered);
}

TEST_F(ScriptParameters, PutProceduresThatAreMissingCostOnlyTheirValues) {
    fake.writers.putFloatProc = nullptr;
    fake.writers.putBooleanProc = nullptr;
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    ASSERT_EQ(fake.recorded.size(), 2u);
    EXPECT_EQ(fake.recorded[0].key, kMode);
    EXPECT_EQ(fake.recorded[1].key, kCount);
    fake.recorded.clear();
    fake.writers.putIntegerProc = nullptr;
    parameters.WriteScriptParams(&fake.record);
    EXPECT_TRUE(fake.recorded.empty());
}

TEST_F(ScriptParameters, WritingNeedsItsOpenAndCloseProcedures) {
    fake.writers.closeWriteDescriptorProc = nullptr;
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    fake.writers.openWriteDescriptorProc = nullptr;
    EXPECT_EQ(parameters.WriteScriptParams(&fake.record), 0);
    EXPECT_EQ(fake.writeOpens, 0);
}

TEST_F(ScriptParameters, SingleValuesDoWithoutAHost) {
    double number = 0.5;
    EXPECT_FALSE(GetScriptFloat(nullptr, nullptr, number));
    fake.record.descriptorParameters = nullptr;
    std::int32_t integer = 3;
    bool flag = true;
    EXPECT_FALSE(GetScriptInteger(&fake.record, nullptr, integer));
    EXPECT_FALSE(GetScriptBoolean(&fake.record, nullptr, flag));
    PutScriptFloat(&fake.record, nullptr, kStrength, 1.0);
    PutScriptInteger(nullptr, nullptr, kMode, 1);
    PutScriptBoolean(&fake.record, nullptr, kGamma, true);
    EXPECT_EQ(number, 0.5);
    EXPECT_EQ(integer, 3);
    EXPECT_TRUE(flag);
    EXPECT_TRUE(fake.recorded.empty());
}

TEST_F(ScriptParameters, TheTraceHasTheseLinesWithTheirStrayApostrophe) {
    const TraceFile trace;
    fake.record.descriptorParameters = nullptr;
    parameters.ReadScriptParams(nullptr);
    parameters.WriteScriptParams(nullptr);
    EXPECT_EQ(trace.Text(),
              "pfParmeters::ReadScriptParams( pFilterRecord(0x0000000000000000) )\n"
              "    pfParmeters::ReadScriptParams( return(1) )\n"
              "pfParmeters::WriteScriptParams( pFilterRecord(0x0000000000000000) )\n"
              "    pfParmeters::WriteScriptParams(' return(0) )\n");
}

TEST_F(ScriptParameters, TheSuiteIsAvailableOnlyWhole) {
    EXPECT_TRUE(DescriptorAvailable(&fake.descriptorParameters));
    EXPECT_FALSE(DescriptorAvailable(nullptr));
    fake.descriptorParameters.descriptorParametersVersion = 1;
    EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
    fake.descriptorParameters.descriptorParametersVersion = 0;

    fake.descriptorParameters.readDescriptorProcs = nullptr;
    EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
    fake.descriptorParameters.readDescriptorProcs = &fake.readers;
    fake.descriptorParameters.writeDescriptorProcs = nullptr;
    EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
    fake.descriptorParameters.writeDescriptorProcs = &fake.writers;

    for (std::int16_t* version :
         {&fake.readers.readDescriptorProcsVersion, &fake.writers.writeDescriptorProcsVersion}) {
        *version = 1;
        EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
        *version = 0;
    }
    fake.readers.numReadDescriptorProcs = 17;
    EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
    fake.readers.numReadDescriptorProcs = 19;
    EXPECT_TRUE(DescriptorAvailable(&fake.descriptorParameters));
    fake.writers.numWriteDescriptorProcs = 15;
    EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters));
    fake.writers.numWriteDescriptorProcs = 17;
    EXPECT_TRUE(DescriptorAvailable(&fake.descriptorParameters));
}

TEST_F(ScriptParameters, EachOfTheEighteenReadProceduresIsNeededAndNoneOfTheWriting) {
    constexpr std::size_t kFirst = offsetof(hostapi::ReadDescriptorProcs, openReadDescriptorProc);
    for (std::size_t i = 0; i < 18; ++i) {
        hostapi::ReadDescriptorProcs lacking = fake.readers;
        std::memset(reinterpret_cast<char*>(&lacking) + kFirst + i * sizeof(void*), 0,
                    sizeof(void*));
        fake.descriptorParameters.readDescriptorProcs = &lacking;
        EXPECT_FALSE(DescriptorAvailable(&fake.descriptorParameters)) << i;
    }
    fake.descriptorParameters.readDescriptorProcs = &fake.readers;
    fake.writers = {};
    fake.writers.numWriteDescriptorProcs = 16;
    EXPECT_TRUE(DescriptorAvailable(&fake.descriptorParameters));
}

}  // namespace mv::test
