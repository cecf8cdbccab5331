// Where the two windows stand when they open.
#pragma once

#include <cstdint>

namespace mv {

struct ScreenSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

struct WindowPlacement {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t state = 0;
};

// A stored place goes back onto the screens: below 0 to 0, also where a monitor stands on the
// left of the first one, and beyond the far edge to 50 pixels inside it. Without a screen size
// nothing is changed.
void PullOntoScreen(std::int32_t& x, std::int32_t& y, ScreenSize virtualScreen) noexcept;

// The preview where nothing has been stored for it yet, but something else has.
constexpr WindowPlacement kDefaultPreviewPlacement = {200, 200, 400, 400, 0};

// The preview of the very first run: a square of two thirds of the screen's width. It may reach
// beyond the top and bottom of a wide screen, and then starts above it.
WindowPlacement FirstPreviewPlacement(ScreenSize screen) noexcept;

// The low two bits of a stored show state say maximised when both are set.
bool OpensMaximised(std::uint32_t state) noexcept;

}  // namespace mv
