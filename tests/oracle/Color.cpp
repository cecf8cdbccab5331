#include "oracle/Color.h"

#include <algorithm>
#include <cmath>

namespace oracle {
namespace {

// One channel of the wheel, rounded to single precision as the conversion does.
double RoundedChannel(double m1, double m2, double hue) {
    return static_cast<double>(static_cast<float>(HueChannel(m1, m2, hue)));
}

double IntegerPower(double base, unsigned exponent) {
    double result = 1.0;
    while (exponent != 0) {
        if ((exponent & 1u) != 0) {
            result *= base;
        }
        base *= base;
        exponent >>= 1;
    }
    return result;
}

double EffectiveSaturation(double amount, const Triple& c) {
    if (!(amount > 0.0)) {
        return amount;
    }
    const double p = IntegerPower(amount, 100000000u);
    const double spread =
        std::max(std::max(std::fabs(c[0] - c[2]), std::fabs(c[0] - c[1])), std::fabs(c[1] - c[2]));
    const double g = std::pow(1e-8, spread);
    return (1.0 - g) * amount * (1.0 - p) + p * amount;
}

void AdjustHsl(const Shape& shape, const Settings& settings, Pixel& pixel) {
    Triple c{};
    for (int i = 0; i < shape.colors; ++i) {
        c[static_cast<std::size_t>(i)] =
            pixel.color[static_cast<std::size_t>(i)] * shape.InverseWhite();
    }
    Hsl hsl = RgbToHsl(c);
    const double amount = EffectiveSaturation(settings.saturation, c);
    // A hue of exactly 0 keeps its saturation: meant so.
    if (hsl.hue != 0.0) {
        if (amount > 0.0) {
            hsl.saturation = hsl.saturation + (1.0 - hsl.saturation) * amount;
        } else {
            hsl.saturation = hsl.saturation * (amount + 1.0);
        }
    }
    hsl.hue = hsl.hue + 3.0 * settings.hue;
    if (hsl.hue > 6.0) {
        hsl.hue -= 6.0;
    }
    if (!(hsl.hue >= 0.0)) {
        hsl.hue += 6.0;
    }
    c = HslToRgb(hsl);
    const double light = settings.lightness;
    for (int i = 0; i < shape.colors; ++i) {
        double value = c[static_cast<std::size_t>(i)];
        if (light >= 0.0) {
            value = (1.0 - value) * light + value;
        } else {
            value = (light + 1.0) * value;
        }
        pixel.color[static_cast<std::size_t>(i)] = value * shape.White();
    }
}

double GammaExponent(const Settings& settings) {
    return 1.0 / std::max(settings.gammaCorrective, 0.001);
}

double FloatTone(double value, double exponent, bool encode) {
    double v = std::pow(value, exponent);
    if (encode) {
        v = v >= 0.018 ? 1.099 * std::pow(v, 0.45) - 0.099 : 4.5 * v;
    }
    return v;
}

}  // namespace

Hsl RgbToHsl(const Triple& rgb) {
    const double r = rgb[0];
    const double g = rgb[1];
    const double b = rgb[2];
    const double mx = std::max(std::max(r, g), b);
    const double mn = std::min(std::min(r, g), b);
    Hsl hsl;
    hsl.lightness = (mx + mn) * 0.5;
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

double HueChannel(double m1, double m2, double hue) {
    if (hue < 0.0) {
        hue += 6.0;
    } else if (hue > 6.0) {
        hue -= 6.0;
    }
    if (hue < 1.0) {
        return (m2 - m1) * hue + m1;
    }
    if (hue < 3.0) {
        return m2;
    }
    if (hue >= 4.0) {
        return m1;
    }
    return (m2 - m1) * (4.0 - hue) + m1;
}

Triple HslToRgb(const Hsl& hsl) {
    const double s = hsl.saturation;
    const double l = hsl.lightness;
    const double m2 = l > 0.5 ? s + l - s * l : (s + 1.0) * l;
    const double m1 = 2.0 * l - m2;
    if (s != 0.0) {
        return {RoundedChannel(m1, m2, hsl.hue + 2.0), RoundedChannel(m1, m2, hsl.hue),
                RoundedChannel(m1, m2, hsl.hue - 2.0)};
    }
    const double gray = static_cast<double>(static_cast<float>(l));
    return {gray, gray, gray};
}

std::vector<float> GammaTable(const Shape& shape, const Settings& settings) {
    std::vector<float> table(32768);
    const double exponent = GammaExponent(settings);
    for (int i = 0; i < 32768; ++i) {
        float v = static_cast<float>(i) * 3.051851e-5f;
        v = static_cast<float>(std::pow(static_cast<double>(v), exponent));
        if (settings.gammaCorrection) {
            const double wide = static_cast<double>(v);
            v = static_cast<float>(wide >= 0.018 ? 1.099 * std::pow(wide, 0.45) - 0.099
                                                 : 4.5 * wide);
        }
        table[static_cast<std::size_t>(i)] = v * static_cast<float>(shape.White());
    }
    return table;
}

void ColorStage(const Shape& shape, const Settings& settings, const std::vector<float>& table,
                Pixel& pixel) {
    const double white = shape.White();
    const bool isFloat = shape.sample == Sample::Float;
    const double tableScale = shape.sample == Sample::Byte ? 128.49803921568628 : 0.999969482421875;

    if (shape.alpha) {
        pixel.alpha = Clamped(pixel.alpha, white);
    }
    double largest = 0.0;
    for (int i = 0; i < shape.colors; ++i) {
        double& c = pixel.color[static_cast<std::size_t>(i)];
        c = (c + white / 2.0) * settings.contrast + c;
        if (isFloat) {
            c = FloatTone(c, GammaExponent(settings), settings.gammaCorrection);
        } else {
            c = Clamped(c, white);
            c = static_cast<double>(table[static_cast<std::size_t>(c * tableScale)]);
        }
        largest = i == 0 ? c : std::max(largest, c);
    }
    if (shape.alpha) {
        if (largest > pixel.alpha) {
            pixel.alpha = std::min(largest, white);
        }
        const float alpha = static_cast<float>(pixel.alpha);
        if (static_cast<double>(alpha) > 0.0001) {
            for (int i = 0; i < shape.colors; ++i) {
                pixel.color[static_cast<std::size_t>(i)] *= white / static_cast<double>(alpha);
            }
        }
    }
    if (settings.hue != 0.0 || settings.saturation != 0.0 || settings.lightness != 0.0) {
        AdjustHsl(shape, settings, pixel);
    }
}

}  // namespace oracle
