// The render's output as 24-bit pixels for the screen.
#pragma once

#include <cstdint>

#include "hostapi/HostApi.h"
#include "interface/PreviewScale.h"

namespace mv {

struct PreviewFormat {
    std::int32_t colors = 0;  // 1 to 3
    bool hasAlpha = false;
    std::int32_t alphaPlane = 0;
};

enum class FormatResult {
    Usable,
    InvalidMode,
    // The counts do not fit together, and a pixel would reach beyond its planes.
    TooFewPlanes,
};

FormatResult ChoosePreviewFormat(const hostapi::FilterRecord& record,
                                 PreviewFormat& format) noexcept;

// Size of the record's output rectangle, never negative.
PixelSize OutputSize(const hostapi::FilterRecord& record) noexcept;
// The same of the input rectangle, which the preview buffer is made for.
PixelSize InputSize(const hostapi::FilterRecord& record) noexcept;

struct PreviewBuffer {
    std::uint8_t* data = nullptr;
    std::int32_t width = 0;  // pixels of three bytes from row to row
    std::int32_t height = 0;
};

// Red, green, blue from the top down when the host displays the pixels; otherwise blue, green,
// red from the bottom up, as a Windows bitmap lies. Does nothing beyond the buffer.
void ConvertPreview(const hostapi::FilterRecord& record, const PreviewFormat& format,
                    bool hostDisplays, const PreviewBuffer& buffer) noexcept;

// One value as a byte: truncated, and without a lower limit, so that -1 becomes 255. What no
// 32-bit number holds becomes 0.
std::uint8_t PreviewByte(double value) noexcept;

// The checker behind transparency: squares of 16 pixels of the full image.
double CheckerGray(std::int64_t column, std::int64_t row) noexcept;

}  // namespace mv
