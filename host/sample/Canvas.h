// A picture in linear light that shapes are painted on.
#pragma once

#include <cstdint>
#include <vector>

#include "pictures/Picture.h"

namespace mv::host::sample {

struct Color {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
};

Color operator*(const Color& color, double factor);
Color operator+(const Color& left, const Color& right);
Color Mix(const Color& from, const Color& to, double amount);

// The same numbers on every machine.
class Random {
public:
    explicit Random(std::uint32_t seed) : state_(seed * 2654435761U + 1U) {}
    double Next();  // 0 to below 1
    double Between(double low, double high) { return low + (high - low) * Next(); }

private:
    std::uint32_t state_;
};

// Smooth noise between 0 and 1, finer with each octave.
double Noise(double x, double y, int octaves, std::uint32_t seed);

// The pixels of one sample picture; owned by its painter. Positions are in pixels.
class Canvas {
public:
    Canvas(int width, int height);

    int Width() const { return width_; }
    int Height() const { return height_; }
    Color& At(int x, int y);
    // Every pixel from what `color(x, y)` says of its place.
    template <class ColorAt>
    void Fill(const ColorAt& color) {
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) {
                At(x, y) = color(x, y);
            }
        }
    }
    void Blend(int x, int y, const Color& color, double cover);
    // An ellipse with soft edges; `angle` turns its longer axis.
    void Ellipse(double x, double y, double longer, double shorter, double angle,
                 const Color& color, double opacity);
    // A line that grows thinner from one end to the other.
    void Branch(double x0, double y0, double width0, double x1, double y1, double width1,
                const Color& color);
    // Adds light that falls off around a point; `stretch` makes it so many times higher than wide.
    void Glow(double x, double y, double reach, const Color& color, double stretch = 1.0);
    // Tone curve, grain and the standard's encoding in 8 bits.
    Picture Develop() const;

private:
    int width_;
    int height_;
    std::vector<Color> pixels_;
};

}  // namespace mv::host::sample
