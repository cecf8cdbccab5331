#include "sample/Canvas.h"

#include <algorithm>
#include <cmath>

namespace mv::host::sample {
namespace {

double Hash(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    std::uint32_t value = static_cast<std::uint32_t>(x) * 374761393U +
                          static_cast<std::uint32_t>(y) * 668265263U + seed * 2246822519U;
    value = (value ^ (value >> 13)) * 1274126177U;
    value ^= value >> 16;
    return value / 4294967296.0;
}

double Smooth(double t) {
    return t * t * (3.0 - 2.0 * t);
}

double ValueNoise(double x, double y, std::uint32_t seed) {
    const double left = std::floor(x);
    const double top = std::floor(y);
    const auto ix = static_cast<std::int32_t>(left);
    const auto iy = static_cast<std::int32_t>(top);
    const double fx = Smooth(x - left);
    const double fy = Smooth(y - top);
    const double upper = std::lerp(Hash(ix, iy, seed), Hash(ix + 1, iy, seed), fx);
    const double lower = std::lerp(Hash(ix, iy + 1, seed), Hash(ix + 1, iy + 1, seed), fx);
    return std::lerp(upper, lower, fy);
}

std::uint8_t Encode(double linear) {
    const double toned = 1.0 - std::exp(-1.25 * std::max(linear, 0.0));
    const double value =
        toned <= 0.0031308 ? toned * 12.92 : 1.055 * std::pow(toned, 1.0 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::clamp(value * 255.0 + 0.5, 0.0, 255.0));
}

}  // namespace

Color operator*(const Color& color, double factor) {
    return {color.red * factor, color.green * factor, color.blue * factor};
}

Color operator+(const Color& left, const Color& right) {
    return {left.red + right.red, left.green + right.green, left.blue + right.blue};
}

Color Mix(const Color& from, const Color& to, double amount) {
    return from * (1.0 - amount) + to * amount;
}

double Random::Next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_ / 4294967296.0;
}

double Noise(double x, double y, int octaves, std::uint32_t seed) {
    double sum = 0.0;
    double weight = 0.5;
    double total = 0.0;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += weight * ValueNoise(x, y, seed + static_cast<std::uint32_t>(octave));
        total += weight;
        weight *= 0.5;
        x = x * 2.03 + 17.1;
        y = y * 2.01 + 9.7;
    }
    return sum / total;
}

Canvas::Canvas(int width, int height)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

Color& Canvas::At(int x, int y) {
    return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                   static_cast<std::size_t>(x)];
}

void Canvas::Blend(int x, int y, const Color& color, double cover) {
    if (x >= 0 && x < width_ && y >= 0 && y < height_ && cover > 0.0) {
        Color& pixel = At(x, y);
        pixel = Mix(pixel, color, std::min(cover, 1.0));
    }
}

void Canvas::Ellipse(double x, double y, double longer, double shorter, double angle,
                     const Color& color, double opacity) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const int reach = static_cast<int>(longer) + 2;
    const int centreX = static_cast<int>(x);
    const int centreY = static_cast<int>(y);
    for (int py = centreY - reach; py <= centreY + reach; ++py) {
        for (int px = centreX - reach; px <= centreX + reach; ++px) {
            const double dx = px + 0.5 - x;
            const double dy = py + 0.5 - y;
            const double u = (dx * cosine + dy * sine) / longer;
            const double v = (dy * cosine - dx * sine) / shorter;
            const double distance = (1.0 - std::sqrt(u * u + v * v)) * shorter + 0.5;
            Blend(px, py, color, std::clamp(distance, 0.0, 1.0) * opacity);
        }
    }
}

void Canvas::Branch(double x0, double y0, double width0, double x1, double y1, double width1,
                    const Color& color) {
    const double dx = x1 - x0;
    const double dy = y1 - y0;
    const double length2 = std::max(dx * dx + dy * dy, 1e-6);
    const double reach = std::max(width0, width1) + 2.0;
    const int left = static_cast<int>(std::min(x0, x1) - reach);
    const int right = static_cast<int>(std::max(x0, x1) + reach);
    const int top = static_cast<int>(std::min(y0, y1) - reach);
    const int bottom = static_cast<int>(std::max(y0, y1) + reach);
    for (int py = top; py <= bottom; ++py) {
        for (int px = left; px <= right; ++px) {
            const double cx = px + 0.5 - x0;
            const double cy = py + 0.5 - y0;
            const double t = std::clamp((cx * dx + cy * dy) / length2, 0.0, 1.0);
            const double half = std::lerp(width0, width1, t) / 2.0;
            const double distance = std::hypot(cx - t * dx, cy - t * dy);
            // Rounder on the side of the light, with a coarse bark.
            const double bark = 0.7 + 0.6 * Noise(px * 0.35, py * 0.07, 2, 77);
            Blend(px, py, color * bark, std::clamp(half - distance + 0.5, 0.0, 1.0));
        }
    }
}

void Canvas::Glow(double x, double y, double reach, const Color& color, double stretch) {
    const int left = std::max(0, static_cast<int>(x - 2.0 * reach));
    const int right = std::min(width_ - 1, static_cast<int>(x + 2.0 * reach));
    const int top = std::max(0, static_cast<int>(y - 2.0 * reach * stretch));
    const int bottom = std::min(height_ - 1, static_cast<int>(y + 2.0 * reach * stretch));
    for (int py = top; py <= bottom; ++py) {
        for (int px = left; px <= right; ++px) {
            const double away = std::hypot(px + 0.5 - x, (py + 0.5 - y) / stretch) / reach;
            At(px, py) = At(px, py) + color * std::exp(-away * away * 4.0);
        }
    }
}

Picture Canvas::Develop() const {
    Picture picture;
    picture.width = width_;
    picture.height = height_;
    picture.samples.reserve(pixels_.size() * 3);
    Random random(12345);
    for (const Color& pixel : pixels_) {
        const double grain = 1.0 + random.Between(-0.025, 0.025);
        for (const double value : {pixel.red, pixel.green, pixel.blue}) {
            picture.samples.push_back(Encode(value * grain + 0.0015));
        }
    }
    picture.color.srgbIntent = 0;
    return picture;
}

}  // namespace mv::host::sample
