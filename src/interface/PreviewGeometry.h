// Where the preview's picture, its handle and the mouse meet: all in client pixels.
#pragma once

#include <cstdint>

#include "interface/PreviewScale.h"

namespace mv {

struct PixelRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    std::int32_t Width() const noexcept { return right - left; }
    std::int32_t Height() const noexcept { return bottom - top; }
};

// The part of the window that shows the picture.
struct PreviewFrame {
    std::int32_t left = 0;
    std::int32_t top = 0;
    PixelSize size;

    bool Contains(PixelPoint point) const noexcept {
        return point.x >= left && point.y >= top && point.x - left < size.width &&
               point.y - top < size.height;
    }
};

// What one painting needs. The source rectangle counts rows from the bottom, as the buffer does.
struct PreviewLayout {
    PixelPoint offset;     // pulled back into the picture
    PixelSize screenSize;  // of the whole picture
    PixelRect target;
    PixelPoint sourceOrigin;
    PixelSize sourceSize;
    PixelRect strips[4];  // above, below, left, right
};

PreviewLayout LayOutPreview(const PreviewFrame& frame, PixelSize picture, double displayScale,
                            PixelPoint offset) noexcept;

// Client point of the handle of a normalised position.
PixelPoint HandleCentre(const PreviewLayout& layout, double displayScale, double positionX,
                        double positionY) noexcept;

struct NormalisedPoint {
    double x = 0.0;
    double y = 0.0;
};

// Not clamped: a point beside the picture gives values outside 0 to 1.
NormalisedPoint ClientToPosition(PixelPoint point, const PreviewFrame& frame, PixelSize picture,
                                 double displayScale, PixelPoint offset) noexcept;

// Rows run bottom-up, hence the two signs.
PixelPoint PannedOffset(PixelPoint startOffset, PixelPoint start, PixelPoint now,
                        double displayScale) noexcept;

// The coordinate that the title shows: image pixels with one decimal.
double TitleCoordinate(std::int32_t pictureSize, std::int32_t step, std::int32_t detailLevel,
                       double position) noexcept;

constexpr int kTitleCapacity = 96;
void TitleText(double x, double y, char (&text)[kTitleCapacity]) noexcept;

constexpr std::int32_t kSmallestWindow = 100;
constexpr int kHandleSquares = 6;
constexpr std::int32_t kHandleHalfSizes[kHandleSquares] = {1, 3, 5, 7, 9, 11};
constexpr std::uint32_t kHandleColors[kHandleSquares] = {0xEEEEEE, 0xBBBBBB, 0x999999,
                                                         0x666666, 0x333333, 0x000000};
constexpr std::uint32_t kStripColor = 0xBBBBBB;

}  // namespace mv
