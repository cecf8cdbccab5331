// The two windows' own settings as the store holds them: places, switches, the preset file.
#pragma once

#include <cstdint>
#include <string>

#include "interface/WindowPlacement.h"

namespace mv {

class KeyValueStore;

// Read into from a store; a plain value. What a store does not have stays as it was.
struct InterfaceSettings {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::string presetPath;
    bool showHandle = true;
    bool interruptible = true;
};

// A place counts only whole: a single coordinate is taken, but not pulled onto the screen, as is a
// preset path only with its closing zero. Throws std::bad_alloc when there is no memory for it.
void ReadInterfaceSettings(KeyValueStore& store, ScreenSize virtualScreen,
                           InterfaceSettings& settings);

// The preview's place, of which every value stands for itself; pulled onto the screen when all are
// there.
void ReadPreviewPlacement(KeyValueStore& store, ScreenSize virtualScreen,
                          WindowPlacement& placement) noexcept;

}  // namespace mv
