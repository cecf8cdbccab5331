#include "interface/PreviewPixels.h"

#include <algorithm>
#include <cstring>

namespace mv {

namespace {

constexpr double kByteFromFloat = 255.0;
constexpr double kByteFrom16Bit = 0.007782101;
constexpr double kAlphaFrom16Bit = 3.051850947599719e-05;
constexpr double kAlphaFrom8Bit = 0.00392156862745098;
constexpr double kLightSquare = 255.0;
constexpr double kDarkSquare = 208.0;
constexpr std::int64_t kSquareSize = 16;

template <class Sample>
struct SampleScale;

template <>
struct SampleScale<std::uint8_t> {
    static constexpr double kColor = 1.0;
    static constexpr double kAlpha = kAlphaFrom8Bit;
};
template <>
struct SampleScale<std::uint16_t> {
    static constexpr double kColor = kByteFrom16Bit;
    static constexpr double kAlpha = kAlphaFrom16Bit;
};
template <>
struct SampleScale<float> {
    static constexpr double kColor = kByteFromFloat;
    static constexpr double kAlpha = 1.0;
};

// Hosts align their buffers as they like.
template <class Sample>
double ReadSample(const std::uint8_t* pixel, std::int32_t plane) noexcept {
    Sample sample;
    std::memcpy(&sample,
                pixel + static_cast<std::ptrdiff_t>(plane) * std::ptrdiff_t{sizeof(Sample)},
                sizeof(Sample));
    return static_cast<double>(sample);
}

template <class Sample>
double ReadColor(const std::uint8_t* pixel, std::int32_t plane) noexcept {
    const double value = ReadSample<Sample>(pixel, plane) * SampleScale<Sample>::kColor;
    if constexpr (sizeof(Sample) == sizeof(float)) {
        return value > 255.0 ? 255.0 : value;
    }
    return value;
}

template <class Sample>
void ReadColors(const std::uint8_t* pixel, std::int32_t count, double (&values)[3]) noexcept {
    if (count == 1) {
        values[0] = values[1] = values[2] = ReadColor<Sample>(pixel, 0);
    } else if (count == 2) {
        // The second plane comes first: it is meant.
        values[0] = ReadColor<Sample>(pixel, 1);
        values[1] = ReadColor<Sample>(pixel, 0);
        values[2] = 0.0;
    } else {
        values[0] = ReadColor<Sample>(pixel, 0);
        values[1] = ReadColor<Sample>(pixel, 1);
        values[2] = ReadColor<Sample>(pixel, 2);
    }
}

// Bytes of an image without transparency are shown as they stand.
void CopyBytes(const std::uint8_t* pixel, std::ptrdiff_t stride, std::int32_t columns,
               std::int32_t colors, bool redFirst, std::uint8_t* target) noexcept {
    const std::ptrdiff_t red = colors == 2 ? 1 : 0;
    const std::ptrdiff_t green = colors == 3 ? 1 : 0;
    const std::ptrdiff_t blue = colors == 3 ? 2 : 0;
    const std::ptrdiff_t redAt = redFirst ? 0 : 2;
    for (std::int32_t x = 0; x < columns; ++x, pixel += stride, target += 3) {
        target[redAt] = pixel[red];
        target[1] = pixel[green];
        target[2 - redAt] = colors == 2 ? std::uint8_t{0} : pixel[blue];
    }
}

template <class Sample>
void ConvertRows(const hostapi::FilterRecord& record, const PreviewFormat& format,
                 bool hostDisplays, const PreviewBuffer& buffer) noexcept {
    const PixelSize size = OutputSize(record);
    const std::int32_t columns = std::min(size.width, buffer.width);
    const std::ptrdiff_t stride = std::ptrdiff_t{record.planes} * std::ptrdiff_t{sizeof(Sample)};
    const auto* source = static_cast<const std::uint8_t*>(record.outData);
    for (std::int32_t y = 0; y < size.height; ++y) {
        const std::int32_t row = hostDisplays ? y : size.height - 1 - y;
        if (row >= buffer.height) {
            continue;
        }
        const std::uint8_t* pixel = source + std::ptrdiff_t{y} * record.outRowBytes;
        std::uint8_t* target = buffer.data + (std::ptrdiff_t{row} * buffer.width) * 3;
        if (sizeof(Sample) == 1 && !format.hasAlpha) {
            CopyBytes(pixel, stride, columns, format.colors, hostDisplays, target);
            continue;
        }
        const std::int64_t squareRow = std::int64_t{y} * record.imageSize.v / size.height;
        for (std::int32_t x = 0; x < columns; ++x, pixel += stride, target += 3) {
            double values[3];
            ReadColors<Sample>(pixel, format.colors, values);
            if (format.hasAlpha) {
                const double alpha =
                    ReadSample<Sample>(pixel, format.alphaPlane) * SampleScale<Sample>::kAlpha;
                const double gray =
                    CheckerGray(std::int64_t{x} * record.imageSize.h / size.width, squareRow);
                for (double& value : values) {
                    value = (value - gray) * alpha + gray;
                }
            }
            target[hostDisplays ? 0 : 2] = PreviewByte(values[0]);
            target[1] = PreviewByte(values[1]);
            target[hostDisplays ? 2 : 0] = PreviewByte(values[2]);
        }
    }
}

// The most colours that a mode shows, 0 for a mode without a preview.
std::int32_t MostColors(std::int16_t imageMode) noexcept {
    switch (imageMode) {
        case hostapi::plugInModeGrayScale:
        case hostapi::plugInModeGray16:
        case hostapi::plugInModeGray32:
            return 1;
        case hostapi::plugInModeRGBColor:
        case hostapi::plugInModeMultichannel:
        case hostapi::plugInModeRGB48:
        case hostapi::plugInModeDeepMultichannel:
        case hostapi::plugInModeRGB96:
            return 3;
        default:
            return 0;
    }
}

PixelSize SizeOf(const hostapi::Rect& rect) noexcept {
    return {std::max(rect.right - rect.left, 0), std::max(rect.bottom - rect.top, 0)};
}

}  // namespace

PixelSize OutputSize(const hostapi::FilterRecord& record) noexcept {
    return SizeOf(record.outRect);
}

PixelSize InputSize(const hostapi::FilterRecord& record) noexcept {
    return SizeOf(record.inRect);
}

FormatResult ChoosePreviewFormat(const hostapi::FilterRecord& record,
                                 PreviewFormat& format) noexcept {
    const std::int32_t planes = record.planes;
    format.hasAlpha = record.inTransparencyMask >= 1 && planes >= record.inLayerPlanes + 1;
    format.alphaPlane = record.inLayerPlanes;
    std::int32_t colors = record.inLayerPlanes;
    if (record.inTransparencyMask == 0 && colors == 0) {
        colors = record.inNonLayerPlanes;
    }
    if (colors == 0) {
        colors = planes;
    }
    const std::int32_t most = MostColors(record.imageMode);
    if (most == 0) {
        return FormatResult::InvalidMode;
    }
    format.colors = std::min(colors, most);
    const bool alphaFits = !format.hasAlpha || format.alphaPlane >= 0;
    return format.colors >= 1 && format.colors <= planes && alphaFits ? FormatResult::Usable
                                                                      : FormatResult::TooFewPlanes;
}

void ConvertPreview(const hostapi::FilterRecord& record, const PreviewFormat& format,
                    bool hostDisplays, const PreviewBuffer& buffer) noexcept {
    const PixelSize size = OutputSize(record);
    if (record.outData == nullptr || buffer.data == nullptr || size.width == 0 ||
        size.height == 0) {
        return;
    }
    if (record.depth == 32) {
        ConvertRows<float>(record, format, hostDisplays, buffer);
    } else if (record.depth == 16) {
        ConvertRows<std::uint16_t>(record, format, hostDisplays, buffer);
    } else if (record.depth == 8 || record.depth == 0) {
        ConvertRows<std::uint8_t>(record, format, hostDisplays, buffer);
    }
}

std::uint8_t PreviewByte(double value) noexcept {
    if (value > -2147483649.0 && value < 2147483648.0) {
        return static_cast<std::uint8_t>(static_cast<std::int32_t>(value) & 0xFF);
    }
    return 0;
}

double CheckerGray(std::int64_t column, std::int64_t row) noexcept {
    const bool light = column / kSquareSize % 2 + row / kSquareSize % 2 == 1;
    return light ? kLightSquare : kDarkSquare;
}

}  // namespace mv
