#include "interface/PreviewGeometry.h"

#include <algorithm>

#include "interface/NumberText.h"
#include "interface/SafeNumber.h"

namespace mv {

namespace {

// Covers a window that is just being enlarged.
constexpr std::int32_t kStripOverhang = 200;
// Far beyond any screen, and far from the ends of the number range.
constexpr std::int32_t kFarAway = 1000000;

std::int32_t ClampOffset(std::int32_t offset, std::int32_t picture, std::int32_t frame,
                         double displayScale) noexcept {
    const std::int32_t last =
        ClampToInt(std::int64_t{picture} - TruncateToInt(frame * displayScale));
    return std::max(std::min(offset, last), std::int32_t{0});
}

std::int32_t TargetStart(std::int32_t frameStart, std::int32_t frame,
                         std::int32_t screen) noexcept {
    return screen > frame ? frameStart : frameStart + (frame - screen) / 2;
}

std::int32_t KeepNear(std::int32_t value) noexcept {
    return std::clamp(value, -kFarAway, kFarAway);
}

std::int32_t AddNear(std::int32_t a, std::int32_t b) noexcept {
    return ClampToInt(std::int64_t{a} + b);
}

// Pixels along one axis from the picture's first one to the client point.
double ClientToPicture(std::int32_t fromFrame, std::int32_t frame, std::int32_t picture,
                       double scrolled) noexcept {
    if (picture < frame) {
        return static_cast<double>(fromFrame) - (frame - picture) / 2;
    }
    return fromFrame + scrolled;
}

}  // namespace

PreviewLayout LayOutPreview(const PreviewFrame& frame, PixelSize picture, double displayScale,
                            PixelPoint offset) noexcept {
    PreviewLayout layout;
    const double screenPerBuffer = 1.0 / displayScale;
    layout.screenSize = {TruncateToInt(picture.width * screenPerBuffer),
                         TruncateToInt(picture.height * screenPerBuffer)};
    layout.offset = {ClampOffset(offset.x, picture.width, frame.size.width, displayScale),
                     ClampOffset(offset.y, picture.height, frame.size.height, displayScale)};

    PixelRect& target = layout.target;
    target.left = TargetStart(frame.left, frame.size.width, layout.screenSize.width);
    target.top = TargetStart(frame.top, frame.size.height, layout.screenSize.height);
    target.right = target.left + std::min(layout.screenSize.width, frame.size.width);
    target.bottom = target.top + std::min(layout.screenSize.height, frame.size.height);

    layout.sourceOrigin = layout.offset;
    layout.sourceSize = {TruncateToInt(target.Width() * displayScale),
                         TruncateToInt(target.Height() * displayScale)};

    const std::int32_t right = AddNear(frame.left, frame.size.width);
    const std::int32_t lower = AddNear(AddNear(frame.top, frame.size.height), kStripOverhang);
    layout.strips[0] = {frame.left, frame.top, right, target.top};
    layout.strips[1] = {frame.left, target.bottom, right, lower};
    layout.strips[2] = {frame.left, frame.top, target.left, lower};
    layout.strips[3] = {target.right, frame.top, right, lower};
    return layout;
}

PixelPoint HandleCentre(const PreviewLayout& layout, double displayScale, double positionX,
                        double positionY) noexcept {
    const double width = layout.screenSize.width;
    const double height = layout.screenSize.height;
    const double x = layout.target.left - layout.offset.x / displayScale + width * positionX;
    const double y = height * positionY + layout.target.top - (height - layout.target.Height()) +
                     layout.offset.y / displayScale;
    return {KeepNear(TruncateToInt(x)), KeepNear(TruncateToInt(y))};
}

NormalisedPoint ClientToPosition(PixelPoint point, const PreviewFrame& frame, PixelSize picture,
                                 double displayScale, PixelPoint offset) noexcept {
    const double screenPerBuffer = 1.0 / displayScale;
    // A picture without pixels counts as one, so that there is something to divide by.
    const std::int32_t width = std::max(TruncateToInt(picture.width * screenPerBuffer + 0.5), 1);
    const std::int32_t height = std::max(TruncateToInt(picture.height * screenPerBuffer + 0.5), 1);
    const double scrolledX = TruncateToInt(offset.x * screenPerBuffer);
    const double scrolledY =
        static_cast<double>(height) - TruncateToInt(offset.y * screenPerBuffer) - frame.size.height;
    const double x = ClientToPicture(point.x - frame.left, frame.size.width, width, scrolledX);
    const double y = ClientToPicture(point.y - frame.top, frame.size.height, height, scrolledY);
    return {x / width, y / height};
}

PixelPoint PannedOffset(PixelPoint startOffset, PixelPoint start, PixelPoint now,
                        double displayScale) noexcept {
    const double right = static_cast<double>(now.x) - start.x;
    const double up = static_cast<double>(start.y) - now.y;
    return {ClampToInt(std::int64_t{startOffset.x} - TruncateToInt(right * displayScale)),
            ClampToInt(std::int64_t{startOffset.y} - TruncateToInt(up * displayScale))};
}

double TitleCoordinate(std::int32_t pictureSize, std::int32_t step, std::int32_t detailLevel,
                       double position) noexcept {
    double size = pictureSize;
    // While a magnified view renders coarsely the factor is too small by one or more. The next
    // full picture puts it right; it is meant to stay like this.
    if (step > 0 || detailLevel != 0) {
        size *= static_cast<double>(step) + detailLevel;
    }
    return TruncateToInt(size * position * 10.0) * 0.1;
}

void TitleText(double x, double y, char (&text)[kTitleCapacity]) noexcept {
    TextWriter writer(text);
    writer.Append("Preview:  x: ");
    writer.AppendNumber(x);
    writer.Append(" y: ");
    writer.AppendNumber(y);
}

}  // namespace mv
