#include "interface/InterfaceSettings.h"

#include <gtest/gtest.h>

#include <string>

#include "interface/LastUsedSettings.h"
#include "support/MemoryStore.h"

namespace mv {
namespace {

constexpr ScreenSize kScreen = {1000, 800};

TEST(InterfaceSettings, AnEmptyStoreChangesNothing) {
    MemoryStore store;
    InterfaceSettings settings{3, 4, "kept.cfg", false, true};
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_EQ(settings.x, 3);
    EXPECT_EQ(settings.y, 4);
    EXPECT_EQ(settings.presetPath, "kept.cfg");
    EXPECT_FALSE(settings.showHandle);
    EXPECT_TRUE(settings.interruptible);
}

TEST(InterfaceSettings, AWholePlaceIsPulledOntoTheScreen) {
    MemoryStore store;
    store.Put<std::int32_t>(kInterfaceX, -5);
    store.Put<std::int32_t>(kInterfaceY, 801);
    InterfaceSettings settings;
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_EQ(settings.x, 0);
    EXPECT_EQ(settings.y, 750);
}

// Meant as it is: with one half missing, the other one is taken as it stands.
TEST(InterfaceSettings, HalfAPlaceIsTakenAsItIs) {
    MemoryStore store;
    store.Put<std::int32_t>(kInterfaceX, -5);
    store.PutText(kInterfaceY, "123");
    InterfaceSettings settings;
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_EQ(settings.x, -5);
    EXPECT_EQ(settings.y, 0);
}

TEST(InterfaceSettings, SwitchesOfAnotherSizeAreIgnored) {
    MemoryStore store;
    store.PutText(kHideHandle, std::string(4, '\0'));
    store.PutText(kFixedPreview, std::string(1, '\0'));
    InterfaceSettings settings;
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_TRUE(settings.showHandle);
    EXPECT_FALSE(settings.interruptible);
}

TEST(InterfaceSettings, APathNeedsItsClosingZeroWithin256Bytes) {
    MemoryStore store;
    InterfaceSettings settings;
    store.PutText(kPresetPath, std::string(255, 'p') + '\0');
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_EQ(settings.presetPath, std::string(255, 'p'));
    for (const std::size_t length : {256u, 257u, 5000u}) {
        settings.presetPath = "kept";
        store.PutText(kPresetPath, std::string(length, 'p'));
        ReadInterfaceSettings(store, kScreen, settings);
        EXPECT_EQ(settings.presetPath, "kept") << length;
    }
    // A shorter value without the zero ends where its bytes end.
    store.PutText(kPresetPath, "short");
    ReadInterfaceSettings(store, kScreen, settings);
    EXPECT_EQ(settings.presetPath, "short");
}

TEST(InterfaceSettings, ThePreviewsPlaceIsPulledWhenAllOfItIsThere) {
    MemoryStore store;
    store.Put<std::int32_t>(kPreviewX, 1001);
    store.Put<std::int32_t>(kPreviewY, -1);
    store.Put<std::int32_t>(kPreviewWidth, 300);
    WindowPlacement placement = kDefaultPreviewPlacement;
    ReadPreviewPlacement(store, kScreen, placement);
    EXPECT_EQ(placement.x, 1001);
    EXPECT_EQ(placement.y, -1);
    EXPECT_EQ(placement.height, 400);
    store.Put<std::int32_t>(kPreviewHeight, 200);
    store.Put<std::int32_t>(kPreviewState, 3);
    ReadPreviewPlacement(store, kScreen, placement);
    EXPECT_EQ(placement.x, 950);
    EXPECT_EQ(placement.y, 0);
    EXPECT_EQ(placement.width, 300);
    EXPECT_EQ(placement.height, 200);
    EXPECT_TRUE(OpensMaximised(placement.state));
}

}  // namespace
}  // namespace mv
