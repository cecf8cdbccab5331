// The parameters as the command line has them are those of the module's filter object.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "frame/pfFilterRadialBlur.h"
#include "parameters/PresetBlock.h"
#include "program/ParameterTable.h"
#include "program/presets/PresetFile.h"
#include "program/presets/PresetParameters.h"

namespace mv::host {
namespace {

constexpr int kPersistent = 20;

class ParameterTablesTest : public ::testing::Test {
protected:
    pfFilterRadialBlur filter_{"name", "maker", 1, 2, 6, "description"};
    PresetParameters program_;
};

TEST_F(ParameterTablesTest, NamesBoundsEntriesAndDefaultsAreTheSame) {
    ASSERT_EQ(program_.Set().GetCount(), kPersistent);
    for (int i = 0; i < kPersistent; ++i) {
        const pfParameter& ours = *program_.Set().GetParameter(i);
        const pfParameter& theirs = *filter_.GetParameters().GetParameter(i);
        SCOPED_TRACE(std::string(theirs.GetNameView()));
        EXPECT_EQ(ours.GetNameView(), theirs.GetNameView());
        EXPECT_TRUE(theirs.GetPersistent());
        ASSERT_EQ(typeid(ours), typeid(theirs));
        if (const auto* const number = dynamic_cast<const pfParameterFloat*>(&ours)) {
            const auto& other = dynamic_cast<const pfParameterFloat&>(theirs);
            EXPECT_EQ(number->Get(), other.Get());
            EXPECT_EQ(number->GetMinimum(), other.GetMinimum());
            EXPECT_EQ(number->GetMaximum(), other.GetMaximum());
            EXPECT_EQ(number->GetMinimumHard(), other.GetMinimumHard());
            EXPECT_EQ(number->GetMaximumHard(), other.GetMaximumHard());
        } else if (const auto* const list = dynamic_cast<const pfParameterList*>(&ours)) {
            const auto& other = dynamic_cast<const pfParameterList&>(theirs);
            EXPECT_EQ(list->Get(), other.Get());
            ASSERT_EQ(list->GetEntryCount(), other.GetEntryCount());
            for (int entry = 0; entry < list->GetEntryCount(); ++entry) {
                EXPECT_EQ(list->GetEntry(entry), other.GetEntry(entry));
            }
        }
    }
    EXPECT_FALSE(filter_.GetParameters().GetParameter(kPersistent)->GetPersistent());
}

TEST_F(ParameterTablesTest, ScriptKeysAreTheSameInTheSameOrder) {
    std::vector<hostapi::OSType> theirs;
    for (int i = 0; i < kPersistent; ++i) {
        hostapi::OSType keys[3] = {};
        pfParameter& parameter = *filter_.GetParameters().GetParameter(i);
        parameter.GetScriptKeys(keys);
        theirs.insert(theirs.end(), keys, keys + parameter.GetScriptKeyCount());
    }
    std::vector<hostapi::OSType> ours;
    for (const ScriptEntry& entry : program_.Values()) {
        ours.push_back(entry.key);
    }
    EXPECT_EQ(ours, theirs);
}

TEST_F(ParameterTablesTest, TheOwnerOfPresetFilesIsTheFilter) {
    EXPECT_STREQ(kPresetOwner, filter_.GetFilterName());
}

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// What the dialog's object writes and what the command line writes, over many random values.
TEST_F(ParameterTablesTest, BothWriteTheSameBytesAndReadTheSameValues) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "radial_blur_parameter_tables_test";
    std::filesystem::create_directories(folder);
    const std::string theirs = (folder / "theirs.cfg").string();
    const std::string ours = (folder / "ours.cfg").string();
    for (int round = 0; round < 50; ++round) {
        std::filesystem::remove(theirs);
        std::filesystem::remove(ours);
        if (round > 0) {
            filter_.RandomizeParameters();
        }
        ASSERT_TRUE(filter_.GetParameters().SaveSettings("look", theirs, "RadialBlur"));
        ASSERT_TRUE(program_.Set().LoadSettings("look", theirs, nullptr));
        ASSERT_TRUE(filter_.GetParameters().LoadSettings("look", theirs, nullptr));
        std::string lines;
        AppendParameterLines(lines, filter_.GetParameters());
        EXPECT_EQ(program_.Lines(), lines);
        ASSERT_FALSE(PresetFile(ours).Save("look", program_.Values(), false));
        EXPECT_EQ(ReadAll(ours), ReadAll(theirs));
        // To the bit: the doubles that the dialog's object holds now.
        for (int i = 0; i < kPersistent; ++i) {
            const pfParameter& left = *program_.Set().GetParameter(i);
            const pfParameter& right = *filter_.GetParameters().GetParameter(i);
            if (const auto* const number = dynamic_cast<const pfParameterFloat*>(&left)) {
                EXPECT_EQ(number->Get(), dynamic_cast<const pfParameterFloat&>(right).Get());
            } else if (const auto* const place = dynamic_cast<const pfParameterPosition*>(&left)) {
                EXPECT_EQ(place->GetX(), dynamic_cast<const pfParameterPosition&>(right).GetX());
                EXPECT_EQ(place->GetY(), dynamic_cast<const pfParameterPosition&>(right).GetY());
            }
        }
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace mv::host
