#include "interface/PreviewScale.h"

#include <charconv>

#include "interface/SafeNumber.h"

namespace mv {

namespace {

constexpr double kMagnifiedPercent = 66.66666666666666;
constexpr double kMagnifiedScale = 1.5;
constexpr int kPercentageDigits = 4;

std::int32_t CentreAlong(std::int32_t frame, std::int32_t picture, double displayScale,
                         std::int32_t offset) noexcept {
    if (frame < (1.0 / displayScale) * picture) {
        return TruncateToInt(frame * displayScale * 0.5 + offset);
    }
    return picture / 2;
}

std::int32_t OffsetAlong(double centre, std::int32_t frame, double displayScale) noexcept {
    return TruncateToInt(centre - displayScale * 0.5 * frame);
}

// A picture without pixels has no point to keep; the new one is shown from its middle.
double CentreInNewPicture(std::int32_t centre, std::int32_t oldSize, std::int32_t newSize) {
    if (oldSize <= 0) {
        return newSize / 2;
    }
    return centre * (static_cast<double>(newSize) / oldSize);
}

}  // namespace

PreviewScale ScaleOfStep(std::int32_t step, std::int32_t detailLevel) noexcept {
    const double n = step;
    PreviewScale scale;
    if (step >= 1) {
        scale.displayScale = detailLevel > 0 ? n / (static_cast<double>(detailLevel) + n) : 1.0;
        scale.renderFactor = ClampToInt(std::int64_t{step} + detailLevel);
    } else {
        scale.displayScale = kMagnifiedScale / (2.0 - n);
        if (detailLevel > 0) {
            scale.displayScale /= static_cast<double>(detailLevel) + 1.0;
        }
        scale.renderFactor = ClampToInt(std::int64_t{1} + detailLevel);
    }
    return scale;
}

void PercentageOfStep(std::int32_t step, char (&text)[kPercentageCapacity]) noexcept {
    const double n = step;
    const double percent = step >= 1 ? 100.0 / n : (2.0 - n) * kMagnifiedPercent;
    const auto result = std::to_chars(text, text + kPercentageCapacity - 2, percent,
                                      std::chars_format::general, kPercentageDigits);
    char* end = result.ec == std::errc() ? result.ptr : text;
    *end++ = '%';
    *end = '\0';
}

std::int32_t StepThatFits(PixelSize image, PixelSize frame) noexcept {
    const std::int32_t across = frame.width > 0 ? image.width / frame.width : image.width;
    const std::int32_t down = frame.height > 0 ? image.height / frame.height : image.height;
    const std::int32_t step = across > down ? across : down;
    return StepCoarserThan(step > 0 ? step : 0);
}

std::int32_t StepFinerThan(std::int32_t step) noexcept {
    return ClampToInt(std::int64_t{step} - 1);
}

std::int32_t StepCoarserThan(std::int32_t step) noexcept {
    return ClampToInt(std::int64_t{step} + 1);
}

PixelPoint CentreOfView(PixelSize frame, PixelSize picture, double displayScale,
                        PixelPoint offset) noexcept {
    return {CentreAlong(frame.width, picture.width, displayScale, offset.x),
            CentreAlong(frame.height, picture.height, displayScale, offset.y)};
}

PixelPoint OffsetForCentre(PixelPoint centre, PixelSize frame, double displayScale) noexcept {
    return {OffsetAlong(centre.x, frame.width, displayScale),
            OffsetAlong(centre.y, frame.height, displayScale)};
}

PixelPoint OffsetForCentre(PixelPoint centre, PixelSize oldPicture, PixelSize newPicture,
                           PixelSize frame, double displayScale) noexcept {
    const double x = CentreInNewPicture(centre.x, oldPicture.width, newPicture.width);
    const double y = CentreInNewPicture(centre.y, oldPicture.height, newPicture.height);
    return {OffsetAlong(x, frame.width, displayScale), OffsetAlong(y, frame.height, displayScale)};
}

std::int32_t BufferWidthFor(std::int32_t pictureWidth) noexcept {
    const std::int64_t width = pictureWidth > 0 ? pictureWidth : 0;
    return ClampToInt((width / 32 + 1) * 32);
}

std::uint32_t BufferBytesFor(std::int32_t bufferWidth, std::int32_t bufferHeight) noexcept {
    if (bufferWidth <= 0 || bufferHeight <= 0) {
        return 0;
    }
    const std::uint64_t pixels =
        static_cast<std::uint64_t>(bufferWidth) * static_cast<std::uint64_t>(bufferHeight);
    if (pixels > UINT32_MAX / 3) {
        return 0;
    }
    return static_cast<std::uint32_t>(pixels * 3);
}

}  // namespace mv
