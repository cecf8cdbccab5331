// Where the pixels lie that the rays of a sector read and that they replace.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mv {

// Pixels by their coordinate on the rays' major axis and on the minor one: a whole picture, or a
// window of it that follows the rays, where a lane (a row or a column) is a ring of pixels.
struct LanePixels {
    float* data = nullptr;         // first channel of the pixel at 0, 0
    std::ptrdiff_t majorStep = 0;  // floats to the next coordinate
    std::ptrdiff_t minorStep = 0;
    std::int32_t minorMask = -1;  // which bits of the minor coordinate count; -1 for all

    float* At(std::int32_t major, std::int32_t minor) const {
        return data + major * majorStep + (minor & minorMask) * minorStep;
    }
};

// A whole picture of floats, packed, as rays see it that step along rows or along columns.
template <class Image>
LanePixels LanePixelsOf(const Image& image, bool isXMajor) {
    constexpr std::ptrdiff_t pixel = Image::Pixel_t::kChannels;
    const std::ptrdiff_t row = image.width * pixel;
    return {reinterpret_cast<float*>(image.data), isXMajor ? pixel : row, isXMajor ? row : pixel,
            -1};
}

}  // namespace mv
