// The whole effect computed a second time: plain code with the pixel format as run-time values, on
// one thread, one pixel and one ray after the other. The module's bytes are compared with these.
#pragma once

#include <cstdint>

#include "oracle/FloatImage.h"
#include "oracle/Shape.h"

namespace oracle {

// The settings as the filter holds them after validation, in the units of its parameters.
struct Settings {
    double originX = 0.5;
    double originY = 0.5;
    double intensity = 1.0;
    double strength = 0.25;
    double zoomStart = 0.5;
    double holdoutRadius = 0.0;
    int mode = 1;
    bool invertGradient = false;
    bool gammaCorrection = true;
    double contrast = 0.0;
    double gammaCorrective = 1.0;
    double hue = 0.0;
    double saturation = 0.0;
    double lightness = 0.0;
    double selectionLow = 0.0;
    double selectionHigh = 255.0;
    double selectionSoften = 0.0;
    double selectionClimax = 1.0;
    bool useSizeSelection = false;
    int blendMode = 1;
    int selectionShow = 1;
};

// Pulls every value back to its enforced bounds, as the filter does before it renders.
Settings Validated(Settings settings);

// One render. The pixel distance counts all planes of the host, also those that are not touched.
struct Job {
    int width = 0;
    int height = 0;
    Shape shape;
    int planes = 0;
    const unsigned char* input = nullptr;
    std::int64_t inputRowBytes = 0;
    unsigned char* output = nullptr;
    std::int64_t outputRowBytes = 0;
    const unsigned char* mask = nullptr;
    std::int64_t maskRowBytes = 0;
    Settings settings;
};

// How the means over windows are formed: from running sums, or by adding every sample of each
// window. Both are the same numbers but for rounding.
enum class Summation { Tables, Direct };

// The float images between the stages, for those who want to look inside a render.
struct Stages {
    FloatImage selected;
    FloatImage prepared;
    FloatImage blurred;
};

void Render(const Job& job, Summation summation = Summation::Tables, Stages* stages = nullptr);

}  // namespace oracle
