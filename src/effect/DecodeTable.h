// Taking working images into linear light by rows.
#pragma once

#include <cstdint>

#include "effect/TransferFunction.h"
#include "effect/kernels/RowKernels.h"

namespace mv {

// Decodes the colours of finished rows, or looks them up where a channel takes few values. Built
// for one render on its caller's stack; the table's memory is the caller's. Immutable while rows
// run.
class RowDecoder {
public:
    // period: channels of a pixel; skip: the alpha channel, which stays as it is, or -1.
    RowDecoder(std::int32_t period, std::int32_t skip, std::int32_t white, double inverseWhite)
        : kernels_(SelectRowKernels()),
          period_(period),
          skip_(skip),
          white_(white),
          inverseWhite_(inverseWhite) {}

    // Entries of a table for values 0..white under so many 8-bit weights.
    static constexpr std::uint32_t TableEntries(std::int32_t white, std::uint32_t weights) {
        return (static_cast<std::uint32_t>(white) + 1) * weights;
    }

    // Fills memory for so many weights: one stands for no weight at all, 256 for 0 to 255.
    void BuildTable(float* memory, std::uint32_t weights);

    bool HasTable() const { return table_ != nullptr; }

    // What becomes of the values 0..white under a weight.
    const float* Table(std::uint32_t weight) const {
        return table_ + weight * (static_cast<std::uint32_t>(white_) + 1);
    }

    void DecodeRow(float* row, std::int32_t pixels) const;

private:
    float DecodePlain(float value) const {
        return DecodeRec709(value * inverseWhite_) * static_cast<float>(white_);
    }

    const RowKernels* kernels_;
    std::int32_t period_;
    std::int32_t skip_;
    std::int32_t white_;
    double inverseWhite_;
    float* table_ = nullptr;
};

}  // namespace mv
