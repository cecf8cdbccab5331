// What the controls of the dialog do with values, apart from their windows.
#pragma once

#include <cstdint>
#include <string_view>

#include "interface/NumberText.h"

namespace mv {

struct SliderRange {
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    std::int32_t page = 1;
};

// A slider of a float parameter counts in hundredths. The limits are truncated before they are
// multiplied, which is meant: limits of -0.5 and 0.5 give a slider without travel.
SliderRange FloatSliderRange(double minimum, double maximum) noexcept;
SliderRange IntSliderRange(std::int32_t minimum, std::int32_t maximum) noexcept;

// The detour by which a slider is moved so that it repaints: these four positions in order.
struct SliderDetour {
    std::int32_t first = 0;
    std::int32_t second = 0;
    std::int32_t third = 0;
    std::int32_t last = 0;
};
SliderDetour FloatSliderDetour(double value) noexcept;
SliderDetour IntSliderDetour(std::int32_t value) noexcept;

double FloatFromSlider(std::int32_t position) noexcept;

struct FloatLimits {
    double minimum = 0.0;
    double maximum = 1.0;
    bool minimumHard = false;
    bool maximumHard = false;
};
// A soft limit lets a typed value pass.
double LimitTypedValue(double value, const FloatLimits& limits) noexcept;

// Edits of a position show pixels. A text that already means the fraction stays as it was typed.
bool PixelTextMeans(std::string_view text, std::int32_t imageSize, double fraction) noexcept;
void FormatPixel(double fraction, std::int32_t imageSize, char (&text)[kNumberCapacity]) noexcept;
bool FractionFromPixelText(std::string_view text, std::int32_t imageSize,
                           double& fraction) noexcept;

// An angle in degrees as whole turns and a rest of 0 to below 360.
struct TurnsAndDegrees {
    std::int32_t turns = 0;
    double degrees = 0.0;
};
TurnsAndDegrees SplitAngle(double angle) noexcept;
double JoinAngle(std::int32_t turns, double degrees) noexcept;
// The angle when the dial's pointer is dragged to (right, up) from its centre: whole turns are
// counted on when the pointer crosses zero. The centre itself changes nothing.
double AngleFromPointer(double oldAngle, double right, double up) noexcept;

// A channel of 0 to 1 as a byte and back.
std::uint8_t ByteFromChannel(double value) noexcept;
double ChannelFromByte(std::uint8_t value) noexcept;

}  // namespace mv
