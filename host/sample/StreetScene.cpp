// A wet street at night: one vanishing point, many small lights, and their reflections.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kVanishX = 0.5 * kSceneWidth;
constexpr double kVanishY = 0.45 * kSceneHeight;
constexpr double kFocal = 700.0;
constexpr double kEyeHeight = 1.7;
constexpr double kHalfStreet = 10.0;
constexpr double kBlock = 14.0;

constexpr Color kLamp = {1.0, 0.62, 0.26};

double Cell(double a, double b, std::uint32_t seed) {
    return Noise(std::floor(a) * 13.37 + 0.31, std::floor(b) * 7.77 + 0.77, 1, seed);
}

Color SignColor(double choice) {
    constexpr Color kSigns[] = {{0.95, 0.15, 0.32},
                                {0.12, 0.55, 0.98},
                                {0.98, 0.55, 0.10},
                                {0.20, 0.90, 0.55},
                                {0.75, 0.25, 0.95}};
    return kSigns[static_cast<std::size_t>(choice * 97.0) % std::size(kSigns)];
}

Color Sky(double up) {
    return Mix({0.055, 0.035, 0.055}, {0.006, 0.010, 0.026}, std::clamp(up * 2.2, 0.0, 1.0));
}

// A house front: shops below, windows above, of which some are lit.
Color Front(double side, double along, double height) {
    const double house = std::floor(along / kBlock) + side * 100.0;
    const double shade = 0.5 + Cell(house, 1.0, 5);
    Color color = Color{0.009, 0.0075, 0.010} * shade;
    if (height < 4.0) {
        const bool isGlass = std::fmod(along + 200.0, 3.5) > 0.5 && height > 0.5 && height < 3.2;
        const Color sign = SignColor(Cell(house, 9.0, 8));
        color = color + kLamp * 0.02;
        color = isGlass ? Mix(sign, {1.0, 0.8, 0.55}, 0.35) *
                              (0.25 + 0.6 * Cell(along / 3.5, house, 21))
                        : color;
        return height > 3.3 ? sign * (1.1 * Cell(house, 3.0, 31) + 0.15) : color;
    }
    const double column = std::fmod(along + 200.0, 2.4) / 2.4;
    const double row = std::fmod(height, 3.1) / 3.1;
    const bool isWindow = column > 0.3 && column < 0.75 && row > 0.3 && row < 0.8;
    const double lit = Cell((along + 200.0) / 2.4, height / 3.1 + house * 5.0, 44);
    if (isWindow && lit > 0.62) {
        color =
            Mix({1.0, 0.66, 0.32}, {0.62, 0.78, 1.0}, lit > 0.8 ? 0.8 : 0.1) * (1.5 * (lit - 0.4));
    }
    return color;
}

// What is seen in a direction above the ground.
Color Look(double right, double up) {
    if (std::fabs(right) < 1e-6) {
        return Sky(up);
    }
    const double along = kHalfStreet / std::fabs(right);
    const double height = kEyeHeight + up * along;
    const double side = right < 0.0 ? 0.0 : 1.0;
    const double roof = 11.0 + 20.0 * Cell(std::floor(along / kBlock), side, 3);
    if (height > roof) {
        return Sky(up);
    }
    const double haze = std::exp(-along / 130.0);
    return Mix(Color{0.10, 0.045, 0.026}, Front(side, along, height), haze);
}

Color Ground(double right, double up) {
    const double along = kEyeHeight / -up;
    const double across = right * along;
    const double ripple = (Noise(across * 1.3, along * 0.35, 4, 71) - 0.5) * 0.06;
    const double wet = 0.30 + 0.50 * Noise(across * 0.35, along * 0.12, 4, 72);
    Color color =
        Color{0.006, 0.006, 0.009} * (0.6 + 0.8 * Noise(across * 9.0, along * 2.0, 2, 73));
    color = color + Look(right + ripple * 0.4, -up * 0.95 + std::fabs(ripple)) * wet;
    const bool isDash = std::fabs(across) < 0.10 && std::fmod(along, 6.0) < 3.0;
    const bool isKerb = std::fabs(std::fabs(across) - 6.6) < 0.12;
    if (isDash || isKerb) {
        color = color + Color{0.16, 0.15, 0.13} * std::exp(-along / 60.0);
    }
    return Mix(Color{0.10, 0.045, 0.026}, color, std::exp(-along / 130.0));
}

// A light and its long reflection on the wet ground.
void PaintLight(Canvas& canvas, double x, double height, double along, double size,
                const Color& color) {
    const double scale = kFocal / along;
    const double px = kVanishX + x * scale;
    const double py = kVanishY - (height - kEyeHeight) * scale;
    const double mirrored = kVanishY + (height + kEyeHeight) * scale;
    canvas.Glow(px, py, size * scale * 5.0, color * 0.22);
    canvas.Glow(px, mirrored, size * scale * 3.0, color * 0.05, 5.0);
    canvas.Ellipse(px, py, size * scale, size * scale, 0.0, color * 7.0, 1.0);
}

void PaintLights(Canvas& canvas) {
    for (int i = 14; i >= 1; --i) {
        const double along = 6.0 + 11.0 * i;
        PaintLight(canvas, -6.2, 6.4, along, 0.26, kLamp);
        PaintLight(canvas, 6.2, 6.4, along, 0.26, kLamp);
    }
    Random random(51);
    for (int i = 11; i >= 0; --i) {
        const double gap = random.Between(0.0, 4.0);
        const double along = 13.0 + 10.0 * i + gap;
        PaintLight(canvas, -3.6, 0.75, along, 0.16, {1.0, 0.93, 0.80});
        PaintLight(canvas, -2.2, 0.75, along, 0.16, {1.0, 0.93, 0.80});
        PaintLight(canvas, 2.2, 0.85, along + 3.0, 0.14, {1.0, 0.035, 0.02});
        PaintLight(canvas, 3.6, 0.85, along + 3.0, 0.14, {1.0, 0.035, 0.02});
    }
}

}  // namespace

Picture PaintStreet() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) {
        const double right = (x + 0.5 - kVanishX) / kFocal;
        const double up = (kVanishY - y - 0.5) / kFocal;
        const bool seesGround = up < 0.0 && kEyeHeight / -up * std::fabs(right) < kHalfStreet;
        return seesGround ? Ground(right, up) : Look(right, up);
    });
    PaintLights(canvas);
    return canvas.Develop();
}

}  // namespace mv::host::sample
