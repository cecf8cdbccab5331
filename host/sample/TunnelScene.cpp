// A road tunnel: rings of lamps that lead to one point.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kFocal = 620.0;
constexpr double kRadius = 5.5;
constexpr double kEyeHeight = 1.6;
constexpr double kLampGap = 5.0;

// Brightness of the nearest lamps on a place of the wall.
double LampLight(double along) {
    const double phase = along / kLampGap - std::floor(along / kLampGap) - 0.5;
    return 0.35 + 0.65 * std::exp(-phase * phase * 18.0);
}

Color Wall(double right, double up) {
    const double away = std::max(std::hypot(right, up), 1e-4);
    const double along = kRadius / away;
    const double angle = std::atan2(up, right);
    const double haze = std::exp(-along / 150.0);
    const double joint = std::fmod(along, 2.5) < 0.08 ? 0.5 : 1.0;
    const double dirt = 0.55 + 0.6 * Noise(along * 0.9, angle * 9.0, 4, 15);
    Color color =
        Mix({0.055, 0.030, 0.012}, {0.012, 0.020, 0.028}, 0.5 + 0.5 * std::sin(angle * 2.0));
    color = color * (LampLight(along) * dirt * joint);
    // Two rows of lamps under the roof, a lit band at the height of the hand.
    for (const double row : {1.05, 2.09}) {
        const double phase = std::fmod(along, kLampGap) / kLampGap;
        if (std::fabs(angle - row) < 0.035 && phase > 0.25 && phase < 0.6) {
            color = color + Color{1.0, 0.80, 0.48} * 5.0;
        }
    }
    const bool isBand = std::fabs(angle - 0.02) < 0.014 || std::fabs(angle - 3.12) < 0.014;
    if (isBand) {
        color = color + Color{0.02, 0.35, 0.95} * 0.5;
    }
    return Mix(Color{0.60, 0.72, 0.95}, color, haze);
}

Color RoadSurface(double right, double up) {
    const double along = kEyeHeight / -up;
    const double across = right * along;
    const double grain = 0.7 + 0.6 * Noise(across * 12.0, along * 3.0, 3, 23);
    Color color = Color{0.012, 0.011, 0.010} * (grain * (0.5 + LampLight(along)));
    color = color + Wall(right, -up * 1.1) * 0.22;
    const bool isDash = std::fabs(across) < 0.09 && std::fmod(along, 5.0) < 2.6;
    const bool isEdge = std::fabs(std::fabs(across) - 3.7) < 0.10;
    if (isDash || isEdge) {
        color = color + Color{0.42, 0.38, 0.30} * LampLight(along);
    }
    return Mix(Color{0.60, 0.72, 0.95}, color, std::exp(-along / 150.0));
}

}  // namespace

Picture PaintTunnel() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) {
        const double right = (x + 0.5 - kSceneWidth / 2.0) / kFocal;
        const double up = (kSceneHeight * 0.5 - y - 0.5) / kFocal;
        const double wall = kRadius / std::max(std::hypot(right, up), 1e-4);
        const bool seesRoad = up < 0.0 && kEyeHeight / -up < wall;
        return seesRoad ? RoadSurface(right, up) : Wall(right, up);
    });
    for (int i = 9; i >= 0; --i) {
        const double along = 14.0 + 9.0 * i + (i % 3) * 2.0;
        for (const double x : {1.2, 2.5}) {
            const double px = kSceneWidth / 2.0 + x * kFocal / along;
            const double py = kSceneHeight / 2.0 + (kEyeHeight - 0.8) * kFocal / along;
            canvas.Glow(px, py, 70.0 * kFocal / along / 60.0, {0.20, 0.010, 0.006});
            canvas.Ellipse(px, py, 0.2 * kFocal / along, 0.12 * kFocal / along, 0.0,
                           {4.0, 0.10, 0.06}, 1.0);
        }
    }
    return canvas.Develop();
}

}  // namespace mv::host::sample
