#include "oracle/HslSelection.h"

#include <algorithm>
#include <cmath>

namespace oracle {
namespace {

Range BuildRange(double a, double b, double climax, double soften, bool wraps) {
    Range range;
    range.low = std::min(a, b);
    range.high = std::max(a, b);
    if (wraps) {
        const double whole = std::trunc(range.low >= 0.0 ? range.low : range.low - 1.0);
        range.low -= whole;
        range.high -= whole;
        if (range.high >= range.low + 1.0) {
            range.high = range.low + 1.00001;
        }
    }
    range.invSpan = range.high == range.low ? 1.0 : 1.0 / (range.high - range.low);
    range.peak = (climax + 1.0) * 0.5;
    range.power = soften;
    return range;
}

// Moves x by a turn where the window wraps around.
bool InsideWrapped(const Range& range, double& x) {
    if (x >= range.low) {
        return x <= range.high;
    }
    x += 1.0;
    return x < range.high;
}

double Weight(const Range& range, double x) {
    if (!(range.power > 0.0)) {
        return 1.0;
    }
    const double t = (x - range.low) * range.invSpan;
    double r = 1.0;
    if (t < range.peak) {
        r = t / range.peak;
    } else if (range.peak != 1.0) {
        r = 1.0 - (t - range.peak) / (1.0 - range.peak);
    }
    return std::pow(r, range.power);
}

}  // namespace

Ranges BuildRanges(const Shape& shape, const Settings& settings) {
    Ranges ranges;
    ranges.hue = BuildRange(0.0, 1.0, 1.0, 0.0, true);
    ranges.saturation = ranges.hue;
    ranges.lightness = BuildRange(
        settings.selectionLow * 0.00392156862745098, settings.selectionHigh * 0.00392156862745098,
        settings.selectionClimax, settings.selectionSoften, shape.sample != Sample::Float);
    return ranges;
}

double EvaluateRanges(const Shape& shape, const Ranges& ranges, const Triple& color) {
    Triple c{};
    for (int i = 0; i < shape.colors; ++i) {
        c[static_cast<std::size_t>(i)] = color[static_cast<std::size_t>(i)] * shape.InverseWhite();
    }
    const Hsl hsl = RgbToHsl(c);
    double h = hsl.hue * 0.16666666666666666;
    double s = hsl.saturation;
    double l = hsl.lightness;
    const bool isFloat = shape.sample == Sample::Float;
    if (isFloat) {
        h = Clamped(h, 1.0);
        s = Clamped(s, 1.0);
        l = AtLeastZero(l);
    }
    if (!InsideWrapped(ranges.hue, h) || !InsideWrapped(ranges.saturation, s)) {
        return 0.0;
    }
    if (isFloat) {
        if (!(l >= ranges.lightness.low && l <= ranges.lightness.high)) {
            return 0.0;
        }
    } else if (!InsideWrapped(ranges.lightness, l)) {
        return 0.0;
    }
    double w = 1.0;
    w *= Weight(ranges.hue, h);
    w *= Weight(ranges.saturation, s);
    w *= Weight(ranges.lightness, l);
    return w;
}

}  // namespace oracle
