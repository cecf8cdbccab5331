#include "interface/WindowPlacement.h"

#include "interface/SafeNumber.h"

namespace mv {

namespace {

constexpr std::int32_t kInsideEdge = 50;
constexpr double kTwoThirds = 0.6666666666666666;
constexpr std::uint32_t kMaximisedBits = 3;

void PullAlong(std::int32_t& value, std::int32_t size) noexcept {
    if (value < 0) {
        value = 0;
    }
    if (value > size) {
        value = size - kInsideEdge;
    }
}

}  // namespace

void PullOntoScreen(std::int32_t& x, std::int32_t& y, ScreenSize virtualScreen) noexcept {
    if (virtualScreen.width == 0 || virtualScreen.height == 0) {
        return;
    }
    PullAlong(x, virtualScreen.width);
    PullAlong(y, virtualScreen.height);
}

WindowPlacement FirstPreviewPlacement(ScreenSize screen) noexcept {
    WindowPlacement placement;
    placement.width = TruncateToInt(screen.width * kTwoThirds);
    placement.height = placement.width;
    placement.x = (screen.width - placement.width) / 2;
    placement.y = (screen.height - placement.width) / 2;
    return placement;
}

bool OpensMaximised(std::uint32_t state) noexcept {
    return (state & kMaximisedBits) == kMaximisedBits;
}

}  // namespace mv
