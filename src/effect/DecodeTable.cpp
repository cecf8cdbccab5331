#include "effect/DecodeTable.h"

namespace mv {

void RowDecoder::BuildTable(float* memory, std::uint32_t weights) {
    constexpr double kWeightScale = kMaskScale;
    const std::uint32_t values = static_cast<std::uint32_t>(white_) + 1;
    for (std::uint32_t weight = 0; weight < weights; ++weight) {
        const double factor = weights == 1 ? 1.0 : weight * kWeightScale;
        for (std::uint32_t value = 0; value < values; ++value) {
            memory[weight * values + value] =
                static_cast<float>(static_cast<double>(value) * factor);
        }
    }
    // A table has no alpha among its entries.
    RowDecoder decoder(1, -1, white_, inverseWhite_);
    decoder.DecodeRow(memory, static_cast<std::int32_t>(weights * values));
    table_ = memory;
}

void RowDecoder::DecodeRow(float* row, std::int32_t pixels) const {
    const std::int32_t count = pixels * period_;
    if (kernels_ != nullptr) {
        kernels_->linearize(row, count, period_, skip_, inverseWhite_, static_cast<float>(white_));
        return;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        if (i % period_ != skip_) {
            row[i] = DecodePlain(row[i]);
        }
    }
}

}  // namespace mv
