// The colour selection: how much of each pixel takes part in the blur.
#pragma once

#include "oracle/Color.h"

namespace oracle {

// One of hue, saturation and lightness: a window, the place of its top and how soft it is.
struct Range {
    double low = 0.0;
    double high = 0.0;
    double invSpan = 1.0;
    double peak = 1.0;
    double power = 0.0;
};

struct Ranges {
    Range hue;
    Range saturation;
    Range lightness;
};

Ranges BuildRanges(const Shape& shape, const Settings& settings);

// The weight of a pixel whose colours are given on the channels' own scale.
double EvaluateRanges(const Shape& shape, const Ranges& ranges, const Triple& color);

}  // namespace oracle
