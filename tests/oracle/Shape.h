// The pixel format of a render, and its choice from what a host says of its image.
#pragma once

#include <optional>

namespace oracle {

enum class Sample { Byte, Word, Float };

struct Shape {
    Sample sample = Sample::Byte;
    int colors = 3;
    bool alpha = false;

    int Channels() const { return colors + (alpha ? 1 : 0); }
    int SampleBytes() const { return sample == Sample::Byte ? 1 : sample == Sample::Word ? 2 : 4; }
    double White() const {
        return sample == Sample::Byte ? 255.0 : sample == Sample::Word ? 32768.0 : 1.0;
    }
    // 1 / white as the constant that every "divide by white" multiplies with.
    double InverseWhite() const {
        return sample == Sample::Byte   ? 0.00392156862745098
               : sample == Sample::Word ? 3.0517578125e-5
                                        : 1.0;
    }
};

// The fields of the host's record that decide the shape.
struct ImageFacts {
    int imageMode = 3;
    int depth = 8;
    int planes = 3;
    int layerPlanes = 3;
    int transparencyMask = 0;
    int nonLayerPlanes = 0;
};

// Empty when the image is of a kind that is not rendered.
std::optional<Shape> ChooseShape(const ImageFacts& facts);

}  // namespace oracle
