// A daisy against the light, with the meadow far out of focus.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kHeadX = 510.0;
constexpr double kHeadY = 350.0;
constexpr double kSunX = 960.0;
constexpr double kSunY = 90.0;
constexpr double kPi = 3.14159265358979323846;

Color Meadow(double x, double y) {
    const double height = y / kSceneHeight;
    Color color = Mix({0.10, 0.15, 0.05}, {0.010, 0.028, 0.006}, std::pow(height, 0.7));
    color = color * (0.65 + 0.7 * Noise(x * 0.004, y * 0.005, 2, 61));
    const double distance = std::hypot(x - kSunX, y - kSunY) / kSceneHeight;
    return color + Color{1.0, 0.74, 0.36} * (0.9 * std::exp(-distance * 3.4));
}

// Points of light out of focus are discs.
void PaintDiscs(Canvas& canvas) {
    Random random(23);
    for (int i = 0; i < 95; ++i) {
        const double x = random.Between(0.0, kSceneWidth);
        const double y = random.Between(0.0, kSceneHeight * 0.9);
        const double size = random.Between(14.0, 44.0);
        const double light = std::exp(-std::hypot(x - kSunX, y - kSunY) / 420.0);
        const Color color = Mix({0.10, 0.22, 0.04}, {1.5, 1.05, 0.45}, light * random.Next());
        canvas.Ellipse(x, y, size, size, 0.0, color, random.Between(0.10, 0.34));
    }
}

void PaintPetals(Canvas& canvas, int count, double length, double phase, double light) {
    Random random(static_cast<std::uint32_t>(count) + 400U);
    for (int i = 0; i < count; ++i) {
        const double angle = phase + 2.0 * kPi * i / count + random.Between(-0.06, 0.06);
        const double reach = length * random.Between(0.92, 1.06);
        const double toSun = std::cos(angle - std::atan2(kSunY - kHeadY, kSunX - kHeadX));
        const double glow = light * (0.72 + 0.42 * toSun);
        // From the rim to the middle of a petal it grows thinner and lets more light through.
        for (int layer = 0; layer < 4; ++layer) {
            const double inner = 1.0 - 0.20 * layer;
            const double middle = 52.0 + reach * 0.5;
            const Color color = Mix({0.50, 0.30, 0.42}, {1.25, 1.10, 0.90}, layer / 3.0) * glow;
            canvas.Ellipse(kHeadX + std::cos(angle) * middle, kHeadY + std::sin(angle) * middle,
                           reach * 0.5 * inner, 25.0 * inner, angle, color, 0.9);
        }
    }
}

void PaintHeart(Canvas& canvas) {
    canvas.Ellipse(kHeadX, kHeadY, 66.0, 62.0, 0.3, {0.30, 0.14, 0.015}, 1.0);
    Random random(77);
    for (int i = 0; i < 700; ++i) {
        const double away = 62.0 * std::sqrt(random.Next());
        const double angle = random.Between(0.0, 2.0 * kPi);
        const double x = kHeadX + std::cos(angle) * away;
        const double y = kHeadY + std::sin(angle) * away * 0.94;
        const double lit =
            0.35 + 0.65 * std::clamp((x - y - (kHeadX - kHeadY)) / 120.0 + 0.4, 0.0, 1.0);
        canvas.Ellipse(x, y, 4.2, 3.2, angle,
                       Mix({0.55, 0.28, 0.02}, {1.3, 0.85, 0.10}, random.Next()) * lit, 0.9);
    }
}

}  // namespace

Picture PaintFlower() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) { return Meadow(x, y); });
    PaintDiscs(canvas);
    canvas.Glow(kSunX, kSunY, 150.0, {2.2, 1.7, 1.0});
    canvas.Branch(kHeadX - 70.0, kSceneHeight + 20.0, 26.0, kHeadX, kHeadY, 19.0,
                  {0.060, 0.115, 0.020});
    canvas.Branch(kHeadX - 60.0, kSceneHeight + 20.0, 6.0, kHeadX + 7.0, kHeadY, 5.0,
                  {0.30, 0.36, 0.07});
    PaintPetals(canvas, 19, 205.0, 0.1, 0.75);
    PaintPetals(canvas, 17, 185.0, 0.3, 1.0);
    PaintHeart(canvas);
    return canvas.Develop();
}

}  // namespace mv::host::sample
