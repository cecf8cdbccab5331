#include "oracle/Blend.h"

#include <algorithm>
#include <cmath>

namespace oracle {
namespace {

const double kRed = 0.292687786;
const double kGreen = 0.552149646;
const double kBlue = 0.155162568;

enum class Closing { None, Divide, ClampThenDivide, Normalise };

double Luminance(const Shape& shape, const Triple& c) {
    if (shape.colors == 1) {
        return c[0];
    }
    if (shape.colors == 2) {
        return kRed * c[0] + kGreen * c[1];
    }
    return kRed * c[0] + kGreen * c[1] + kBlue * c[2];
}

double Largest(const Shape& shape, const Triple& c) {
    if (shape.colors == 1) {
        return std::max(c[0], 0.0);
    }
    if (shape.colors == 2) {
        return std::max(std::max(c[0], c[1]), 0.0);
    }
    return std::max(std::max(c[0], c[1]), c[2]);
}

// What a mode sees: both pixels weighted by their alphas, in the terms of the formulas.
struct Terms {
    double M;
    double inverse;
    double ad;
    double as;
    Triple P;
    Triple Q;
};

double Overlay(const Terms& t, double P, double s) {
    const double p = P * t.inverse;
    const double q = s * t.inverse;
    if (p >= 0.5) {
        return t.M - 2.0 * t.M * (1.0 - std::min(q, 1.0)) * (1.0 - std::min(p, 1.0));
    }
    return 2.0 * t.M * p * q;
}

Triple HslRow(const Shape& shape, const Terms& t, int mode) {
    Triple back{};
    Triple front{};
    for (int i = 0; i < shape.colors; ++i) {
        const auto k = static_cast<std::size_t>(i);
        back[k] = t.P[k] * t.inverse;
        front[k] = t.Q[k] * t.inverse;
    }
    const Hsl d = RgbToHsl(back);
    const Hsl s = RgbToHsl(front);
    Hsl mixed;
    switch (mode) {
        case 15:
            mixed = {s.hue, s.saturation == 0.0 ? 0.0 : d.saturation, d.lightness};
            break;
        case 16:
            mixed = {d.hue, s.saturation, d.lightness};
            break;
        case 17:
            mixed = {s.hue, s.saturation, d.lightness};
            break;
        default:
            mixed = {s.hue, d.saturation, s.lightness};
            break;
    }
    Triple r = HslToRgb(mixed);
    for (double& c : r) {
        c *= t.M;
    }
    return r;
}

// The rows that work on one channel at a time, for a pixel with alpha.
double WithAlpha(int mode, const Terms& t, double d, double s, double P, double Q, double k) {
    switch (mode) {
        case 1:
            return (1.0 - t.as) * t.ad * d + t.as * s;
        case 2:
            return (P - Q) * k + Q;
        case 3:
            return (1.0 - Q * t.inverse) * P + Q;
        case 4:
            return (Overlay(t, P, s) - P) * t.as + P + (1.0 - t.ad) * Q;
        case 5:
            return P + Q;
        case 6:
            return AtLeastZero(P - Q);
        case 7: {
            const double m = P * s * t.inverse;
            return (P - m) * (1.0 - t.as) + m + (1.0 - t.ad) * Q;
        }
        case 8: {
            const double q = P / (Q * t.inverse + 0.0001);
            return (q - P) * t.as + P;
        }
        case 9:
            return std::fabs(P - Q);
        case 10:
            return (1.0 - Q * t.inverse) * P + (1.0 - P * t.inverse) * Q;
        case 11:
            return std::max(Q, P);
        default: {
            const double m = std::min(Q, P);
            return (m - P) * t.as + P;
        }
    }
}

double WithoutAlpha(int mode, const Terms& t, double d, double s, double k) {
    switch (mode) {
        case 1:
            return s;
        case 2:
            return (d - s) * k + s;
        case 3:
            return (1.0 - s * t.inverse) * d + s;
        case 4:
            return Overlay(t, d, s);
        case 5:
            return d + s;
        case 6:
            return AtLeastZero(d - s);
        case 7:
            return d * s * t.inverse;
        case 8:
            return d / (s * t.inverse + 0.0001);
        case 9:
            return std::fabs(d - s);
        case 10:
            return (1.0 - s * t.inverse) * d + (1.0 - d * t.inverse) * s;
        case 11:
            return std::max(s, d);
        default:
            return std::min(s, d);
    }
}

void Scale(const Shape& shape, Pixel& pixel, double factor) {
    for (int i = 0; i < shape.colors; ++i) {
        pixel.color[static_cast<std::size_t>(i)] *= factor;
    }
}

void Divide(const Shape& shape, const Terms& t, Pixel& D) {
    const double alpha = static_cast<double>(static_cast<float>(D.alpha));
    if (alpha > 0.0001) {
        Scale(shape, D, t.M / alpha);
    }
}

void Normalise(const Shape& shape, const Terms& t, Pixel& D) {
    const double m = static_cast<double>(static_cast<float>(Largest(shape, D.color)));
    const double a = static_cast<double>(static_cast<float>(D.alpha));
    if (m > a) {
        if (m >= t.M || m == 0.0) {
            D.alpha = t.M;
        } else {
            D.alpha = m;
            Scale(shape, D, t.M / m);
        }
    } else if (a > 0.0) {
        Scale(shape, D, t.M / a);
    }
}

void Close(const Shape& shape, const Terms& t, Closing closing, Pixel& D) {
    if (closing == Closing::ClampThenDivide) {
        D.alpha = Clamped(D.alpha, t.M);
    }
    if (closing == Closing::Divide || closing == Closing::ClampThenDivide) {
        Divide(shape, t, D);
    }
    // Gray with alpha ends without this step: meant so.
    if (closing == Closing::Normalise && shape.colors != 1) {
        Normalise(shape, t, D);
    }
}

Closing ClosingOf(int mode) {
    if (mode == 1) {
        return Closing::Divide;
    }
    if (mode == 4) {
        return Closing::ClampThenDivide;
    }
    return mode == 13 || mode == 14 || mode > 18 ? Closing::None : Closing::Normalise;
}

// Rows 19 to 22: the source's luminance becomes alpha.
void AlphaRow(const Shape& shape, const Terms& t, int mode, Pixel& D, const Pixel& S) {
    const double y = Luminance(shape, S.color) * t.as;
    switch (mode) {
        case 19:
            D.alpha = Clamped(D.alpha + y, t.M);
            break;
        case 20:
            D.alpha = AtLeastZero(D.alpha - y);
            break;
        case 21:
            D.alpha = Clamped(y * t.ad, t.M);
            break;
        default:
            D.alpha = Clamped(y, t.M);
            break;
    }
}

Terms MakeTerms(const Shape& shape, const Pixel& D, const Pixel& S) {
    Terms t{};
    t.M = shape.White();
    t.inverse = shape.InverseWhite();
    t.ad = shape.alpha ? D.alpha * t.inverse : 1.0;
    t.as = shape.alpha ? S.alpha * t.inverse : 1.0;
    for (std::size_t i = 0; i < 3; ++i) {
        t.P[i] = D.color[i] * t.ad;
        t.Q[i] = S.color[i] * t.as;
    }
    return t;
}

}  // namespace

void BlendPixels(const Shape& shape, Pixel& D, const Pixel& S, int mode) {
    if (mode < 1 || mode > 22) {
        D = S;
        return;
    }
    const Terms t = MakeTerms(shape, D, S);
    if (mode >= 19) {
        if (shape.alpha) {
            AlphaRow(shape, t, mode, D, S);
        }
        return;
    }
    if (mode == 13 || mode == 14) {
        const double s = Luminance(shape, S.color) * t.as;
        const double d = Luminance(shape, D.color) * t.ad;
        if (mode == 13 ? s > d : s < d) {
            D = S;
        }
        return;
    }

    const bool isHsl = mode >= 15;
    const Triple r = isHsl ? HslRow(shape, t, mode) : Triple{};
    const double k = 1.0 - Largest(shape, S.color) * t.as * t.inverse;
    for (int i = 0; i < shape.colors; ++i) {
        const auto c = static_cast<std::size_t>(i);
        if (isHsl) {
            D.color[c] =
                shape.alpha ? (r[c] - t.P[c]) * t.as + t.P[c] + (1.0 - t.ad) * t.Q[c] : r[c];
        } else {
            D.color[c] = shape.alpha ? WithAlpha(mode, t, D.color[c], S.color[c], t.P[c], t.Q[c], k)
                                     : WithoutAlpha(mode, t, D.color[c], S.color[c], k);
        }
    }
    if (!shape.alpha) {
        return;
    }
    if (mode == 1) {
        D.alpha = (1.0 - t.as) * D.alpha + S.alpha;
    } else if (mode == 7 || isHsl) {
        D.alpha = (1.0 - t.ad) * S.alpha + D.alpha;
    }
    Close(shape, t, ClosingOf(mode), D);
}

}  // namespace oracle
