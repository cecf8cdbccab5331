#pragma once

#include <cstdint>

namespace mv {

// Truncation toward zero that is defined for every value: beyond the range it stops at the last
// number, and NaN is 0. Sizes and positions on the screen come from hosts and users, so any
// value may arrive here.
inline std::int32_t TruncateToInt(double value) noexcept {
    if (value >= 2147483647.0) {
        return INT32_MAX;
    }
    if (value <= -2147483648.0) {
        return INT32_MIN;
    }
    // Written so that NaN, which fails both tests above, ends as 0.
    return value == value ? static_cast<std::int32_t>(value) : 0;
}

inline std::int32_t ClampToInt(std::int64_t value) noexcept {
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    return value < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(value);
}

}  // namespace mv
