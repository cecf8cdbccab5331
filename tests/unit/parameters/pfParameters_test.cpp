#include "parameters/pfParameters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <sstream>
#include <string>

#include "diagnostics/Log.h"
#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfUndoBuffer.h"
#include "support/AllocationFault.h"
#include "support/ParameterProbe.h"
#include "support/TraceFile.h"

#if defined(__SANITIZE_ADDRESS__)
#define MV_TEST_LEAKS_ARE_WATCHED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MV_TEST_LEAKS_ARE_WATCHED 1
#endif
#endif
#ifdef MV_TEST_LEAKS_ARE_WATCHED
#include <sanitizer/lsan_interface.h>
#endif

namespace mv::test {

namespace {

// Blocks taken during its life may stay behind.
class MeantLeak {
public:
#ifdef MV_TEST_LEAKS_ARE_WATCHED
    MeantLeak() {
        __lsan_disable();
    }
    ~MeantLeak() {
        __lsan_enable();
    }
#else
    MeantLeak() {}
    ~MeantLeak() {}
#endif
    MeantLeak(const MeantLeak&) = delete;
    MeantLeak& operator=(const MeantLeak&) = delete;
};

std::string Address(const void* pointer) {
    std::ostringstream stream;
    stream << std::hex << std::uppercase << reinterpret_cast<std::uintptr_t>(pointer);
    return std::string(16 - stream.str().size(), '0') + stream.str();
}

class pfParametersTest : public ::testing::Test {
protected:
    pfParametersTest() {
        for (pfParameter* parameter : std::initializer_list<pfParameter*>{
                 &position, &flag, &whole, &number, &list, &colour}) {
            set.Add(parameter);
        }
    }

    pfParameterPosition position;
    pfParameterBool flag;
    pfParameterInt whole;
    pfParameterFloat number;
    pfParameterList list;
    pfParameterRGB colour;
    pfParameters set;
};

}  // namespace

TEST_F(pfParametersTest, KeepsTheOrderOfInsertion) {
    EXPECT_EQ(set.GetCount(), 6);
    EXPECT_EQ(set.GetParameter(0), &position);
    EXPECT_EQ(set.GetParameter(5), &colour);
    EXPECT_EQ(set.GetParameter(6), nullptr);
    EXPECT_EQ(set.GetParameter(-1), nullptr);
}

TEST_F(pfParametersTest, AddWithinWhatWasReservedTakesNoMemory) {
    pfParameters reserved;
    reserved.Reserve(2);
    const AllocationDrought drought;
    reserved.Add(&flag);
    reserved.Add(&number);
    EXPECT_EQ(reserved.GetCount(), 2);
}

TEST_F(pfParametersTest, ValidateAllReachesEveryParameter) {
    whole.SetMaximum(5, true);
    whole.Set(6);
    number.SetMaximum(1.0, true);
    number.Set(2.0);
    colour.Set(2.0, 2.0, 2.0);
    set.ValidateAll();
    EXPECT_EQ(whole.Get(), 5);
    EXPECT_EQ(number.Get(), 1.0);
    EXPECT_EQ(colour.GetBlue(), 1.0);
}

TEST_F(pfParametersTest, UpdateAllUIRefreshesTheControlsThatThereAre) {
    CountingControl first;
    CountingControl second;
    first.Bind(&flag);
    second.Bind(&colour);
    set.UpdateAllUI();
    EXPECT_EQ(first.refreshes, 1);
    EXPECT_EQ(second.refreshes, 1);
}

TEST_F(pfParametersTest, RandomizeAllMakesOneStepThatBringsAllBack) {
    list.AddEntry("normal");
    list.AddEntry("abberative");
    whole.SetMaximum(1000, true);
    pfUndoBuffer buffer;
    buffer.SetEnabled(true);
    set.RandomizeAll(1.0, buffer);
    EXPECT_TRUE(buffer.Undo());
    EXPECT_FALSE(buffer.CanUndo());
    EXPECT_EQ(position.GetX(), 0.0);
    EXPECT_FALSE(flag.Get());
    EXPECT_EQ(whole.Get(), 0);
    EXPECT_EQ(number.Get(), 0.0);
    EXPECT_EQ(list.Get(), 1);
    EXPECT_EQ(colour.GetRed(), 1.0);
}

TEST_F(pfParametersTest, RandomizeAllPushesEveryRandomizableParameterChangedOrNot) {
    pfUndoBuffer buffer;
    buffer.SetEnabled(true);
    // By nothing, and all values stand inside their folds: only the switch may change.
    colour.Set(0.5, 0.5, 0.5);
    flag.SetRandomizable(false);
    const long before = LiveAllocations();
    set.RandomizeAll(0.0, buffer);
    EXPECT_EQ(LiveAllocations(), before + 5);
    EXPECT_TRUE(buffer.CanUndo());
}

TEST_F(pfParametersTest, RandomizeAllWithNothingToRandomizeStillClosesTheStep) {
    pfUndoBuffer buffer;
    buffer.SetEnabled(true);
    for (int i = 0; i < set.GetCount(); ++i) {
        set.GetParameter(i)->SetRandomizable(false);
    }
    buffer.Push(whole.CreateUndo());
    whole.Set(1);
    set.RandomizeAll(1.0, buffer);
    buffer.Push(whole.CreateUndo());
    whole.Set(2);
    // Were both records of one step, this would go back to 0.
    buffer.Undo();
    EXPECT_EQ(whole.Get(), 1);
}

TEST_F(pfParametersTest, RandomizeAllGoesOnWithoutMemoryForTheRecords) {
    pfUndoBuffer buffer;
    buffer.SetEnabled(true);
    {
        const AllocationDrought drought;
        set.RandomizeAll(1.0, buffer);
    }
    EXPECT_FALSE(buffer.CanUndo());
    EXPECT_NE(position.GetX(), 0.0);
}

TEST_F(pfParametersTest, GenerateMakesDefaultsOfTheSameClassesInTheSameOrder) {
    number.Set(0.5);
    number.SetName("Strength");
    pfParameters* const made = set.Generate();
    ASSERT_NE(made, nullptr);
    ASSERT_EQ(made->GetCount(), 6);
    EXPECT_NE(dynamic_cast<pfParameterPosition*>(made->GetParameter(0)), nullptr);
    EXPECT_NE(dynamic_cast<pfParameterBool*>(made->GetParameter(1)), nullptr);
    EXPECT_NE(dynamic_cast<pfParameterInt*>(made->GetParameter(2)), nullptr);
    auto* const copy = dynamic_cast<pfParameterFloat*>(made->GetParameter(3));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->Get(), 0.0);
    EXPECT_EQ(copy->GetName(), "");
    EXPECT_NE(dynamic_cast<pfParameterList*>(made->GetParameter(4)), nullptr);
    EXPECT_NE(dynamic_cast<pfParameterRGB*>(made->GetParameter(5)), nullptr);
    made->DeleteAll();
    EXPECT_EQ(made->GetCount(), 0);
    delete made;
}

TEST_F(pfParametersTest, DeleteAllGivesEverythingBack) {
    // The log takes what it keeps with its first line.
    WriteLog(kTrace, "before counting");
    const long before = LiveAllocations();
    pfParameters* const made = set.Generate();
    ASSERT_NE(made, nullptr);
    made->DeleteAll();
    delete made;
    EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(pfParametersTest, GenerateStopsAtTheFirstFailedAllocationAndLeavesWhatItBuilt) {
    // Meant as it is: what was built by then is not given back.
    const MeantLeak leak;
    WriteLog(kTrace, "before counting");
    long failures = 0;
    long mostLeft = 0;
    for (long n = 1;; ++n) {
        const long before = LiveAllocations();
        pfParameters* made = nullptr;
        bool happened = false;
        {
            const AllocationFault fault(n);
            made = set.Generate();
            happened = fault.Happened();
        }
        if (made == nullptr) {
            ++failures;
            mostLeft = std::max(mostLeft, LiveAllocations() - before);
            continue;
        }
        // A fault that falls on the trace costs a line of it and nothing else.
        EXPECT_EQ(made->GetCount(), 6);
        made->DeleteAll();
        delete made;
        EXPECT_EQ(LiveAllocations(), before);
        if (!happened) {
            break;
        }
    }
    // The set, its array and six parameters can fail; the last of them leaves seven behind.
    EXPECT_EQ(failures, 8);
    EXPECT_EQ(mostLeft, 7);
}

TEST_F(pfParametersTest, CopyParametersCopiesEveryFieldButTheControl) {
    CallCounter counter;
    CountingControl sourceControl;
    CountingControl ownControl;
    number.SetName("Strength");
    number.SetMinimum(-2.0, true);
    number.SetMaximum(3.0, true);
    number.SetScriptKey(7);
    number.Set(0.75);
    number.SetPersistent(false);
    number.SetUndoable(false);
    number.SetRandomizable(false);
    counter.WatchOver(number);
    sourceControl.Bind(&number);
    position.Set(0.1, 0.2);
    position.SetScriptKeys(1, 2);
    flag.Set(true);
    flag.SetScriptKey(3);
    whole.SetMinimum(-4, true);
    whole.SetMaximum(40, true);
    whole.Set(14);
    list.AddEntry("normal");
    list.AddEntry("abberative");
    list.Set(2);
    colour.Set(0.1, 0.2, 0.3);
    colour.SetScriptKeys(4, 5, 6);

    pfParameters* const made = set.Generate();
    ASSERT_NE(made, nullptr);
    ownControl.Bind(made->GetParameter(3));
    const int calls = counter.calls;
    pfParameters::CopyParameters(&set, made);

    const auto& numberCopy = dynamic_cast<const pfParameterFloat&>(*made->GetParameter(3));
    EXPECT_EQ(numberCopy.GetName(), "Strength");
    EXPECT_EQ(numberCopy.Get(), 0.75);
    EXPECT_EQ(numberCopy.GetMinimum(), -2.0);
    EXPECT_EQ(numberCopy.GetMaximum(), 3.0);
    EXPECT_TRUE(numberCopy.GetMinimumHard());
    EXPECT_TRUE(numberCopy.GetMaximumHard());
    EXPECT_EQ(numberCopy.GetScriptKeyCount(), 1);
    EXPECT_FALSE(numberCopy.GetPersistent());
    EXPECT_FALSE(numberCopy.GetUndoable());
    EXPECT_FALSE(numberCopy.GetRandomizable());
    EXPECT_EQ(numberCopy.GetUI(), &ownControl);
    EXPECT_EQ(ownControl.refreshes, 0);
    // Nobody is told, but the callback went along.
    EXPECT_EQ(counter.calls, calls);
    made->GetParameter(3)->Validate();
    EXPECT_EQ(counter.calls, calls + 1);

    const auto& positionCopy = dynamic_cast<const pfParameterPosition&>(*made->GetParameter(0));
    EXPECT_EQ(positionCopy.GetY(), 0.2);
    EXPECT_EQ(positionCopy.GetScriptKeyCount(), 2);
    const auto& flagCopy = dynamic_cast<const pfParameterBool&>(*made->GetParameter(1));
    EXPECT_TRUE(flagCopy.Get());
    EXPECT_EQ(flagCopy.GetScriptKeyCount(), 1);
    const auto& wholeCopy = dynamic_cast<const pfParameterInt&>(*made->GetParameter(2));
    EXPECT_EQ(wholeCopy.Get(), 14);
    EXPECT_EQ(wholeCopy.GetMinimum(), -4);
    EXPECT_EQ(wholeCopy.GetMaximum(), 40);
    const auto& listCopy = dynamic_cast<const pfParameterList&>(*made->GetParameter(4));
    EXPECT_EQ(listCopy.Get(), 2);
    EXPECT_EQ(listCopy.GetEntryCount(), 2);
    EXPECT_EQ(listCopy.GetEntry(1), "abberative");
    const auto& colourCopy = dynamic_cast<const pfParameterRGB&>(*made->GetParameter(5));
    EXPECT_EQ(colourCopy.GetBlue(), 0.3);
    EXPECT_EQ(colourCopy.GetScriptKeyCount(), 3);
    made->DeleteAll();
    delete made;
}

TEST_F(pfParametersTest, CopyParametersOntoItselfKeepsTheEntries) {
    list.AddEntry("normal");
    pfParameters::CopyParameters(&set, &set);
    EXPECT_EQ(list.GetEntryCount(), 1);
    EXPECT_EQ(list.GetEntry(0), "normal");
}

TEST_F(pfParametersTest, CopyParametersPassesOverPairsOfDifferentClasses) {
    pfParameterBool otherFlag;
    pfParameterFloat otherNumber;
    pfParameters other;
    other.Add(&otherNumber);  // stands where the position is
    other.Add(&otherFlag);
    flag.Set(true);
    position.SetName("Origin");
    pfParameters::CopyParameters(&set, &other);
    EXPECT_TRUE(otherFlag.Get());
    EXPECT_EQ(otherNumber.GetName(), "");
}

TEST_F(pfParametersTest, CopyParametersWithANullIsAnError) {
    const TraceFile trace;
    pfParameters::CopyParameters(&set, nullptr);
    EXPECT_EQ(trace.Text(), "pfParmeters::CopyParameters( pSrc(0x" + Address(&set) +
                                "), pDest(0x0000000000000000) )\n"
                                "    -**###  ERROR  ###**-: Address Pointer was Zero\n");
    pfParameters::CopyParameters(nullptr, &set);
    pfParameters::CopyParameters(nullptr, nullptr);
}

TEST_F(pfParametersTest, CopyParametersSurvivesEveryFailedAllocation) {
    number.SetName("a name that is too long to be held without memory of its own");
    for (int i = 0; i < 5; ++i) {
        list.AddEntry("an entry that is too long to be held without memory of its own");
    }
    for (long n = 1; n < 200; ++n) {
        pfParameters* const made = set.Generate();
        ASSERT_NE(made, nullptr);
        {
            const AllocationFault fault(n);
            pfParameters::CopyParameters(&set, made);
        }
        made->DeleteAll();
        delete made;
    }
    EXPECT_EQ(list.GetEntryCount(), 5);
}

TEST_F(pfParametersTest, GenerateIsTraced) {
    const TraceFile trace;
    pfParameters* const made = set.Generate();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(trace.Text(), "pfParmeters::Generate()\n    pfParmeters::Generate( return(0x" +
                                Address(made) + ") )\n");
    made->DeleteAll();
    delete made;
}

}  // namespace mv::test
