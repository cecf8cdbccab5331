#include "Picture.h"

#include <cmath>
#include <cstring>
#include <utility>

namespace mv::host {
namespace {

// The weights that the filter itself uses for every luminance.
constexpr double kLuminanceRed = 0.292687786;
constexpr double kLuminanceGreen = 0.552149646;
constexpr double kLuminanceBlue = 0.155162568;

template <class Sample>
constexpr double White() {
    return 1.0;
}
template <>
constexpr double White<std::uint8_t>() {
    return 255.0;
}
template <>
constexpr double White<std::uint16_t>() {
    return 65535.0;
}

template <class Sample>
Sample LoadSample(const std::uint8_t* address) {
    Sample value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

template <class Sample>
Sample RoundToSample(double value) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(value);
    } else {
        const double white = White<Sample>();
        return static_cast<Sample>(value >= 0.0 ? std::fmin(value + 0.5, white) : 0.0);
    }
}

template <class Sample>
void UnpremultiplyAs(Picture& picture) {
    const int colours = picture.colours;
    const std::size_t pixelBytes = picture.PixelBytes();
    std::uint8_t* pixel = picture.samples.data();
    std::uint8_t* const end = pixel + picture.samples.size();
    for (; pixel != end; pixel += pixelBytes) {
        const auto alpha = static_cast<double>(
            LoadSample<Sample>(pixel + static_cast<std::size_t>(colours) * sizeof(Sample)));
        for (int c = 0; c < colours; ++c) {
            std::uint8_t* const address = pixel + static_cast<std::size_t>(c) * sizeof(Sample);
            const auto value = static_cast<double>(LoadSample<Sample>(address));
            const Sample straight =
                alpha > 0.0 ? RoundToSample<Sample>(value * White<Sample>() / alpha) : Sample{0};
            std::memcpy(address, &straight, sizeof straight);
        }
    }
}

template <class Sample>
std::vector<std::uint8_t> ToMaskAs(const Picture& picture) {
    const std::size_t pixelBytes = picture.PixelBytes();
    std::vector<std::uint8_t> mask(picture.samples.size() / pixelBytes);
    const std::uint8_t* pixel = picture.samples.data();
    for (std::uint8_t& value : mask) {
        const auto at = [pixel](std::size_t channel) {
            return static_cast<double>(LoadSample<Sample>(pixel + channel * sizeof(Sample)));
        };
        const double level =
            picture.colours == 1
                ? at(0)
                : at(0) * kLuminanceRed + at(1) * kLuminanceGreen + at(2) * kLuminanceBlue;
        value = RoundToSample<std::uint8_t>(level * 255.0 / White<Sample>());
        pixel += pixelBytes;
    }
    return mask;
}

}  // namespace

std::size_t Picture::SampleBytes() const {
    switch (type) {
        case SampleType::UInt8:
            return 1;
        case SampleType::UInt16:
            return 2;
        case SampleType::Float32:
            break;
    }
    return 4;
}

void ApplyOrientation(Picture& picture, int orientation) {
    if (orientation <= 1 || orientation > 8) {
        return;
    }
    const bool turned = orientation >= 5;
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 ||
                           orientation == 8;  // the stored column that comes first is the last
    const bool fromBottom =
        orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    Picture upright;
    upright.width = turned ? picture.height : picture.width;
    upright.height = turned ? picture.width : picture.height;
    upright.colours = picture.colours;
    upright.alpha = picture.alpha;
    upright.type = picture.type;
    upright.samples.resize(picture.samples.size());
    const std::size_t pixelBytes = picture.PixelBytes();
    for (int y = 0; y < upright.height; ++y) {
        std::uint8_t* to = upright.Row(y);
        for (int x = 0; x < upright.width; ++x, to += pixelBytes) {
            const int alongRow = turned ? y : x;
            const int alongColumn = turned ? x : y;
            const int fromX = fromRight ? picture.width - 1 - alongRow : alongRow;
            const int fromY = fromBottom ? picture.height - 1 - alongColumn : alongColumn;
            std::memcpy(to, picture.Row(fromY) + static_cast<std::size_t>(fromX) * pixelBytes,
                        pixelBytes);
        }
    }
    picture.width = upright.width;
    picture.height = upright.height;
    picture.samples = std::move(upright.samples);
    if (turned && picture.resolution) {
        std::swap(picture.resolution->x, picture.resolution->y);
    }
}

void Unpremultiply(Picture& picture) {
    switch (picture.type) {
        case SampleType::UInt8:
            return UnpremultiplyAs<std::uint8_t>(picture);
        case SampleType::UInt16:
            return UnpremultiplyAs<std::uint16_t>(picture);
        case SampleType::Float32:
            return UnpremultiplyAs<float>(picture);
    }
}

std::vector<std::uint8_t> ToMask(const Picture& picture) {
    switch (picture.type) {
        case SampleType::UInt8:
            return ToMaskAs<std::uint8_t>(picture);
        case SampleType::UInt16:
            return ToMaskAs<std::uint16_t>(picture);
        case SampleType::Float32:
            break;
    }
    return ToMaskAs<float>(picture);
}

}  // namespace mv::host
