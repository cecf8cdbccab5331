// Parameter values in the form in which the effect takes them.
#pragma once

#include <cstdint>

namespace mv {

// SelectionShow's entries, counted from 1.
constexpr std::int32_t kShowNormal = 1;
constexpr std::int32_t kShowSelectedImage = 2;
constexpr std::int32_t kShowSelectionOnly = 3;
constexpr std::int32_t kShowSizeSelection = 4;

// Mode's entries.
constexpr std::int32_t kModeNormal = 1;
constexpr std::int32_t kModeAbberative = 2;

// Plain values for one render. Lengths are in pixels of the image in hand, so a preview of a
// reduced picture looks like the final one.
struct RenderSettings {
    double intensity = 1.0;
    double strength = 0.25;
    double zoomStart = 0.5;
    double holdoutPixels = 0.0;
    bool invertGradient = false;
    double hue = 0.0;
    double saturation = 0.0;
    double lightness = 0.0;
    double gammaExponent = 1.0;
    double contrast = 0.0;
    bool adjustOn = false;
    bool gammaOn = true;
    std::int32_t mode = kModeNormal;
    std::int32_t show = kShowNormal;
    std::int32_t blend = 1;
    double centerX = 0.0;
    double centerY = 0.0;
    double selectionLow = 0.0;
    double selectionHigh = 1.0;
    double selectionSoften = 0.0;
    double selectionClimax = 1.0;
    bool useSizeSelection = false;
};

}  // namespace mv
