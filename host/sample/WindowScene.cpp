// A round window of coloured glass, high in a dark wall.
#include <algorithm>
#include <cmath>

#include "sample/Scenes.h"

namespace mv::host::sample {
namespace {

constexpr double kMiddleX = 600.0;
constexpr double kMiddleY = 350.0;
constexpr double kRadius = 235.0;
constexpr double kPi = 3.14159265358979323846;
constexpr int kPetals = 12;

constexpr Color kGlass[] = {{0.08, 0.20, 1.00}, {0.95, 0.06, 0.07}, {1.00, 0.62, 0.06},
                            {0.05, 0.55, 0.22}, {0.50, 0.08, 0.75}, {0.10, 0.62, 0.92}};

Color Stone(double x, double y) {
    const double row = std::floor(y / 46.0);
    const double shift = std::fmod(row, 2.0) * 48.0;
    const double u = std::fmod(x + shift + 960.0, 96.0);
    const double v = std::fmod(y + 460.0, 46.0);
    const double block = Noise(std::floor((x + shift + 960.0) / 96.0) * 3.3, row * 5.1, 1, 15);
    double tone = 0.5 + 0.5 * block + 0.5 * (Noise(x * 0.05, y * 0.05, 4, 17) - 0.5);
    tone *= u < 3.0 || v < 3.0 ? 0.45 : 1.0;
    const double near = std::exp(-std::hypot(x - kMiddleX, y - kMiddleY) / 330.0);
    return Color{0.022, 0.017, 0.015} * (tone * (0.25 + 1.3 * near));
}

// The number of the pane at a place, from the middle outwards, or -1 for stone and lead. `edge`
// grows from 0 at the pane's rim.
int PaneAt(double x, double y, double& edge) {
    const double dx = (x - kMiddleX) / kRadius;
    const double dy = (y - kMiddleY) / kRadius;
    const double away = std::hypot(dx, dy);
    const double turn = std::atan2(dy, dx) / (2.0 * kPi) * kPetals + kPetals;
    const double petal = turn - std::floor(turn) - 0.5;
    const int number = static_cast<int>(std::floor(turn)) % kPetals;
    if (away < 0.20) {
        edge = (0.20 - away) * 6.0;
        return 1000 + static_cast<int>(std::floor(turn / 2.0)) % 6;
    }
    if (away < 0.26) {
        return -1;
    }
    if (away < 0.70) {
        // A petal: two arcs that meet at its ends.
        const double along = (away - 0.26) / 0.44;
        const double width = 0.42 * std::sin(kPi * (0.12 + 0.80 * along)) + 0.03;
        edge = (width - std::fabs(petal)) * 4.0;
        return edge > 0.0 ? number * 10 + static_cast<int>(along * 5.0) : -1;
    }
    const double outer = turn * 2.0 + 0.5;
    const double offset = (outer - std::floor(outer) - 0.5) * (kPi / kPetals) * away;
    const double circle = std::hypot(offset, away - 0.84);
    edge = (0.105 - circle) * 12.0;
    return edge > 0.0 ? 500 + static_cast<int>(outer) % (kPetals * 2) : -1;
}

Color Pane(int number, double x, double y, double edge) {
    const double choice = Noise(number * 3.71 + 0.4, 0.3, 1, 91);
    std::size_t index = static_cast<std::size_t>(choice * 89.0) % std::size(kGlass);
    if (number >= 1000) {
        index = number % 2 == 0 ? 2 : 1;
    } else if (number >= 500) {
        index = number % 2 == 0 ? 0 : 5;
    }
    const double grain = 0.6 + 0.8 * Noise(x * 0.07, y * 0.07, 3, 95);
    const double day = 1.8 - 0.9 * (y - kMiddleY + kRadius) / (2.0 * kRadius);
    const double lead = std::fmod(x + y * 0.6 + 900.0, 37.0) < 2.0 ? 0.25 : 1.0;
    return kGlass[index] * (grain * day * lead * std::min(1.0, edge * 3.0) * 0.8);
}

}  // namespace

Picture PaintWindow() {
    Canvas canvas(kSceneWidth, kSceneHeight);
    canvas.Fill([](int x, int y) {
        const double away = std::hypot(x - kMiddleX, y - kMiddleY) / kRadius;
        double edge = 0.0;
        const int pane = away < 0.97 ? PaneAt(x, y, edge) : -1;
        Color color = Stone(x, y);
        if (pane >= 0) {
            color = Pane(pane, x, y, edge);
        } else if (away < 1.10) {
            color = Color{0.045, 0.038, 0.034} * (0.6 + 0.8 * Noise(x * 0.06, y * 0.06, 3, 99));
        }
        return color;
    });
    canvas.Glow(kMiddleX, kMiddleY, 420.0, {0.040, 0.036, 0.050});
    return canvas.Develop();
}

}  // namespace mv::host::sample
