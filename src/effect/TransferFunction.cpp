#include "effect/TransferFunction.h"

namespace mv {

void FillGammaTable(float* table, double gammaExponent, bool gammaOn, double white) {
    const auto scale = static_cast<float>(white);
    for (std::int32_t i = 0; i < kGammaTableSize; ++i) {
        float v = static_cast<float>(i) * 3.051851e-5f;
        v = static_cast<float>(std::pow(static_cast<double>(v), gammaExponent));
        if (gammaOn) {
            v = static_cast<float>(EncodeRec709(v));
        }
        table[i] = v * scale;
    }
}

}  // namespace mv
