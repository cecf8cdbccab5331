// The blur along the lines through the centre.
#pragma once

#include "oracle/FloatImage.h"
#include "oracle/Oracle.h"

namespace oracle {

struct RaySettings {
    int centreX = 0;
    int centreY = 0;
    double strength = 0.0;
    double zoomStart = 0.0;
    double holdoutPixels = 0.0;
    bool spectral = false;
    bool invertGradient = false;
    Summation summation = Summation::Tables;
};

FloatImage BlurAlongRays(const FloatImage& image, const Shape& shape, const RaySettings& settings);

}  // namespace oracle
