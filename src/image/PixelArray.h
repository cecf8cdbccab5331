// The one image type: a view that does not own its pixels and is copied by value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sstream>

#include "diagnostics/Log.h"
#include "image/PixelRGB.h"

namespace mv {

// reserved is 0 everywhere. dynamic_stride: pixels of a row lie dynamic_pixel_size bytes apart,
// as a host's interleaved buffer may hold more planes than are read; otherwise the distance is
// the pixel type's size.
template <class PixelType, int reserved, bool dynamic_stride>
class PixelArray {
public:
    using Pixel_t = PixelType;

    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t row_bytes = 0;
    std::int32_t dynamic_pixel_size = 0;
    std::int32_t origin_x = 0;
    std::int32_t origin_y = 0;
    double aspect = 1.0;
    double spare_scale_x = 1.0;
    double spare_scale_y = 1.0;
    unsigned char* data = nullptr;
    bool is_connected = false;
    bool is_premultiplied = false;

    PixelArray() = default;

    // All fields mean the same in every type of image.
    template <class OtherPixel, int otherReserved, bool otherStride>
    explicit PixelArray(const PixelArray<OtherPixel, otherReserved, otherStride>& other)
        : width(other.width),
          height(other.height),
          row_bytes(other.row_bytes),
          dynamic_pixel_size(other.dynamic_pixel_size),
          origin_x(other.origin_x),
          origin_y(other.origin_y),
          aspect(other.aspect),
          spare_scale_x(other.spare_scale_x),
          spare_scale_y(other.spare_scale_y),
          data(other.data),
          is_connected(other.is_connected),
          is_premultiplied(other.is_premultiplied) {}

    std::ptrdiff_t Stride() const {
        if constexpr (dynamic_stride) {
            return dynamic_pixel_size;
        } else {
            return PixelType::kSize;
        }
    }

    // Offsets are formed in 64 bits: a row distance times a row number can pass 2^31.
    unsigned char* Row(std::int32_t y) const {
        return data + static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(row_bytes);
    }

    unsigned char* Pixel(std::int32_t x, std::int32_t y) const {
        return Row(y) + static_cast<std::ptrdiff_t>(x) * Stride();
    }

    bool Contains(std::int32_t x, std::int32_t y) const {
        return x >= 0 && x < width && y >= 0 && y < height;
    }
};

template <class PixelType, int reserved, bool dynamic_stride>
std::ostream& operator<<(std::ostream& stream,
                         const PixelArray<PixelType, reserved, dynamic_stride>& image) {
    return stream << "  width(" << image.width << "),   height(" << image.height
                  << "),   row_bytes(" << image.row_bytes << "),   dynamic_pixel_size("
                  << image.dynamic_pixel_size << "),   origin_x(" << image.origin_x
                  << "),   origin_y(" << image.origin_y << "),   aspect(" << image.aspect
                  << "),   data(0x" << LogPointer{image.data} << "),   is_connected("
                  << image.is_connected << "),   is_premultiplied(" << image.is_premultiplied
                  << "), ";
}

template <class HostPixel>
using HostImage = PixelArray<HostPixel, 0, true>;

template <class HostPixel>
using WorkingImage = PixelArray<typename PixelFamily<HostPixel>::Working, 0, false>;

template <class HostPixel>
using AccumulatorImage = PixelArray<typename PixelFamily<HostPixel>::Accumulator, 0, false>;

using MaskImage = PixelArray<MaskPixel, 0, true>;

}  // namespace mv
