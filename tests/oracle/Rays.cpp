#include "oracle/Rays.h"

#include <algorithm>
#include <cmath>

#include "oracle/Color.h"
#include "oracle/Line.h"
#include "oracle/Window.h"

namespace oracle {
namespace {

// One ray, reduced to its walk: along which axis, from where, how many steps.
struct Walk {
    bool alongX = false;
    int start = 0;
    int step = 1;
    int count = 0;
    double minor = 0.0;
    double slope = 0.0;
    double entryDistance = 0.0;
};

struct Entry {
    double x;
    double y;
};

bool TruncatedInside(double value, int size) {
    const double whole = std::trunc(value);
    return whole >= 0.0 && whole < size;
}

Entry FindEntry(int ox, int oy, int width, int height, double mx, double my) {
    int ix = 0;
    int iy = 0;
    if (ox < 0) {
        ix = -ox;
    }
    if (ox >= width) {
        ix = width - ox - 1;
    }
    if (oy < 0) {
        iy = -oy;
    }
    if (oy >= height) {
        iy = height - oy - 1;
    }
    const Entry throughRow{ox + std::abs(iy) * mx, static_cast<double>(oy + iy)};
    const Entry throughColumn{static_cast<double>(ox + ix), oy + std::abs(ix) * my};
    if (!TruncatedInside(throughRow.x, width) || !TruncatedInside(throughRow.y, height)) {
        return throughColumn;
    }
    if (throughColumn.x >= 0.0 && throughColumn.x < width && throughColumn.y >= 0.0 &&
        throughColumn.y < height) {
        const double distanceRow =
            std::min(std::fabs(oy - throughRow.y), std::fabs(ox - throughRow.x));
        const double distanceColumn =
            std::min(std::fabs(oy - throughColumn.y), std::fabs(ox - throughColumn.x));
        if (distanceColumn < distanceRow) {
            return throughColumn;
        }
    }
    return throughRow;
}

Walk PlanWalk(int ox, int oy, int ex, int ey, int width, int height) {
    const double dx = static_cast<double>(ex) - ox;
    const double dy = static_cast<double>(ey) - oy;
    const double mx = dy != 0.0 ? dx / std::fabs(dy) : dx;
    const double my = dx != 0.0 ? dy / std::fabs(dx) : dy;
    const Entry entry = FindEntry(ox, oy, width, height, mx, my);

    Walk walk;
    if (ox < 0 || ox >= width || oy < 0 || oy >= height) {
        walk.entryDistance =
            std::sqrt((entry.x - ox) * (entry.x - ox) + (entry.y - oy) * (entry.y - oy));
    }
    walk.alongX = std::fabs(dx) > std::fabs(dy);
    walk.step = (walk.alongX ? dx : dy) < 0.0 ? -1 : 1;
    walk.start = static_cast<int>(walk.alongX ? entry.x : entry.y);
    walk.minor = walk.alongX ? entry.y : entry.x;
    walk.slope = walk.alongX ? my : mx;
    const int stop = (walk.alongX ? ex : ey) + walk.step;
    walk.count = std::max(0, (stop - walk.start) * walk.step);
    return walk;
}

// Repeated addition leaves a border coordinate a hair outside; it counts as the border.
double Settled(double minor) {
    return minor < 0.0 && minor > -1e-6 ? 0.0 : minor;
}

class Blur {
public:
    Blur(const FloatImage& image, const Shape& shape, const RaySettings& settings)
        : image_(image),
          shape_(shape),
          settings_(settings),
          sums_(image.width, image.height, image.channels),
          weights_(image.width, image.height, 1) {}

    FloatImage Run() {
        const int w = image_.width;
        const int h = image_.height;
        if (settings_.centreY >= 0) {
            for (int k = 1; k <= w - 1; ++k) {
                CastRay(k, 0);
            }
        }
        if (settings_.centreX < w) {
            for (int k = 1; k <= h - 1; ++k) {
                CastRay(w - 1, k);
            }
        }
        if (settings_.centreY < h) {
            for (int k = 1; k <= w - 1; ++k) {
                CastRay(w - k - 1, h - 1);
            }
        }
        if (settings_.centreX >= 0) {
            for (int k = 1; k <= h - 1; ++k) {
                CastRay(0, h - k - 1);
            }
        }
        return Normalised();
    }

private:
    int MinorSize(const Walk& walk) const { return walk.alongX ? image_.height : image_.width; }

    float Sample(const Walk& walk, int major, int minor, int c) const {
        return walk.alongX ? image_.At(major, minor, c) : image_.At(minor, major, c);
    }

    void SampleLine(const Walk& walk, Line& line) const {
        const int size = MinorSize(walk);
        double minor = walk.minor;
        int major = walk.start;
        for (int k = 0; k < walk.count; ++k) {
            const double place = Settled(minor);
            const double m = std::floor(place);
            for (int c = 0; c < image_.channels; ++c) {
                if (m >= 0.0 && m < size) {
                    const double t = place - m;
                    const int here = static_cast<int>(m);
                    const int next = here == size - 1 ? here : here + 1;
                    line.At(k, c) = static_cast<double>(Sample(walk, major, here, c)) * (1.0 - t) +
                                    static_cast<double>(Sample(walk, major, next, c)) * t;
                } else {
                    line.At(k, c) =
                        static_cast<double>(Sample(walk, major, m < 0.0 ? 0 : size - 1, c));
                }
            }
            major += walk.step;
            minor += walk.slope;
        }
    }

    void Add(const Walk& walk, int major, int minor, double part, const double* values) {
        const int x = walk.alongX ? major : minor;
        const int y = walk.alongX ? minor : major;
        for (int c = 0; c < image_.channels; ++c) {
            float& sum = sums_.At(x, y, c);
            sum = static_cast<float>(static_cast<double>(sum) + part * values[c]);
        }
        float& weight = weights_.At(x, y, 0);
        weight = weight + static_cast<float>(part);
    }

    void Scatter(const Walk& walk, const Sums& sums) {
        const int size = MinorSize(walk);
        const double unit = std::sqrt(1.0 + walk.slope * walk.slope);
        const double r0 = walk.entryDistance / unit;
        const double holdout = settings_.holdoutPixels / unit;
        double minor = walk.minor;
        int major = walk.start;
        for (int i = 0; i < walk.count; ++i) {
            const double L = AtLeastZero((r0 + i - holdout) * settings_.strength);
            double values[kMaxChannels] = {};
            if (settings_.spectral) {
                SpectralWindow(sums, shape_, settings_.zoomStart, i, L, settings_.invertGradient,
                               settings_.summation, values);
            } else {
                PlainWindow(sums, settings_.zoomStart, i, L, settings_.summation, values);
            }
            const double place = Settled(minor);
            const double m = std::floor(place);
            if (m >= 0.0 && m < size) {
                const double t = place - m;
                const int here = static_cast<int>(m);
                Add(walk, major, here, 1.0 - t, values);
                Add(walk, major, here == size - 1 ? here : here + 1, t, values);
            }
            major += walk.step;
            minor += walk.slope;
        }
    }

    void CastRay(int ex, int ey) {
        const Walk walk =
            PlanWalk(settings_.centreX, settings_.centreY, ex, ey, image_.width, image_.height);
        if (walk.count == 0) {
            return;
        }
        Sums sums(walk.count, image_.channels);
        SampleLine(walk, sums.s);
        sums.Build();
        Scatter(walk, sums);
    }

    FloatImage Normalised() const {
        FloatImage result(image_.width, image_.height, image_.channels);
        for (int y = 0; y < image_.height; ++y) {
            for (int x = 0; x < image_.width; ++x) {
                const double weight = static_cast<double>(weights_.At(x, y, 0));
                const double f = weight != 0.0 ? 1.0 / weight : 0.0;
                for (int c = 0; c < image_.channels; ++c) {
                    result.At(x, y, c) =
                        static_cast<float>(static_cast<double>(sums_.At(x, y, c)) * f);
                }
            }
        }
        return result;
    }

    const FloatImage& image_;
    const Shape& shape_;
    const RaySettings& settings_;
    FloatImage sums_;
    FloatImage weights_;
};

}  // namespace

FloatImage BlurAlongRays(const FloatImage& image, const Shape& shape, const RaySettings& settings) {
    return Blur(image, shape, settings).Run();
}

}  // namespace oracle
