// HSL conversions, with hue in sextants (0 up to but not including 6). After the usual
// hexcone-with-lightness model (Joblove and Greenberg, 1978).
#pragma once

#include <algorithm>

namespace mv {

// The luminance weights of the whole system. They sum to exactly 1.
constexpr double kLuminanceRed = 0.292687786;
constexpr double kLuminanceGreen = 0.552149646;
constexpr double kLuminanceBlue = 0.155162568;

struct HslColor {
    double hue;
    double saturation;
    double lightness;
};

struct RgbColor {
    double red;
    double green;
    double blue;
};

// Inputs are expected in 0..1; gray gives hue 0 and saturation 0.
inline HslColor RgbToHsl(double r, double g, double b) {
    const double mx = std::max(std::max(r, g), b);
    const double mn = std::min(std::min(r, g), b);
    HslColor hsl{0.0, 0.0, (mx + mn) * 0.5};
    if (mx == mn) {
        return hsl;
    }
    const double d = mx - mn;
    hsl.saturation = hsl.lightness > 0.5 ? d / (2.0 - mx - mn) : d / (mx + mn);
    if (r == mx) {
        hsl.hue = (g - b) / d;
    } else if (g == mx) {
        hsl.hue = (b - r) / d + 2.0;
    } else {
        hsl.hue = (r - g) / d + 4.0;
    }
    if (!(hsl.hue >= 0.0)) {
        hsl.hue += 6.0;
    }
    return hsl;
}

inline double HslHueChannel(double m1, double m2, double h) {
    if (h < 0.0) {
        h += 6.0;
    } else if (h > 6.0) {
        h -= 6.0;
    }
    if (h < 1.0) {
        return (m2 - m1) * h + m1;
    }
    if (h < 3.0) {
        return m2;
    }
    if (h >= 4.0) {
        return m1;
    }
    return (m2 - m1) * (4.0 - h) + m1;
}

// Every result is rounded to single precision and widened again; that is meant.
inline RgbColor HslToRgb(const HslColor& hsl) {
    const auto rounded = [](double value) {
        return static_cast<double>(static_cast<float>(value));
    };
    const double h = hsl.hue;
    const double s = hsl.saturation;
    const double l = hsl.lightness;
    if (s == 0.0) {
        return {rounded(l), rounded(l), rounded(l)};
    }
    const double m2 = l > 0.5 ? s + l - s * l : (s + 1.0) * l;
    const double m1 = 2.0 * l - m2;
    return {rounded(HslHueChannel(m1, m2, h + 2.0)), rounded(HslHueChannel(m1, m2, h)),
            rounded(HslHueChannel(m1, m2, h - 2.0))};
}

// The HSL triple of a pixel with so many colours: (v, 0, 0) for gray, (c0, c1, 0) for two
// channels. It is meant that a gray pixel is no gray here but a pure first colour.
template <int colors>
inline HslColor PixelToHsl(const double* c) {
    return RgbToHsl(c[0], colors > 1 ? c[colors > 1 ? 1 : 0] : 0.0,
                    colors > 2 ? c[colors > 2 ? 2 : 0] : 0.0);
}

// Luminance of the colours: a gray pixel is its own, two channels use the first two weights.
template <int colors>
inline double PixelLuminance(const double* c) {
    if constexpr (colors == 1) {
        return c[0];
    } else if constexpr (colors == 2) {
        return kLuminanceRed * c[0] + kLuminanceGreen * c[1];
    } else {
        return kLuminanceRed * c[0] + kLuminanceGreen * c[1] + kLuminanceBlue * c[2];
    }
}

// The largest channel; with fewer than three colours the absent ones count as 0.
template <int colors>
inline double PixelMaximum(const double* c) {
    if constexpr (colors == 1) {
        return std::max(c[0], 0.0);
    } else if constexpr (colors == 2) {
        return std::max(std::max(c[0], c[1]), 0.0);
    } else {
        return std::max(std::max(c[0], c[1]), c[2]);
    }
}

}  // namespace mv
