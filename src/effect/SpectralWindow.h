// The windows of the "abberative" blur: five segments, and means over them from running sums.
#pragma once

#include <cmath>
#include <cstdint>

namespace mv {

// Running sums of a line, channels interleaved, entries -2 to n + 2. up1 and up2 sum upward, once
// and twice; down1 and down2 downward.
struct SpectralTables {
    const double* up1;
    const double* up2;
    const double* down1;
    const double* down2;
};

// A part of a window on the line, from a to b, in samples.
struct Segment {
    double a;
    double b;
};

// Means over segments of one line with so many channels. Short segments are made one sample long.
// lanes: how many lines lie interleaved.
template <int channels, int lanes>
class SegmentMeans {
public:
    explicit SegmentMeans(const SpectralTables& tables) : tables_(tables) {}

    double Box(int c, Segment segment) const {
        double a = segment.a;
        const double b = segment.b;
        if (!(b - a > 1.0)) {
            a = a - (1.0 - (b - a));
        }
        return (At(tables_.up1, c, b) - At(tables_.up1, c, a)) / (b - a);
    }

    // Weights run from high at a down to low at b.
    double Fall(int c, Segment segment) const {
        double a = segment.a;
        const double b = segment.b;
        if (!(b - a >= 1.0)) {
            a = a - (1.0 - (b - a));
        }
        const double m = b - a;
        const double k = std::trunc(m);
        const double f = m - k;
        const double e = b - f;
        const double sum = At(tables_.up2, c, e) - At(tables_.up2, c, a) -
                           (e - a) * At(tables_.up1, c, a) +
                           f * (At(tables_.up1, c, e + 1.0) - At(tables_.up1, c, e));
        return sum / (k * (k + 1.0) / 2.0 + f);
    }

    // Weights run from low at a up to high at b. The fractional term averages two samples where
    // Fall takes one: they are no mirror images, and that is meant.
    double Rise(int c, Segment segment) const {
        const double a = segment.a;
        double b = segment.b;
        if (!(b - a >= 1.0)) {
            b = b + (1.0 - (b - a));
        }
        const double m = b - a;
        const double k = std::trunc(m);
        const double f = m - k;
        const double e = a + f;
        const double sum =
            At(tables_.down2, c, e) - At(tables_.down2, c, b) - (b - e) * At(tables_.down1, c, b) +
            f * (At(tables_.down1, c, e - 1.0) - At(tables_.down1, c, e + 1.0)) / 2.0;
        return sum / (k * (k + 1.0) / 2.0 + f);
    }

private:
    static double At(const double* table, int c, double x) {
        const double floor = std::floor(x);
        const double f = x - floor;
        const double* entry = table + (static_cast<std::ptrdiff_t>(floor) * channels + c) * lanes;
        return (1.0 - f) * entry[0] + f * entry[channels * lanes];
    }

    const SpectralTables& tables_;
};

// The six borders of a window, cut to the line of n samples.
struct SpectralBorders {
    double p[6];

    Segment Between(int first, int last) const { return {p[first], p[last]}; }
};

inline double CutToLine(double border, std::int32_t n) {
    if (!(border >= 0.0)) {
        return 0.0;
    }
    return border >= n ? n - 1 : border;
}

inline SpectralBorders MakeSpectralBorders(double length, double zoomStart, std::int32_t i,
                                           std::int32_t n) {
    const double w0 = i - (zoomStart + 0.5) * length;
    return {{CutToLine(w0, n), CutToLine(w0 + 0.2 * length, n), CutToLine(w0 + 0.4 * length, n),
             CutToLine(w0 + 0.6 * length, n), CutToLine(w0 + 0.8 * length, n),
             CutToLine(w0 + length, n)}};
}

// The channel values of the pixel at index i of a line of n samples, for a window of length
// samples. Each colour has a piecewise-linear response over the segments A to E that sums to 1;
// the first colour appears at both ends. Alpha, behind the colours, is the plain mean.
template <int colors, int channels, int lanes = 1>
void SpectralWindow(double* out, double length, double zoomStart, std::int32_t i, std::int32_t n,
                    const SpectralTables& tables, bool invertGradient) {
    const SpectralBorders borders = MakeSpectralBorders(length, zoomStart, i, n);
    const SegmentMeans<channels, lanes> mean(tables);
    const Segment a = borders.Between(0, 1);
    const Segment b = borders.Between(1, 2);
    const Segment c = borders.Between(2, 3);
    const Segment d = borders.Between(3, 4);
    const Segment e = borders.Between(4, 5);
    if (invertGradient) {
        out[0] = ((mean.Rise(0, e) + mean.Fall(0, b)) * 0.5 + mean.Box(0, a)) * 0.5;
    } else {
        out[0] = ((mean.Fall(0, a) + mean.Rise(0, d)) * 0.5 + mean.Box(0, e)) * 0.5;
    }
    if constexpr (colors > 1) {
        const double third = 0.3333333333333333;
        if (invertGradient) {
            out[1] = ((mean.Fall(1, d) + mean.Rise(1, a)) * 0.5 + mean.Box(1, b) + mean.Box(1, c)) *
                     third;
        } else {
            out[1] = ((mean.Rise(1, b) + mean.Fall(1, e)) * 0.5 + mean.Box(1, d) + mean.Box(1, c)) *
                     third;
        }
    }
    if constexpr (colors > 2) {
        if (invertGradient) {
            out[2] = (mean.Rise(2, c) * 0.5 + mean.Box(2, d) + mean.Box(2, e)) * 0.4;
        } else {
            out[2] = (mean.Fall(2, c) * 0.5 + mean.Box(2, b) + mean.Box(2, a)) * 0.4;
        }
    }
    if constexpr (channels > colors) {
        out[colors] = mean.Box(colors, borders.Between(0, 5));
    }
}

}  // namespace mv
