// A singer before spotlights, seen over the heads of a crowd.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kFloor = 560.0;
constexpr Color kDark = {0.004, 0.004, 0.006};

struct Spot {
    double x;
    double y;
    double lean;  // sideways per unit downwards
    Color color;
};

constexpr Spot kSpots[] = {
    {150.0, 120.0, 0.42, {0.10, 0.30, 1.0}},  {330.0, 95.0, 0.22, {0.85, 0.10, 0.75}},
    {500.0, 85.0, 0.10, {1.0, 0.55, 0.18}},   {700.0, 85.0, -0.10, {1.0, 0.55, 0.18}},
    {870.0, 95.0, -0.22, {0.85, 0.10, 0.75}}, {1050.0, 120.0, -0.42, {0.10, 0.30, 1.0}},
    {600.0, 300.0, 0.0, {1.0, 0.90, 0.75}},
};

Color Backdrop(double x, double y) {
    Color color = Mix({0.003, 0.003, 0.012}, {0.022, 0.005, 0.022}, y / kFloor);
    if (y > kFloor) {
        const double gloss = std::exp(-(y - kFloor) / 60.0);
        return Color{0.03, 0.012, 0.035} * gloss + kDark;
    }
    // A wall of small lamps behind the stage.
    const double u = std::fmod(x, 22.0) - 11.0;
    const double v = std::fmod(y, 22.0) - 11.0;
    const double wave = Noise(std::floor(x / 22.0) * 0.21, std::floor(y / 22.0) * 0.33, 3, 19);
    const double inWall = y > 190.0 && y < 500.0 && x > 190.0 && x < 1010.0 ? 1.0 : 0.0;
    if (u * u + v * v < 16.0) {
        color = color + Mix({0.9, 0.12, 0.04}, {0.04, 0.20, 1.0}, wave * 1.4 - 0.2) *
                            (inWall * std::max(0.0, wave * 1.1 - 0.35));
    }
    return color;
}

// Beams in a haze that is not even.
Color Beams(double x, double y) {
    Color sum;
    const double haze = 0.55 + 0.9 * Noise(x * 0.006, y * 0.008, 4, 27);
    for (const Spot& spot : kSpots) {
        const double down = y - spot.y;
        if (down <= 0.0 || spot.y > 200.0) {
            continue;
        }
        const double width = 7.0 + down * 0.085;
        const double off = (x - spot.x - spot.lean * down) / width;
        const double fade = 0.40 / (1.0 + down / 170.0);
        sum = sum + spot.color * (std::exp(-off * off * 1.8) * fade * haze);
    }
    return sum;
}

void PaintSinger(Canvas& canvas) {
    const Color body = {0.006, 0.005, 0.008};
    canvas.Branch(585.0, 470.0, 26.0, 570.0, 585.0, 15.0, body);
    canvas.Branch(615.0, 470.0, 26.0, 636.0, 585.0, 15.0, body);
    canvas.Branch(600.0, 385.0, 46.0, 600.0, 478.0, 50.0, body);
    canvas.Ellipse(600.0, 345.0, 27.0, 21.0, 1.57, body, 1.0);
    canvas.Branch(578.0, 395.0, 17.0, 540.0, 330.0, 13.0, body);
    canvas.Branch(540.0, 330.0, 13.0, 552.0, 255.0, 9.0, body);
    canvas.Branch(622.0, 395.0, 17.0, 652.0, 420.0, 13.0, body);
    canvas.Branch(652.0, 420.0, 13.0, 622.0, 368.0, 9.0, body);
    canvas.Branch(622.0, 368.0, 7.0, 640.0, 585.0, 5.0, body);
}

void PaintCrowd(Canvas& canvas) {
    Random random(9);
    for (int row = 0; row < 4; ++row) {
        const Color tone = Color{0.010, 0.006, 0.012} * (1.0 - 0.22 * row);
        const double base = 640.0 + row * 48.0;
        const double size = 24.0 + row * 8.0;
        for (double x = -20.0; x < kSceneWidth + 20.0; x += size * 2.1) {
            const double px = x + random.Between(-9.0, 9.0);
            const double py = base + random.Between(-16.0, 16.0);
            const double arms = random.Next();
            canvas.Ellipse(px, py, size, size * 0.80, 1.57, tone, 1.0);
            canvas.Branch(px, py + size, size * 2.5, px, py + size * 5.0, size * 2.6, tone);
            if (arms < 0.34) {
                const double lean = random.Between(-30.0, 30.0);
                const double reach = random.Between(2.6, 4.2);
                canvas.Branch(px + size, py + size * 1.6, size * 0.55, px + size + lean,
                              py - size * reach, size * 0.36, tone);
                canvas.Ellipse(px + size + lean, py - size * reach, size * 0.34, size * 0.24, 1.57,
                               tone, 1.0);
            }
        }
    }
}

}  // namespace

Picture PaintStage() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) { return Backdrop(x, y) + Beams(x, y); });
    for (const Spot& spot : kSpots) {
        const double size = spot.y > 200.0 ? 46.0 : 12.0;
        canvas.Glow(spot.x, spot.y, size * 7.0, spot.color * 0.35);
        canvas.Ellipse(spot.x, spot.y, size, size, 0.0, spot.color * 6.0 + Color{2.0, 2.0, 2.0},
                       1.0);
    }
    PaintSinger(canvas);
    PaintCrowd(canvas);
    return canvas.Develop();
}

}  // namespace mv::host::sample
