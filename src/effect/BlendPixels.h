// The 23 blend modes. They work on alpha-weighted values, and several rows part from what other
// image editors do; all of it is meant.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "effect/HslColor.h"
#include "image/PixelRGB.h"

namespace mv {

// BlendMode's entries, counted from 1. 23 and every unknown value replace the pixel.
enum BlendModeValue : std::int32_t {
    kBlendNormal = 1,
    kBlendMaxWeight = 2,
    kBlendScreen = 3,
    kBlendOverlay = 4,
    kBlendAddition = 5,
    kBlendSubtraction = 6,
    kBlendMultiply = 7,
    kBlendDivide = 8,
    kBlendDifference = 9,
    kBlendExclusion = 10,
    kBlendLighten = 11,
    kBlendDarken = 12,
    kBlendMaximum = 13,
    kBlendMinimum = 14,
    kBlendHue = 15,
    kBlendSaturation = 16,
    kBlendColor = 17,
    kBlendLuminosity = 18,
    kBlendAlphaAdd = 19,
    kBlendAlphaSub = 20,
    kBlendAlphaMult = 21,
    kBlendAlphaReplace = 22,
};

// A dark source is never divided by less than this.
constexpr double kDivideGuard = 0.0001;

// Blends one pixel family: colours and then alpha in doubles, 0..white, straight.
template <int colors, bool alpha, int white>
class PixelBlender {
    using Scale = WhiteScale<white>;
    static constexpr double kM = Scale::kWhite;
    static constexpr double kInverseM = Scale::kInverse;
    static constexpr int kChannels = colors + (alpha ? 1 : 0);

public:
    // d: the backdrop, replaced by the result; s: the source.
    PixelBlender(double* d, const double* s) : d_(d), s_(s) {
        if constexpr (alpha) {
            backdropAlpha_ = d[colors] * kInverseM;
            sourceAlpha_ = s[colors] * kInverseM;
        }
        for (int i = 0; i < colors; ++i) {
            p_[i] = alpha ? d[i] * backdropAlpha_ : d[i];
            q_[i] = alpha ? s[i] * sourceAlpha_ : s[i];
        }
    }

    void Run(std::int32_t mode) {
        if (mode >= kBlendMaximum && mode <= kBlendMinimum) {
            SwapByLuminance(mode);
        } else if (mode >= kBlendAlphaAdd && mode <= kBlendAlphaReplace) {
            LuminanceToAlpha(mode);
        } else if (mode < kBlendNormal || mode > kBlendAlphaReplace) {
            std::copy(s_, s_ + kChannels, d_);
        } else {
            BlendColors(mode);
            if constexpr (alpha) {
                Close(mode);
            }
        }
    }

private:
    void BlendColors(std::int32_t mode) {
        if (mode >= kBlendHue && mode <= kBlendLuminosity) {
            BlendHsl(mode);
            return;
        }
        const double maxWeight = 1.0 - PixelMaximum<colors>(s_) * sourceAlpha_ * kInverseM;
        for (int i = 0; i < colors; ++i) {
            d_[i] = BlendChannel(mode, i, maxWeight);
        }
    }

    double BlendChannel(std::int32_t mode, int i, double maxWeight) const {
        const double p = p_[i];
        const double q = q_[i];
        switch (mode) {
            case kBlendNormal:
                return alpha ? (1.0 - sourceAlpha_) * backdropAlpha_ * d_[i] + sourceAlpha_ * s_[i]
                             : s_[i];
            case kBlendMaxWeight:
                return (p - q) * maxWeight + q;
            case kBlendScreen:
                return (1.0 - q * kInverseM) * p + q;
            case kBlendOverlay:
                return MixOver(Overlay(p, s_[i]), p, q);
            case kBlendAddition:
                return p + q;
            case kBlendSubtraction:
                return p - q >= 0.0 ? p - q : 0.0;
            case kBlendMultiply:
                return Multiply(p, q, s_[i]);
            case kBlendDivide:
                return Divide(p, q);
            case kBlendDifference:
                return std::fabs(p - q);
            case kBlendExclusion:
                return (1.0 - q * kInverseM) * p + (1.0 - p * kInverseM) * q;
            case kBlendLighten:
                return std::max(q, p);
            default:
                return Darken(p, q);
        }
    }

    // The branch looks at the backdrop.
    static double Overlay(double p, double s) {
        const double backdrop = p * kInverseM;
        const double source = s * kInverseM;
        if (backdrop >= 0.5) {
            return kM - 2.0 * kM * (1.0 - std::min(source, 1.0)) * (1.0 - std::min(backdrop, 1.0));
        }
        return 2.0 * kM * backdrop * source;
    }

    double MixOver(double value, double p, double q) const {
        if constexpr (alpha) {
            return (value - p) * sourceAlpha_ + p + (1.0 - backdropAlpha_) * q;
        }
        return value;
    }

    double Multiply(double p, double q, double s) const {
        const double m = p * s * kInverseM;
        if constexpr (alpha) {
            return (p - m) * (1.0 - sourceAlpha_) + m + (1.0 - backdropAlpha_) * q;
        }
        return m;
    }

    double Divide(double p, double q) const {
        const double quotient = p / (q * kInverseM + kDivideGuard);
        return alpha ? (quotient - p) * sourceAlpha_ + p : quotient;
    }

    double Darken(double p, double q) const {
        const double m = std::min(q, p);
        return alpha ? (m - p) * sourceAlpha_ + p : m;
    }

    void BlendHsl(std::int32_t mode) {
        ChannelArray<double, colors> backdrop;
        ChannelArray<double, colors> source;
        for (int i = 0; i < colors; ++i) {
            backdrop[i] = p_[i] * kInverseM;
            source[i] = q_[i] * kInverseM;
        }
        const HslColor d = PixelToHsl<colors>(backdrop);
        const HslColor s = PixelToHsl<colors>(source);
        HslColor mixed{};
        switch (mode) {
            case kBlendHue:
                // The source's saturation is a gate alone.
                mixed = {s.hue, s.saturation == 0.0 ? 0.0 : d.saturation, d.lightness};
                break;
            case kBlendSaturation:
                mixed = {d.hue, s.saturation, d.lightness};
                break;
            case kBlendColor:
                mixed = {s.hue, s.saturation, d.lightness};
                break;
            default:
                mixed = {s.hue, d.saturation, s.lightness};
                break;
        }
        const RgbColor rgb = HslToRgb(mixed);
        const double r[3] = {rgb.red * kM, rgb.green * kM, rgb.blue * kM};
        for (int i = 0; i < colors; ++i) {
            d_[i] = MixOver(r[i], p_[i], q_[i]);
        }
    }

    // Whole pixels by luminance: raw colours and alpha. Equal luminances keep the backdrop.
    void SwapByLuminance(std::int32_t mode) {
        const double source = PixelLuminance<colors>(s_) * sourceAlpha_;
        const double backdrop = PixelLuminance<colors>(d_) * backdropAlpha_;
        if (mode == kBlendMaximum ? source > backdrop : source < backdrop) {
            std::copy(s_, s_ + kChannels, d_);
        }
    }

    void LuminanceToAlpha(std::int32_t mode) {
        if constexpr (alpha) {
            const double y = PixelLuminance<colors>(s_) * sourceAlpha_;
            double& a = d_[colors];
            switch (mode) {
                case kBlendAlphaAdd:
                    a = ClampChannel(a + y, kM);
                    break;
                case kBlendAlphaSub:
                    a = a - y >= 0.0 ? a - y : 0.0;
                    break;
                case kBlendAlphaMult:
                    a = ClampChannel(y * backdropAlpha_, kM);
                    break;
                default:
                    a = ClampChannel(y, kM);
                    break;
            }
        } else {
            static_cast<void>(mode);
        }
    }

    // Alpha and the closing step, behind the colours.
    void Close(std::int32_t mode) {
        double& a = d_[colors];
        if (mode == kBlendNormal) {
            a = (1.0 - sourceAlpha_) * a + s_[colors];
            DivideByAlpha();
            return;
        }
        if (mode == kBlendOverlay) {
            a = ClampChannel(a, kM);
            DivideByAlpha();
            return;
        }
        if (mode == kBlendMultiply || (mode >= kBlendHue && mode <= kBlendLuminosity)) {
            a = (1.0 - backdropAlpha_) * s_[colors] + a;
        }
        // Gray pixels with alpha stay alpha-weighted here.
        if constexpr (colors > 1) {
            Normalize();
        }
    }

    void ScaleColors(double factor) {
        for (int i = 0; i < colors; ++i) {
            d_[i] *= factor;
        }
    }

    void DivideByAlpha() {
        const double rounded = static_cast<float>(d_[colors]);
        if (rounded > kAlphaGuard) {
            ScaleColors(kM / rounded);
        }
    }

    // Colour above its alpha lifts the alpha; what is brighter than white becomes opaque as it is.
    void Normalize() {
        const double m = static_cast<float>(PixelMaximum<colors>(d_));
        const double a = static_cast<float>(d_[colors]);
        if (m > a) {
            if (m >= kM || m == 0.0) {
                d_[colors] = kM;
            } else {
                d_[colors] = m;
                ScaleColors(kM / m);
            }
        } else if (a > 0.0) {
            ScaleColors(kM / a);
        }
    }

    double* d_;
    const double* s_;
    ChannelArray<double, colors> p_;
    ChannelArray<double, colors> q_;
    double backdropAlpha_ = 1.0;
    double sourceAlpha_ = 1.0;
};

// Combines the source into the backdrop in place. Both hold straight colours, then alpha where
// HostPixel has it, in 0..white; values beyond are legal. mode counts from 1.
template <class HostPixel>
inline void BlendPixels(double* backdrop, const double* source, std::int32_t mode) {
    PixelBlender<HostPixel::kColors, HostPixel::kHasAlpha, HostPixel::kWhite>(backdrop, source)
        .Run(mode);
}

}  // namespace mv
