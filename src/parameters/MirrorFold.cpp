#include "parameters/MirrorFold.h"

#include <cmath>
#include <limits>

#include "platform/Random.h"

namespace mv {

namespace {

constexpr double kRandomScale = 3.051850947599719e-05;
constexpr double kEndDistance = 0.0001;
// From here on the whole number of ranges in a value may not fit 32 bits any more.
constexpr double kLargestCountedValue = 2147483648.0;

// What a value leaves behind whole ranges, and whether their number is odd.
struct Division {
    double remainder;
    bool odd;
};

Division DivideByRange(double value, std::int32_t range) noexcept {
    const double divisor = range;
    if (std::fabs(value) >= kLargestCountedValue) {
        const double count = std::trunc(value / divisor);
        return {std::fmod(value, divisor), std::fmod(count, 2.0) != 0.0};
    }
    const std::int32_t count = TruncateToInt(value / divisor);
    const auto product = static_cast<std::int32_t>(static_cast<std::int64_t>(count) * range);
    return {value - product, count % 2 != 0};
}

}  // namespace

double DrawRandom() noexcept {
    return NextRandom() * kRandomScale;
}

std::int32_t TruncateToInt(double value) noexcept {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();
    if (std::isnan(value)) {
        return 0;
    }
    if (value <= kLowest) {
        return kLowest;
    }
    return value >= kHighest ? kHighest : static_cast<std::int32_t>(value);
}

double MirrorFold(double value, std::int32_t range) noexcept {
    if (!std::isfinite(value) || (value >= 0.0 && value < range)) {
        return value;
    }
    if (range == 0) {
        return value < 0.0 ? -value : value;
    }
    const Division division = DivideByRange(value, range);
    if (value < 0.0) {
        const double folded = division.odd ? range + division.remainder : -division.remainder;
        return folded == range ? range - kEndDistance : folded;
    }
    if (!division.odd) {
        return division.remainder;
    }
    const double folded = range - division.remainder;
    return folded == range ? range - kEndDistance : folded;
}

}  // namespace mv
