// The Rec. 709 transfer function (ITU-R BT.709) and its inverse, with the system's constants.
#pragma once

#include <cmath>
#include <cstdint>

#include "image/PixelRGB.h"

namespace mv {

// Entries of the tone table, and the steps of its index over 0..white.
constexpr std::int32_t kGammaTableSize = 32768;

// From linear light into the encoded signal, both 0..1.
inline double EncodeRec709(double linear) {
    return linear >= 0.018 ? 1.099 * std::pow(linear, 0.45) - 0.099 : 4.5 * linear;
}

// From the encoded signal into linear light, both 0..1; the result in single precision.
inline float DecodeRec709(double signal) {
    return static_cast<float>(
        signal > 0.081
            ? std::pow(signal * 0.9099181073703367 + 0.09008189262966335, 2.2222222222222223)
            : signal * 0.2222222222222222);
}

// One channel of a working image, 0..white, into linear light of the same scale.
template <int white>
inline float LinearizeChannel(float value) {
    const double signal = value * WhiteScale<white>::kInverse;
    return DecodeRec709(signal) * static_cast<float>(white);
}

// Fills table[i] with the tone curve at i / 32767, times white. Intermediate values are single
// precision variables: the index times the single-precision factor, then each power stored back.
void FillGammaTable(float* table, double gammaExponent, bool gammaOn, double white);

}  // namespace mv
