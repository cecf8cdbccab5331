// Arithmetic that random changes of parameters share.
#pragma once

#include <cstdint>

namespace mv {

// One draw of the random generator as a number from 0.0 to 1.0.
double DrawRandom() noexcept;

// Truncation toward zero that is defined for every number: what lies beyond the range becomes
// its end, and what is no number becomes 0.
std::int32_t TruncateToInt(double value) noexcept;

// Brings a value back into 0..range by reflection, so that it bounces off an end instead of
// sticking to it. An end that is reached by reflection is moved inwards by 0.0001. A value that
// is not finite stays as it is.
double MirrorFold(double value, std::int32_t range) noexcept;

}  // namespace mv
