#include "oracle/Window.h"

#include <algorithm>
#include <cmath>

#include "oracle/Color.h"

namespace oracle {
namespace {

// The integral from a to b of the step function whose value on (k - 1, k] is sample k.
double SumUpward(const Line& s, double a, double b, int c) {
    double sum = 0.0;
    for (int k = static_cast<int>(std::floor(a)); k <= static_cast<int>(std::ceil(b)); ++k) {
        const double part =
            std::min(b, static_cast<double>(k)) - std::max(a, static_cast<double>(k) - 1.0);
        if (part > 0.0) {
            sum += part * s.At(k, c);
        }
    }
    return sum;
}

// The same with the value of sample k on [k, k + 1).
double SumDownward(const Line& s, double a, double b, int c) {
    double sum = 0.0;
    for (int k = static_cast<int>(std::floor(a)) - 1; k <= static_cast<int>(std::ceil(b)); ++k) {
        const double part =
            std::min(b, static_cast<double>(k) + 1.0) - std::max(a, static_cast<double>(k));
        if (part > 0.0) {
            sum += part * s.At(k, c);
        }
    }
    return sum;
}

// The means over one segment [a, b] of a window.
class Means {
public:
    Means(const Sums& sums, Summation summation)
        : sums_(sums), direct_(summation == Summation::Direct) {}

    double Box(int c, double a, double b) const {
        if (!(b - a > 1.0)) {
            a = a - (1.0 - (b - a));
        }
        if (direct_) {
            return SumUpward(sums_.s, a, b, c) / (b - a);
        }
        return (sums_.t1.Interpolated(b, c) - sums_.t1.Interpolated(a, c)) / (b - a);
    }

    double Fall(int c, double a, double b) const {
        if (!(b - a >= 1.0)) {
            a = a - (1.0 - (b - a));
        }
        const double m = b - a;
        const double k = std::trunc(m);
        const double f = m - k;
        const double e = b - f;
        const double weight = k * (k + 1.0) / 2.0 + f;
        if (direct_) {
            double sum = 0.0;
            for (int j = 0; j < static_cast<int>(k); ++j) {
                sum += (k - j) * SumUpward(sums_.s, a + j, a + j + 1.0, c);
            }
            return (sum + f * SumUpward(sums_.s, e, e + 1.0, c)) / weight;
        }
        const double n = sums_.t2.Interpolated(e, c) - sums_.t2.Interpolated(a, c) -
                         (e - a) * sums_.t1.Interpolated(a, c) +
                         f * (sums_.t1.Interpolated(e + 1.0, c) - sums_.t1.Interpolated(e, c));
        return n / weight;
    }

    // The fraction takes the middle of two neighbours here and one sample in Fall: meant so.
    double Rise(int c, double a, double b) const {
        if (!(b - a >= 1.0)) {
            b = b + (1.0 - (b - a));
        }
        const double m = b - a;
        const double k = std::trunc(m);
        const double f = m - k;
        const double e = a + f;
        const double weight = k * (k + 1.0) / 2.0 + f;
        if (direct_) {
            double sum = 0.0;
            for (int j = 0; j < static_cast<int>(k); ++j) {
                sum += (j + 1.0) * SumDownward(sums_.s, e + j, e + j + 1.0, c);
            }
            return (sum + f * SumDownward(sums_.s, e - 1.0, e + 1.0, c) / 2.0) / weight;
        }
        const double n =
            sums_.u2.Interpolated(e, c) - sums_.u2.Interpolated(b, c) -
            (b - e) * sums_.u1.Interpolated(b, c) +
            f * (sums_.u1.Interpolated(e - 1.0, c) - sums_.u1.Interpolated(e + 1.0, c)) / 2.0;
        return n / weight;
    }

private:
    const Sums& sums_;
    bool direct_;
};

double OnLine(double border, int n) {
    const double raised = AtLeastZero(border);
    return raised >= n ? n - 1.0 : raised;
}

double Channel0(const Means& means, const double* p, bool invert) {
    if (invert) {
        return ((means.Rise(0, p[4], p[5]) + means.Fall(0, p[1], p[2])) * 0.5 +
                means.Box(0, p[0], p[1])) *
               0.5;
    }
    return ((means.Fall(0, p[0], p[1]) + means.Rise(0, p[3], p[4])) * 0.5 +
            means.Box(0, p[4], p[5])) *
           0.5;
}

double Channel1(const Means& means, const double* p, bool invert) {
    if (invert) {
        return ((means.Fall(1, p[3], p[4]) + means.Rise(1, p[0], p[1])) * 0.5 +
                means.Box(1, p[1], p[2]) + means.Box(1, p[2], p[3])) *
               0.3333333333333333;
    }
    return ((means.Rise(1, p[1], p[2]) + means.Fall(1, p[4], p[5])) * 0.5 +
            means.Box(1, p[3], p[4]) + means.Box(1, p[2], p[3])) *
           0.3333333333333333;
}

double Channel2(const Means& means, const double* p, bool invert) {
    if (invert) {
        return (means.Rise(2, p[2], p[3]) * 0.5 + means.Box(2, p[3], p[4]) +
                means.Box(2, p[4], p[5])) *
               0.4;
    }
    return (means.Fall(2, p[2], p[3]) * 0.5 + means.Box(2, p[1], p[2]) + means.Box(2, p[0], p[1])) *
           0.4;
}

}  // namespace

void PlainWindow(const Sums& sums, double zoomStart, int i, double L, Summation summation,
                 double* values) {
    const int n = sums.n;
    const double t = (zoomStart + 0.5) * L;
    double a = OnLine(i - t, n);
    const double b = OnLine(i - t + L, n);
    if (!(b - a > 1.0)) {
        a = a - (1.0 - (b - a));
    }
    const int ja = static_cast<int>(a + 1.0);
    const double fa = ja - a;
    const int ib = static_cast<int>(b);
    const double fb = b - ib;
    for (int c = 0; c < sums.channels; ++c) {
        double S = 0.0;
        if (summation == Summation::Direct) {
            S = SumUpward(sums.s, a, b, c);
        } else {
            S = (1.0 - fb) * sums.t1.At(ib, c) + fb * sums.t1.At(ib + 1, c) -
                fa * sums.t1.At(ja - 1, c) - (1.0 - fa) * sums.t1.At(ja, c);
        }
        // By the whole length: a window that was cut at the end of the line comes out darker.
        values[c] = L > 1.0 ? S / L : S;
    }
}

void SpectralWindow(const Sums& sums, const Shape& shape, double zoomStart, int i, double L,
                    bool invertGradient, Summation summation, double* values) {
    const int n = sums.n;
    const double w0 = i - (zoomStart + 0.5) * L;
    const double p[6] = {OnLine(w0, n),           OnLine(w0 + 0.2 * L, n), OnLine(w0 + 0.4 * L, n),
                         OnLine(w0 + 0.6 * L, n), OnLine(w0 + 0.8 * L, n), OnLine(w0 + L, n)};
    const Means means(sums, summation);
    values[0] = Channel0(means, p, invertGradient);
    if (shape.colors > 1) {
        values[1] = Channel1(means, p, invertGradient);
    }
    if (shape.colors > 2) {
        values[2] = Channel2(means, p, invertGradient);
    }
    if (shape.alpha) {
        values[shape.colors] = means.Box(shape.colors, p[0], p[5]);
    }
}

}  // namespace oracle
