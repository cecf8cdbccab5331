// The colour stage of the effect pixel: contrast, tone curve, un-premultiplying, HSL adjustment.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "effect/HslColor.h"
#include "effect/TransferFunction.h"
#include "image/PixelRGB.h"

namespace mv {

struct ColorStageSettings {
    double contrast;
    double gammaExponent;
    bool gammaOn;
    bool adjustOn;
    double hue;
    double saturation;
    double lightness;
    // 32768 entries, for the integer types; float pixels compute the curve.
    const float* gammaTable;
};

// x to the power 100000000, by repeated squaring.
inline double PowerOfHundredMillion(double x) {
    double result = 1.0;
    for (std::uint32_t exponent = 100000000; exponent != 0; exponent >>= 1, x *= x) {
        if ((exponent & 1u) != 0) {
            result *= x;
        }
    }
    return result;
}

// How much of a positive saturation change reaches a pixel: almost none where its channels are
// nearly equal, all at exactly 1.
inline double EffectiveSaturation(double x, double c0, double c1, double c2) {
    const double power = PowerOfHundredMillion(x);
    const double spread =
        std::max(std::max(std::fabs(c0 - c2), std::fabs(c0 - c1)), std::fabs(c1 - c2));
    const double grayness = std::pow(1e-8, spread);
    return (1.0 - grayness) * x * (1.0 - power) + power * x;
}

// Changes the colours c (scale 0..white) in place; each amount is -1..1. Pixels whose hue is
// exactly 0 keep their saturation: grays, and reds with equal green and blue. It is meant.
template <int colors, int white>
void AdjustHsl(double* c, double hue, double saturation, double lightness) {
    double n[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < colors; ++i) {
        n[i] = c[i] * WhiteScale<white>::kInverse;
    }
    HslColor hsl = RgbToHsl(n[0], n[1], n[2]);
    double x = saturation;
    if (x > 0.0) {
        x = EffectiveSaturation(x, n[0], n[1], n[2]);
    }
    if (hsl.hue != 0.0) {
        if (x > 0.0) {
            hsl.saturation += (1.0 - hsl.saturation) * x;
        } else {
            hsl.saturation *= x + 1.0;
        }
    }
    hsl.hue += 3.0 * hue;
    if (hsl.hue > 6.0) {
        hsl.hue -= 6.0;
    }
    if (!(hsl.hue >= 0.0)) {
        hsl.hue += 6.0;
    }
    const RgbColor rgb = HslToRgb(hsl);
    const double adjusted[3] = {rgb.red, rgb.green, rgb.blue};
    for (int i = 0; i < colors; ++i) {
        const double value = adjusted[i];
        const double lit =
            lightness >= 0.0 ? (1.0 - value) * lightness + value : (lightness + 1.0) * value;
        c[i] = lit * WhiteScale<white>::kWhite;
    }
}

template <class HostPixel>
inline double ToneCurve(double c, const ColorStageSettings& settings) {
    if constexpr (std::is_same_v<typename HostPixel::Channel, float>) {
        const double v = std::pow(c, settings.gammaExponent);
        return settings.gammaOn ? EncodeRec709(v) : v;
    } else {
        const auto index =
            static_cast<std::int32_t>(c * WhiteScale<HostPixel::kWhite>::kGammaIndex);
        return settings.gammaTable[std::min(index, kGammaTableSize - 1)];
    }
}

// A pixel whose colour exceeds its alpha lifts the alpha; then weighted colour becomes straight.
template <class HostPixel>
inline void Unpremultiply(double* pixel) {
    constexpr double white = WhiteScale<HostPixel::kWhite>::kWhite;
    double& alpha = pixel[HostPixel::kAlphaIndex];
    const double m = *std::max_element(pixel, pixel + HostPixel::kColors);
    // Both values at hand, since which of them it is cannot be foretold.
    const double lifted = std::min(m, white);
    alpha = m > alpha ? lifted : alpha;
    const double rounded = static_cast<float>(alpha);
    if (rounded > kAlphaGuard) {
        const double factor = white / rounded;
        for (int i = 0; i < HostPixel::kColors; ++i) {
            pixel[i] *= factor;
        }
    }
}

// What follows the tone curve: alpha, straight colours, HSL.
template <class HostPixel>
void FinishColorStage(double* pixel, const ColorStageSettings& settings) {
    if constexpr (HostPixel::kHasAlpha) {
        pixel[HostPixel::kAlphaIndex] =
            ClampChannel(pixel[HostPixel::kAlphaIndex], WhiteScale<HostPixel::kWhite>::kWhite);
        Unpremultiply<HostPixel>(pixel);
    }
    if (settings.adjustOn) {
        AdjustHsl<HostPixel::kColors, HostPixel::kWhite>(pixel, settings.hue, settings.saturation,
                                                         settings.lightness);
    }
}

// pixel: colours and then alpha of the blurred pixel, weighted, 0..white; straight afterwards.
template <class HostPixel>
void ApplyColorStage(double* pixel, const ColorStageSettings& settings) {
    using Scale = WhiteScale<HostPixel::kWhite>;
    constexpr bool isFloat = std::is_same_v<typename HostPixel::Channel, float>;
    for (int i = 0; i < HostPixel::kColors; ++i) {
        double c = (pixel[i] + Scale::kHalf) * settings.contrast + pixel[i];
        if constexpr (!isFloat) {
            c = ClampChannel(c, Scale::kWhite);
        }
        pixel[i] = ToneCurve<HostPixel>(c, settings);
    }
    FinishColorStage<HostPixel>(pixel, settings);
}

}  // namespace mv
