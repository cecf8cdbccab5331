// The hue, saturation, lightness model and the colour stage behind the blur.
#pragma once

#include <array>
#include <vector>

#include "oracle/Oracle.h"

namespace oracle {

using Triple = std::array<double, 3>;

struct Hsl {
    double hue = 0.0;  // in sextants
    double saturation = 0.0;
    double lightness = 0.0;
};

// A pixel in double precision: up to three colours in front, alpha in a place of its own.
struct Pixel {
    Triple color{};
    double alpha = 0.0;
};

// Everything that is not at least 0, a NaN too, becomes 0.
inline double AtLeastZero(double value) {
    return value >= 0.0 ? value : 0.0;
}

inline double Clamped(double value, double white) {
    const double low = AtLeastZero(value);
    return low > white ? white : low;
}

Hsl RgbToHsl(const Triple& rgb);
double HueChannel(double m1, double m2, double hue);
Triple HslToRgb(const Hsl& hsl);

// The curve behind the blur for 8 and 16 bit, over an index of 0 to 32767.
std::vector<float> GammaTable(const Shape& shape, const Settings& settings);

// Contrast, tone curve, back to straight colour, hue, saturation and lightness.
void ColorStage(const Shape& shape, const Settings& settings, const std::vector<float>& table,
                Pixel& pixel);

}  // namespace oracle
