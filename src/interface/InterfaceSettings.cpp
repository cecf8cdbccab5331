#include "interface/InterfaceSettings.h"

#include <cstring>
#include <iterator>

#include "interface/LastUsedSettings.h"
#include "platform/KeyValueStore.h"

namespace mv {

namespace {

void ReadSwitch(KeyValueStore& store, const char* name, bool& flag) noexcept {
    std::uint8_t value = 0;
    if (store.ReadExactly(name, value)) {
        flag = value != 0;
    }
}

void ReadPresetPath(KeyValueStore& store, std::string& path) {
    char text[kPresetPathCapacity] = {};
    std::uint32_t length = 0;
    if (store.Read(kPresetPath, text, kPresetPathCapacity, length) &&
        std::memchr(text, '\0', std::size(text)) != nullptr) {
        path = text;
    }
}

}  // namespace

void ReadInterfaceSettings(KeyValueStore& store, ScreenSize virtualScreen,
                           InterfaceSettings& settings) {
    const bool hasX = store.ReadExactly(kInterfaceX, settings.x);
    if (store.ReadExactly(kInterfaceY, settings.y) && hasX) {
        PullOntoScreen(settings.x, settings.y, virtualScreen);
    }
    ReadPresetPath(store, settings.presetPath);
    ReadSwitch(store, kHideHandle, settings.showHandle);
    ReadSwitch(store, kFixedPreview, settings.interruptible);
}

void ReadPreviewPlacement(KeyValueStore& store, ScreenSize virtualScreen,
                          WindowPlacement& placement) noexcept {
    const bool hasX = store.ReadExactly(kPreviewX, placement.x);
    const bool hasY = store.ReadExactly(kPreviewY, placement.y);
    const bool hasWidth = store.ReadExactly(kPreviewWidth, placement.width);
    const bool hasHeight = store.ReadExactly(kPreviewHeight, placement.height);
    store.ReadExactly(kPreviewState, placement.state);
    if (hasX && hasY && hasWidth && hasHeight) {
        PullOntoScreen(placement.x, placement.y, virtualScreen);
    }
}

}  // namespace mv
