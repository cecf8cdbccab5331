#include "effect/TransferFunction.h"

#include <algorithm>

#include "effect/kernels/RowKernels.h"

namespace mv {
namespace {

// Entry i before the power.
float SignalOf(std::int32_t i) {
    return static_cast<float>(i) * 3.051851e-5f;
}

void FillPlain(float* table, double gammaExponent, bool gammaOn) {
    for (std::int32_t i = 0; i < kGammaTableSize; ++i) {
        float v = SignalOf(i);
        v = static_cast<float>(std::pow(static_cast<double>(v), gammaExponent));
        if (gammaOn) {
            v = static_cast<float>(EncodeRec709(v));
        }
        table[i] = v;
    }
}

// The same in two passes, since the power is rounded before it is encoded.
void FillFast(float* table, double gammaExponent, bool gammaOn, const RowKernels& kernels) {
    constexpr std::int32_t kTogether = 256;
    static_assert(kGammaTableSize % kTogether == 0);
    const ToneRule power{0.0, gammaExponent, false};
    const ToneRule encode{0.0, 1.0, true};
    double values[kTogether];
    for (std::int32_t first = 0; first < kGammaTableSize; first += kTogether) {
        float* out = table + first;
        for (std::int32_t i = 0; i < kTogether; ++i) {
            values[i] = static_cast<double>(SignalOf(first + i));
        }
        kernels.toneFloats(out, values, kTogether, power);
        if (gammaOn) {
            std::copy(out, out + kTogether, values);
            kernels.toneFloats(out, values, kTogether, encode);
        }
    }
}

}  // namespace

void FillGammaTable(float* table, double gammaExponent, bool gammaOn, double white) {
    const RowKernels* kernels = SelectRowKernels();
    // 0 to another power is no number that the kernels take on.
    if (kernels != nullptr && gammaExponent > 0.0) {
        FillFast(table, gammaExponent, gammaOn, *kernels);
    } else {
        FillPlain(table, gammaExponent, gammaOn);
    }
    const auto scale = static_cast<float>(white);
    for (std::int32_t i = 0; i < kGammaTableSize; ++i) {
        table[i] *= scale;
    }
}

}  // namespace mv
