// Zoom steps of the preview, and how the view stays on the same image point when the step changes.
#pragma once

#include <cstdint>

namespace mv {

struct PixelSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

struct PreviewScale {
    double displayScale = 1.0;      // buffer pixels per screen pixel
    std::int32_t renderFactor = 1;  // the host delivers every so many-th pixel
};

// Step n of 1 and more shows one in n pixels, steps below 1 magnify. The detail level adds to
// the render factor, and the display scale makes up for it.
PreviewScale ScaleOfStep(std::int32_t step, std::int32_t detailLevel) noexcept;

constexpr int kPercentageCapacity = 32;
// Four significant digits and a percent sign, zero terminated.
void PercentageOfStep(std::int32_t step, char (&text)[kPercentageCapacity]) noexcept;

// The finest step at which the whole image lies in the frame.
std::int32_t StepThatFits(PixelSize image, PixelSize frame) noexcept;

// One step further in or out; the ends of the number range are the only bounds.
std::int32_t StepFinerThan(std::int32_t step) noexcept;
std::int32_t StepCoarserThan(std::int32_t step) noexcept;

// The picture point at the centre of the view: that of the whole picture when it fits.
PixelPoint CentreOfView(PixelSize frame, PixelSize picture, double displayScale,
                        PixelPoint offset) noexcept;

// The offset that puts a picture point into the centre of the view.
PixelPoint OffsetForCentre(PixelPoint centre, PixelSize frame, double displayScale) noexcept;

// The same where the picture has been delivered at another size since the point was taken.
PixelPoint OffsetForCentre(PixelPoint centre, PixelSize oldPicture, PixelSize newPicture,
                           PixelSize frame, double displayScale) noexcept;

// Rows of the preview buffer are a multiple of 32 pixels, and always longer than the picture.
std::int32_t BufferWidthFor(std::int32_t pictureWidth) noexcept;

// Bytes of the preview buffer, or 0 when a size of 32 bits cannot hold them or nothing is needed.
std::uint32_t BufferBytesFor(std::int32_t bufferWidth, std::int32_t bufferHeight) noexcept;

}  // namespace mv
