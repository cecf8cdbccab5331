#include "interface/LastUsedSettings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parameters/pfParameterBool.h"
#include "parameters/pfParameterFloat.h"
#include "parameters/pfParameterInt.h"
#include "parameters/pfParameterList.h"
#include "parameters/pfParameterPosition.h"
#include "parameters/pfParameterRGB.h"
#include "parameters/pfParameters.h"
#include "support/MemoryStore.h"

namespace mv {
namespace {

class LastUsedSettings : public testing::Test {
protected:
    LastUsedSettings() {
        position.SetName("Place");
        flag.SetName("Flag");
        whole.SetName("Whole");
        number.SetName("Number");
        color.SetName("Color");
        list.SetName("List");
        passing.SetName("Passing");
        passing.SetPersistent(false);
        for (const char* entry : {"a", "b", "c"}) {
            list.AddEntry(entry);
        }
        for (pfParameter* parameter :
             {static_cast<pfParameter*>(&position), static_cast<pfParameter*>(&flag),
              static_cast<pfParameter*>(&whole), static_cast<pfParameter*>(&number),
              static_cast<pfParameter*>(&color), static_cast<pfParameter*>(&list),
              static_cast<pfParameter*>(&passing)}) {
            parameters.Add(parameter);
        }
    }

    pfParameterPosition position;
    pfParameterBool flag;
    pfParameterInt whole;
    pfParameterFloat number;
    pfParameterRGB color;
    pfParameterList list;
    pfParameterFloat passing;
    pfParameters parameters;
    MemoryStore store;
};

TEST_F(LastUsedSettings, WritesEveryPersistentParameterAsRawBytes) {
    position.Set(0.25, 0.75);
    flag.Set(true);
    whole.Set(-7);
    number.Set(1.5);
    color.Set(0.1, 0.2, 0.3);
    list.Set(3);
    WriteLastUsed(parameters, store);
    EXPECT_EQ(store.values.size(), 9u);
    EXPECT_TRUE(store.allBinary);
    EXPECT_EQ(store.Get<double>("Place_X"), 0.25);
    EXPECT_EQ(store.Get<double>("Place_Y"), 0.75);
    EXPECT_EQ(store.Get<std::uint8_t>("Flag"), 1);
    EXPECT_EQ(store.Get<std::int32_t>("Whole"), -7);
    EXPECT_EQ(store.Get<double>("Number"), 1.5);
    EXPECT_EQ(store.Get<double>("Color_red"), 0.1);
    EXPECT_EQ(store.Get<double>("Color_green"), 0.2);
    EXPECT_EQ(store.Get<double>("Color_blue"), 0.3);
    EXPECT_EQ(store.Get<std::int32_t>("List"), 3);
    EXPECT_EQ(store.values.count("Passing"), 0u);
}

TEST_F(LastUsedSettings, ReadsThemBack) {
    store.Put("Place_X", 0.1);
    store.Put("Place_Y", 0.9);
    store.Put("Flag", std::uint8_t{1});
    store.Put("Whole", std::int32_t{12});
    store.Put("Number", -2.5);
    store.Put("Color_red", 0.5);
    store.Put("Color_green", 0.6);
    store.Put("Color_blue", 0.7);
    store.Put("List", std::int32_t{2});
    store.Put("Passing", 9.0);
    ReadLastUsed(parameters, store);
    EXPECT_EQ(position.GetX(), 0.1);
    EXPECT_EQ(position.GetY(), 0.9);
    EXPECT_TRUE(flag.Get());
    EXPECT_EQ(whole.Get(), 12);
    EXPECT_EQ(number.Get(), -2.5);
    EXPECT_EQ(color.GetGreen(), 0.6);
    EXPECT_EQ(list.Get(), 2);
    EXPECT_EQ(passing.Get(), 0.0);
}

TEST_F(LastUsedSettings, AHalfReadPositionOrColorIsNotStored) {
    store.Put("Place_X", 0.1);
    store.Put("Color_red", 0.5);
    store.Put("Color_blue", 0.7);
    ReadLastUsed(parameters, store);
    EXPECT_EQ(position.GetX(), 0.0);
    EXPECT_EQ(color.GetRed(), 1.0);
    EXPECT_EQ(color.GetBlue(), 1.0);
}

TEST_F(LastUsedSettings, AValueOfTheWrongSizeIsNotStored) {
    store.Put("Number", 2.5f);
    store.Put("Whole", std::int64_t{5});
    store.Put("Flag", std::int32_t{1});
    store.Put("List", std::int16_t{2});
    ReadLastUsed(parameters, store);
    EXPECT_EQ(number.Get(), 0.0);
    EXPECT_EQ(whole.Get(), 0);
    EXPECT_FALSE(flag.Get());
    EXPECT_EQ(list.Get(), 1);
}

TEST_F(LastUsedSettings, AListValueOutsideTheEntriesIsDropped) {
    store.Put("List", std::int32_t{4});
    ReadLastUsed(parameters, store);
    EXPECT_EQ(list.Get(), 1);
    store.Put("List", std::int32_t{0});
    ReadLastUsed(parameters, store);
    EXPECT_EQ(list.Get(), 1);
}

TEST_F(LastUsedSettings, TheKeyAndTheNamesAreLiteral) {
    EXPECT_STREQ(kSettingsKey, "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur");
    EXPECT_STREQ(kLastUsedKey, "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur\\LastUsed");
    EXPECT_STREQ(kHideHandle, "Interface HideHandle");
    EXPECT_STREQ(kFixedPreview, "Interface FixedPreview");
    EXPECT_STREQ(kPreviewHeight, "Preview Position Height");
}

}  // namespace
}  // namespace mv
