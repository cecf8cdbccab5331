// Evening light over a lake, seen through trees. There is a strong light with dark gaps in front of
// it, smooth gradients and fine detail, so that a blur shows well.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1067;
constexpr double kSunX = 0.3;
constexpr double kSunY = 0.25;
constexpr double kHorizon = 0.62;
constexpr double kPi = 3.14159265358979323846;

constexpr Color kSunColor = {1.0, 0.74, 0.38};

double DistanceToSun(double x, double y) {
    return std::hypot((x - kSunX) * kWidth, (y - kSunY) * kHeight) / kHeight;
}

Color Sky(double x, double y) {
    const double height = std::clamp(y / kHorizon, 0.0, 1.0);
    Color color = Mix({0.035, 0.085, 0.21}, {0.62, 0.27, 0.10}, std::pow(height, 1.8));
    const double cloud = Noise(x * 5.0 + 3.0, y * 16.0, 5, 11);
    const double cover = std::clamp((cloud - 0.50) * 4.0, 0.0, 1.0) * (1.0 - 0.4 * height);
    color = Mix(color, {0.62, 0.27, 0.17}, cover * 0.6);
    const double distance = DistanceToSun(x, y);
    const double glow = 1.9 * std::exp(-distance * 5.5) + 0.38 * std::exp(-distance * 1.7);
    const double disc = 9.0 / (1.0 + std::exp((distance - 0.035) * 400.0));
    return color + kSunColor * (glow + disc);
}

// Ridges one behind the other, hazier with distance.
bool Hills(double x, double y, Color& color) {
    bool inside = false;
    for (int ridge = 0; ridge < 4; ++ridge) {
        const double nearness = (ridge + 1) / 4.0;
        const double rough = 3.0 + ridge * 2.5;
        const double top = kHorizon - 0.14 + 0.035 * ridge -
                           0.13 * (1.0 - 0.45 * nearness) *
                               Noise(x * rough, ridge * 7.3, 6, 40U + static_cast<unsigned>(ridge));
        if (y > top && y < kHorizon) {
            const Color haze = Mix({0.80, 0.38, 0.17}, {0.15, 0.12, 0.17},
                                   std::min(1.0, 1.7 * std::fabs(x - kSunX)));
            const double forest = 0.6 + 0.8 * Noise(x * 160.0, y * 160.0, 2, 60);
            const Color slope = Color{0.014, 0.017, 0.016} * forest;
            color = Mix(haze, slope, 0.22 + 0.70 * nearness);
            inside = true;
        }
    }
    return inside;
}

Color Land(double x, double y) {
    Color color = Sky(x, y);
    Hills(x, y, color);
    return color;
}

// A mirror with ripples, which the low sun turns into sparks.
Color Lake(double x, double y) {
    const double depth = (y - kHorizon) / (1.0 - kHorizon);
    const double ripple =
        (Noise(x * 22.0 / (0.15 + depth), y * 240.0 / (0.3 + depth), 3, 91) - 0.5) *
        (0.004 + 0.10 * depth);
    const double mirrored = std::clamp(kHorizon - (y - kHorizon) * 0.95 + ripple, 0.0, 1.0);
    Color color = Land(std::clamp(x + ripple * 0.4, 0.0, 1.0), mirrored) * (0.62 - 0.2 * depth);
    const double column = std::exp(-std::pow((x - kSunX) / (0.02 + 0.06 * depth), 2.0));
    const double spark =
        Noise(x * 130.0, y * 420.0 / (0.4 + depth), 2, 97) * std::min(1.0, depth * 12.0);
    color = color + kSunColor * (column * std::pow(spark, 6.0) * 22.0);
    return color + Color{0.004, 0.010, 0.016};
}

void PaintBackground(Canvas& canvas) {
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double u = (x + 0.5) / kWidth;
            const double v = (y + 0.5) / kHeight;
            canvas.At(x, y) = v < kHorizon ? Land(u, v) : Lake(u, v);
        }
    }
}

// A leaf lets light through where the sun stands behind it. The canopy is thin there, so that the
// sun shines through its gaps.
void PaintLeaf(Canvas& canvas, Random& random, double x, double y) {
    const double distance = DistanceToSun(x / kWidth, y / kHeight);
    if (random.Next() > 0.12 + distance * 6.0) {
        return;
    }
    // One draw to a statement: the order of draws inside of one is the compiler's choice.
    const double light = 0.06 + 1.3 * std::exp(-distance * 3.6) * random.Next();
    const Color color = Mix({0.05, 0.10, 0.015}, {0.42, 0.30, 0.03}, random.Next() * 0.8) * light;
    const double size = random.Between(2.0, 5.5);
    const double slimness = random.Between(0.35, 0.6);
    const double angle = random.Between(0.0, kPi);
    canvas.Ellipse(x, y, size, size * slimness, angle, color, random.Between(0.8, 1.0));
}

void Grow(Canvas& canvas, Random& random, double x, double y, double angle, double length,
          double width, int depth) {
    const double x1 = x + std::cos(angle) * length;
    const double y1 = y + std::sin(angle) * length;
    const double distance = DistanceToSun(x1 / kWidth, y1 / kHeight);
    const Color bark = Color{0.010, 0.007, 0.005} + kSunColor * (0.05 * std::exp(-distance * 4.0));
    canvas.Branch(x, y, width, x1, y1, width * 0.72, bark);
    if (depth <= 3) {
        const int leaves = depth == 0 ? 16 : 5;
        for (int i = 0; i < leaves; ++i) {
            const double leafX = x1 + random.Between(-26.0, 26.0);
            PaintLeaf(canvas, random, leafX, y1 + random.Between(-22.0, 22.0));
        }
    }
    if (depth == 0) {
        return;
    }
    const int children = random.Next() < 0.35 ? 3 : 2;
    for (int i = 0; i < children; ++i) {
        const double side = children == 2 ? i * 2.0 - 1.0 : i - 1.0;
        const double spread = random.Between(0.25, 0.62);
        const double turn = random.Between(-0.12, 0.12);
        const double shrink = random.Between(0.68, 0.86);
        Grow(canvas, random, x1, y1, angle + side * spread + turn, length * shrink, width * 0.68,
             depth - 1);
    }
}

void PaintTrees(Canvas& canvas) {
    struct Tree {
        double x;
        double foot;
        double lean;
        double length;
        double width;
        int depth;
        std::uint32_t seed;
    };
    constexpr Tree kTrees[] = {{0.56, 0.92, 0.05, 92.0, 12.0, 7, 5},
                               {0.985, 1.06, -0.14, 215.0, 30.0, 8, 33},
                               {0.86, 1.08, -0.10, 235.0, 44.0, 9, 21},
                               {0.185, 1.10, 0.05, 262.0, 52.0, 9, 8}};
    for (const Tree& tree : kTrees) {
        Random random(tree.seed);
        Grow(canvas, random, tree.x * kWidth, tree.foot * kHeight, -kPi / 2.0 + tree.lean,
             tree.length, tree.width, tree.depth);
    }
}

double Shore(double x) {
    const double middle = std::exp(-std::pow((x - 0.62) / 0.30, 2.0));
    return 0.775 + 0.135 * middle + 0.03 * Noise(x * 6.0, 0.5, 4, 120);
}

void PaintShore(Canvas& canvas) {
    for (int x = 0; x < kWidth; ++x) {
        const double u = (x + 0.5) / kWidth;
        const int top = static_cast<int>(Shore(u) * kHeight);
        for (int y = top; y < kHeight; ++y) {
            const double ground = Noise(x * 0.05, y * 0.12, 5, 130);
            const double warm = std::exp(-DistanceToSun(u, static_cast<double>(y) / kHeight));
            canvas.At(x, y) =
                Mix({0.018, 0.024, 0.010}, {0.13, 0.085, 0.035}, ground * ground * warm * 1.6);
        }
    }
    Random random(17);
    for (int i = 0; i < 5200; ++i) {
        const double u = random.Next();
        const double depth = std::pow(random.Next(), 0.8);
        const double y = (Shore(u) + depth * (1.02 - Shore(u))) * kHeight;
        const double blade = random.Between(8.0, 26.0) * (0.5 + depth);
        const double warm = std::exp(-1.4 * std::fabs(u - kSunX));
        const Color color =
            Mix({0.022, 0.040, 0.012}, {0.34, 0.24, 0.07}, random.Next() * random.Next() * warm);
        canvas.Branch(u * kWidth, y, 1.8 + depth, u * kWidth + random.Between(-9.0, 9.0), y - blade,
                      0.3, color);
    }
    for (int i = 0; i < 260; ++i) {
        const double u = random.Next();
        const double y = (Shore(u) + random.Between(0.02, 0.2)) * kHeight;
        const bool white = random.Next() < 0.5;
        const double longer = random.Between(1.5, 3.8);
        const double shorter = random.Between(1.2, 2.6);
        canvas.Ellipse(u * kWidth, y, longer, shorter, 0.0,
                       white ? Color{0.75, 0.68, 0.60} : Color{0.75, 0.16, 0.10}, 0.9);
    }
}

}  // namespace

Picture PaintLake() {
    Canvas canvas(kWidth, kHeight);
    PaintBackground(canvas);
    PaintShore(canvas);
    PaintTrees(canvas);
    return canvas.Develop();
}

}  // namespace mv::host::sample
