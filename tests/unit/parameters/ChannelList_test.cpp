// pfParameterList::FillChannelList.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "parameters/pfParameterList.h"
#include "support/AllocationFault.h"

namespace mv::test {

namespace {

struct Document {
    std::int16_t imageMode;
    std::int16_t planes;
    std::int16_t layerPlanes;
    std::int16_t transparency;
    std::int16_t layerMasks = 0;
    std::int16_t otherPlanes = 0;
};

std::vector<std::string> Channels(const Document& document) {
    hostapi::FilterRecord record{};
    record.imageMode = document.imageMode;
    record.planes = document.planes;
    record.inLayerPlanes = document.layerPlanes;
    record.inTransparencyMask = document.transparency;
    record.inLayerMasks = document.layerMasks;
    record.inNonLayerPlanes = document.otherPlanes;
    pfParameterList list;
    list.AddEntry("goes away");
    list.FillChannelList(&record);
    std::vector<std::string> result;
    result.reserve(static_cast<std::size_t>(list.GetEntryCount()));
    for (int i = 0; i < list.GetEntryCount(); ++i) {
        result.push_back(list.GetEntry(i));
    }
    return result;
}

using Names = std::vector<std::string>;

}  // namespace

TEST(ChannelList, NamesTheColoursOfAFlatColourImage) {
    // A flat image has its colours as planes that belong to no layer.
    EXPECT_EQ(
        Channels(
            {.imageMode = 3, .planes = 3, .layerPlanes = 0, .transparency = 0, .otherPlanes = 3}),
        (Names{" none", "red", "green", "blue"}));
}

TEST(ChannelList, NamesTransparencyAndCountsTheOtherPlanes) {
    EXPECT_EQ(
        Channels(
            {.imageMode = 11, .planes = 6, .layerPlanes = 3, .transparency = 1, .otherPlanes = 2}),
        (Names{" none", "red", "green", "blue", "transparency", "alpha 0", "alpha 1"}));
}

TEST(ChannelList, TakesThePlanesWhenNothingElseSaysHowManyThereAre) {
    EXPECT_EQ(Channels({.imageMode = 7, .planes = 5, .layerPlanes = 0, .transparency = 0}),
              (Names{" none", "red", "green", "blue", "alpha 0", "alpha 1"}));
    EXPECT_EQ(Channels({.imageMode = 14, .planes = 2, .layerPlanes = 0, .transparency = 0}),
              (Names{" none", "red", "green"}));
}

TEST(ChannelList, TheGrayChannelIsCalledRedAndIsThereWithoutColours) {
    // Meant as it is.
    EXPECT_EQ(Channels({.imageMode = 1, .planes = 1, .layerPlanes = 1, .transparency = 0}),
              (Names{" none", "red"}));
    EXPECT_EQ(Channels({.imageMode = 10, .planes = 3, .layerPlanes = 3, .transparency = 0}),
              (Names{" none", "red", "alpha 0", "alpha 1"}));
    EXPECT_EQ(Channels({.imageMode = 1, .planes = 0, .layerPlanes = 0, .transparency = 0}),
              (Names{" none", "red"}));
}

TEST(ChannelList, OtherModesHaveNoChannels) {
    const std::int16_t modes[] = {-1, 0, 2, 4, 5, 6, 8, 9, 12, 13, 15, 16, 17};
    for (const std::int16_t mode : modes) {
        EXPECT_EQ(Channels({.imageMode = mode, .planes = 4, .layerPlanes = 3, .transparency = 1}),
                  Names{" none"})
            << mode;
    }
}

TEST(ChannelList, ANullRecordLeavesTheEmptyEntryAlone) {
    pfParameterList list;
    list.FillChannelList(nullptr);
    EXPECT_EQ(list.GetEntryCount(), 1);
    EXPECT_EQ(list.GetEntry(0), " none");
}

TEST(ChannelList, EndsEarlyWithoutMemory) {
    hostapi::FilterRecord record{};
    record.imageMode = 3;
    record.planes = 3;
    record.inLayerPlanes = 3;
    for (long n = 1;; ++n) {
        pfParameterList list;
        bool happened = false;
        {
            const AllocationFault fault(n);
            list.FillChannelList(&record);
            happened = fault.Happened();
        }
        if (!happened) {
            EXPECT_EQ(list.GetEntryCount(), 4);
            break;
        }
        EXPECT_LT(list.GetEntryCount(), 4);
    }
}

}  // namespace mv::test
