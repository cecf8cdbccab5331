// The colour selection: a weight between 0 and 1 from a pixel's hue, saturation and lightness.
#pragma once

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "effect/HslColor.h"
#include "image/PixelRGB.h"

namespace mv {

// Settings of HslRangeSelectionFilter. Hue in turns, saturation and lightness in 0..1, climax in
// -1..1, soften as the exponent of the weight.
struct HslRangeParams {
    bool showSelection = false;
    bool enabled = true;
    double hueLow = 0.0;
    double hueHigh = 1.0;
    double hueClimax = 1.0;
    double hueSoften = 0.0;
    double satLow = 0.0;
    double satHigh = 1.0;
    double satClimax = 1.0;
    double satSoften = 0.0;
    double lightLow = 0.0;
    double lightHigh = 1.0;
    double lightClimax = 1.0;
    double lightSoften = 0.0;
    double hueOffset = 0.0;
    double satOffset = 0.0;
    double lightOffset = 0.0;
};

// One channel's window: members lie in low..high, the weight peaks at peak of the way.
struct HslRangeWindow {
    double low;
    double high;
    double invSpan;
    double peak;
    double power;
};

struct HslRangeEvaluator {
    bool enabled;
    HslRangeWindow hue;
    HslRangeWindow saturation;
    HslRangeWindow lightness;
};

// A window on a circle: the low end is brought into 0..1, and a full turn takes in every value
// through a margin of 0.00001.
inline HslRangeWindow BuildCircularWindow(double a, double b, double offset, double climax,
                                          double soften) {
    const double lo = std::min(a, b) + offset;
    const double hi = std::max(a, b) + offset;
    const double turns = std::trunc(lo >= 0.0 ? lo : lo - 1.0);
    HslRangeWindow window{lo - turns, hi - turns, 1.0, (climax + 1.0) * 0.5, soften};
    if (window.high >= window.low + 1.0) {
        window.high = window.low + 1.00001;
    }
    if (window.high != window.low) {
        window.invSpan = 1.0 / (window.high - window.low);
    }
    return window;
}

// Float lightness is not limited to 0..1, so its window does not wrap.
inline HslRangeWindow BuildStraightWindow(double a, double b, double offset, double climax,
                                          double soften) {
    HslRangeWindow window{std::min(a, b) + offset, std::max(a, b) + offset, 1.0,
                          (climax + 1.0) * 0.5, soften};
    if (window.high != window.low) {
        window.invSpan = 1.0 / (window.high - window.low);
    }
    return window;
}

// T is the channel type of the pixels that will be evaluated.
template <class T>
HslRangeEvaluator BuildHslRangeEvaluator(const HslRangeParams& params) {
    HslRangeEvaluator evaluator{};
    evaluator.enabled = params.enabled;
    evaluator.hue = BuildCircularWindow(params.hueLow, params.hueHigh, params.hueOffset,
                                        params.hueClimax, params.hueSoften);
    evaluator.saturation = BuildCircularWindow(params.satLow, params.satHigh, params.satOffset,
                                               params.satClimax, params.satSoften);
    constexpr auto buildLightness =
        std::is_same_v<T, float> ? &BuildStraightWindow : &BuildCircularWindow;
    evaluator.lightness = buildLightness(params.lightLow, params.lightHigh, params.lightOffset,
                                         params.lightClimax, params.lightSoften);
    return evaluator;
}

// Membership on a circle. x is shifted by a turn where the window needs it.
inline bool IsInsideCircular(const HslRangeWindow& window, double& x) {
    if (x >= window.low) {
        return x <= window.high;
    }
    x += 1.0;
    return x < window.high;
}

// The tent over the window, raised to the window's power.
inline double WindowWeight(const HslRangeWindow& window, double x) {
    if (!(window.power > 0.0)) {
        return 1.0;
    }
    const double t = (x - window.low) * window.invSpan;
    const double p = window.peak;
    double r = 1.0;
    if (t < p) {
        r = t / p;
    } else if (p != 1.0) {
        r = 1.0 - (t - p) / (1.0 - p);
    }
    return std::pow(r, window.power);
}

// Hue and saturation take in every value at full weight, as the effect sets them.
inline bool DependsOnLightnessAlone(const HslRangeEvaluator& evaluator) {
    const auto isOpen = [](const HslRangeWindow& window) {
        return window.low == 0.0 && window.high > 1.0 && !(window.power > 0.0);
    };
    return evaluator.enabled && isOpen(evaluator.hue) && isOpen(evaluator.saturation);
}

// What EvaluateHslRange gives where the lightness alone decides.
template <class HostPixel>
double EvaluateLightness(const HslRangeEvaluator& evaluator,
                         const typename HostPixel::Channel* colors) {
    constexpr bool isFloat = std::is_same_v<typename HostPixel::Channel, float>;
    double c[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < HostPixel::kColors; ++i) {
        c[i] = static_cast<double>(colors[i]);
        if constexpr (!isFloat) {
            c[i] *= WhiteScale<HostPixel::kWhite>::kInverse;
        }
    }
    const double mx = std::max(std::max(c[0], c[1]), c[2]);
    const double mn = std::min(std::min(c[0], c[1]), c[2]);
    double l = (mx + mn) * 0.5;
    if constexpr (isFloat) {
        l = l >= 0.0 ? l : 0.0;
        if (!(l >= evaluator.lightness.low && l <= evaluator.lightness.high)) {
            return 0.0;
        }
    } else {
        if (!IsInsideCircular(evaluator.lightness, l)) {
            return 0.0;
        }
    }
    return WindowWeight(evaluator.lightness, l);
}

// colors: the colour channels of one pixel in their own type and scale. Gives 0 to 1.
template <class HostPixel>
double EvaluateHslRange(const HslRangeEvaluator& evaluator,
                        const typename HostPixel::Channel* colors) {
    if (!evaluator.enabled) {
        return 0.0;
    }
    constexpr bool isFloat = std::is_same_v<typename HostPixel::Channel, float>;
    ChannelArray<double, HostPixel::kColors> c;
    for (int i = 0; i < HostPixel::kColors; ++i) {
        c[i] = static_cast<double>(colors[i]);
        if constexpr (!isFloat) {
            c[i] *= WhiteScale<HostPixel::kWhite>::kInverse;
        }
    }
    const HslColor hsl = PixelToHsl<HostPixel::kColors>(c);
    double h = hsl.hue * 0.16666666666666666;
    double s = hsl.saturation;
    double l = hsl.lightness;
    if constexpr (isFloat) {
        h = ClampChannel(h, 1.0);
        s = ClampChannel(s, 1.0);
        l = l >= 0.0 ? l : 0.0;
    }
    if (!IsInsideCircular(evaluator.hue, h) || !IsInsideCircular(evaluator.saturation, s)) {
        return 0.0;
    }
    if constexpr (isFloat) {
        if (!(l >= evaluator.lightness.low && l <= evaluator.lightness.high)) {
            return 0.0;
        }
    } else {
        if (!IsInsideCircular(evaluator.lightness, l)) {
            return 0.0;
        }
    }
    double w = 1.0;
    w *= WindowWeight(evaluator.hue, h);
    w *= WindowWeight(evaluator.saturation, s);
    w *= WindowWeight(evaluator.lightness, l);
    return w;
}

}  // namespace mv
