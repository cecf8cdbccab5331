// An open road by day, with hills, poles and clouds.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kVanishX = 0.5 * kSceneWidth;
constexpr double kHorizon = 0.47 * kSceneHeight;
constexpr double kFocal = 640.0;
constexpr double kEyeHeight = 1.3;
constexpr double kHalfRoad = 4.2;

Color Sky(double x, double y) {
    const double height = std::clamp(y / kHorizon, 0.0, 1.0);
    const Color blue = Mix({0.045, 0.17, 0.55}, {0.42, 0.58, 0.72}, std::pow(height, 1.5));
    const double cloud = Noise(x * 0.004 + 2.0, (y + 60.0) * 0.012, 6, 12);
    const double cover = std::clamp((cloud - 0.50) * 4.5, 0.0, 1.0);
    const double shade = Noise(x * 0.004 + 2.0, (y + 75.0) * 0.012, 6, 12);
    return Mix(blue, Mix({1.25, 1.20, 1.12}, {0.52, 0.54, 0.60}, shade * 1.2 - 0.2), cover * 0.9);
}

Color Land(double x, double y) {
    Color color = Sky(x, y);
    for (int ridge = 0; ridge < 3; ++ridge) {
        const double top = kHorizon -
                           (95.0 - 32.0 * ridge) *
                               Noise(x * (0.0030 + 0.0022 * ridge), ridge * 5.0, 6,
                                     70U + static_cast<unsigned>(ridge)) *
                               1.5 +
                           8.0;
        if (y > top) {
            const double forest = 0.7 + 0.6 * Noise(x * 0.12, y * 0.12, 3, 80);
            color = Mix(Color{0.42, 0.50, 0.60}, Color{0.055, 0.095, 0.035} * forest,
                        0.35 + 0.28 * ridge);
        }
    }
    return color;
}

Color Ground(double right, double up) {
    const double along = kEyeHeight / -up;
    const double across = right * along;
    const double edge = std::fabs(across) - kHalfRoad;
    Color color;
    if (edge < 0.0) {
        const double grain = 0.75 + 0.5 * Noise(across * 16.0, along * 5.0, 3, 31);
        color = Color{0.050, 0.050, 0.054} * grain;
        color = color * (1.0 - 0.25 * std::exp(-std::pow((std::fabs(across) - 2.0) / 0.45, 2.0)));
        const bool isDash = std::fabs(across) < 0.09 && std::fmod(along, 6.0) < 3.2;
        if (isDash || std::fabs(edge + 0.3) < 0.09) {
            color = {0.95, 0.88, 0.70};
        }
    } else {
        const double patch = Noise(across * 0.5, along * 0.30, 5, 33);
        const double blade = 0.6 + 0.8 * Noise(across * 9.0, along * 6.0, 3, 34);
        color = Mix({0.045, 0.11, 0.012}, {0.26, 0.22, 0.045}, patch * 1.3 - 0.2) * blade;
        color = edge < 0.7 ? Mix({0.30, 0.25, 0.19}, color, edge / 0.7) : color;
    }
    return Mix(Color{0.50, 0.55, 0.58}, color, std::exp(-along / 220.0));
}

void PaintTree(Canvas& canvas, double x, double along, std::uint32_t seed) {
    const double scale = kFocal / along;
    const double px = kVanishX + x * scale;
    const double foot = kHorizon + kEyeHeight * scale;
    const double haze = std::exp(-along / 160.0);
    Random random(seed);
    canvas.Branch(px, foot, 0.5 * scale, px, foot - 3.4 * scale, 0.3 * scale, {0.05, 0.035, 0.022});
    for (int i = 0; i < 260; ++i) {
        const double away = std::sqrt(random.Next()) * 2.3;
        const double angle = random.Between(0.0, 6.2831853);
        const double dx = std::cos(angle) * away;
        const double dy = std::sin(angle) * away * 1.1;
        const double lit = 0.35 + 0.65 * std::clamp(0.5 - (dx + dy) / 4.0, 0.0, 1.0);
        const Color leaf = Mix({0.030, 0.070, 0.012}, {0.22, 0.30, 0.06}, random.Next()) * lit;
        canvas.Ellipse(px + dx * scale, foot - 5.0 * scale + dy * scale, 0.42 * scale, 0.30 * scale,
                       angle, Mix({0.50, 0.55, 0.58}, leaf, haze), 0.85);
    }
}

void PaintPost(Canvas& canvas, double x, double along) {
    const double scale = kFocal / along;
    const double px = kVanishX + x * scale;
    const double foot = kHorizon + kEyeHeight * scale;
    const double width = std::max(1.0, 0.13 * scale);
    canvas.Branch(px, foot, width, px, foot - 1.0 * scale, width, {0.85, 0.84, 0.80});
    canvas.Branch(px, foot - 0.78 * scale, width, px, foot - 0.62 * scale, width,
                  {0.65, 0.06, 0.03});
}

}  // namespace

Picture PaintRoad() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) {
        const double right = (x + 0.5 - kVanishX) / kFocal;
        const double up = (kHorizon - y - 0.5) / kFocal;
        return up < -1e-4 ? Ground(right, up) : Land(x, y);
    });
    Random random(14);
    for (int i = 16; i >= 0; --i) {
        const double along = 11.0 + 9.0 * i;
        const double left = random.Between(7.5, 14.0);
        const double right = random.Between(7.5, 14.0);
        PaintTree(canvas, -left, along, 300U + static_cast<std::uint32_t>(i));
        PaintTree(canvas, right, along + 4.0, 600U + static_cast<std::uint32_t>(i));
        PaintPost(canvas, -4.9, along - 3.0);
        PaintPost(canvas, 4.9, along - 3.0);
    }
    return canvas.Develop();
}

}  // namespace mv::host::sample
