#include "interface/ControlValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "interface/SafeNumber.h"

namespace mv {

namespace {

constexpr std::int32_t kHundred = 100;
constexpr double kOneHundredth = 0.01;
constexpr double kTurnsPerDegree = 0.002777777777777778;
constexpr double kDegreesPerTurn = 360.0;
constexpr double kFullTurn = 6.283185307;
constexpr double kHalfTurn = kFullTurn / 2.0;
constexpr double kDegreesPerRadian = 57.29577951471995;
constexpr double kByteToChannel = 0.00392156862745098;

std::int32_t WholeTimesHundred(double value) noexcept {
    return ClampToInt(std::int64_t{TruncateToInt(value)} * kHundred);
}

}  // namespace

SliderRange FloatSliderRange(double minimum, double maximum) noexcept {
    return {WholeTimesHundred(minimum), WholeTimesHundred(maximum),
            std::max(TruncateToInt(std::fabs(maximum - minimum) * 10.0), std::int32_t{1})};
}

SliderRange IntSliderRange(std::int32_t minimum, std::int32_t maximum) noexcept {
    const std::int64_t page = (std::int64_t{maximum} - minimum) / 10;
    return {minimum, maximum, ClampToInt(std::max(page, std::int64_t{1}))};
}

SliderDetour FloatSliderDetour(double value) noexcept {
    const std::int32_t position = TruncateToInt(value * kHundred);
    return {WholeTimesHundred(value + 1.0), position, WholeTimesHundred(value - 1.0), position};
}

SliderDetour IntSliderDetour(std::int32_t value) noexcept {
    return {ClampToInt(std::int64_t{value} - 1), value, ClampToInt(std::int64_t{value} + 1), value};
}

double FloatFromSlider(std::int32_t position) noexcept {
    return position * kOneHundredth;
}

double LimitTypedValue(double value, const FloatLimits& limits) noexcept {
    if (value < limits.minimum && limits.minimumHard) {
        return limits.minimum;
    }
    if (value > limits.maximum && limits.maximumHard) {
        return limits.maximum;
    }
    return value;
}

bool PixelTextMeans(std::string_view text, std::int32_t imageSize, double fraction) noexcept {
    double typed = 0.0;
    return FractionFromPixelText(text, imageSize, typed) && typed == fraction;
}

void FormatPixel(double fraction, std::int32_t imageSize, char (&text)[kNumberCapacity]) noexcept {
    const auto result =
        std::to_chars(text, text + kNumberCapacity - 1, TruncateToInt(imageSize * fraction));
    *result.ptr = '\0';
}

bool FractionFromPixelText(std::string_view text, std::int32_t imageSize,
                           double& fraction) noexcept {
    double pixels = 0.0;
    if (imageSize <= 0 || !ParseNumber(text, pixels)) {
        return false;
    }
    fraction = pixels / imageSize;
    return true;
}

TurnsAndDegrees SplitAngle(double angle) noexcept {
    TurnsAndDegrees split;
    split.turns = TruncateToInt(angle * kTurnsPerDegree);
    split.degrees = angle - kDegreesPerTurn * split.turns;
    if (!(split.degrees >= 0.0)) {
        split.degrees += kDegreesPerTurn;
        split.turns = ClampToInt(std::int64_t{split.turns} - 1);
    }
    return split;
}

double JoinAngle(std::int32_t turns, double degrees) noexcept {
    return turns * kDegreesPerTurn + degrees;
}

double AngleFromPointer(double oldAngle, double right, double up) noexcept {
    const double radius = std::sqrt(right * right + up * up);
    if (radius == 0.0) {
        return oldAngle;
    }
    double direction = std::acos(right / radius);
    if (up < 0.0) {
        direction = kFullTurn - direction;
    }
    const double old = oldAngle / kDegreesPerRadian;
    const double oldTurns = std::floor(old / kFullTurn) * kFullTurn;
    const double oldDirection = old - oldTurns;
    double angle = oldTurns + direction;
    if (direction - oldDirection > kHalfTurn) {
        angle -= kFullTurn;
    } else if (oldDirection - direction > kHalfTurn) {
        angle += kFullTurn;
    }
    return angle * kDegreesPerRadian;
}

std::uint8_t ByteFromChannel(double value) noexcept {
    return static_cast<std::uint8_t>(std::clamp(TruncateToInt(value * 255.0), 0, 255));
}

double ChannelFromByte(std::uint8_t value) noexcept {
    return value * kByteToChannel;
}

}  // namespace mv
