// The columns of a row that is read with a shift of less than a pixel.
#pragma once

#include <cstdint>

#include "effect/kernels/RowKernels.h"

namespace mv {

// For width columns at x + shift: the column left of the place, truncated toward zero, the one to
// its right, the last having none, and the share of the right one. memory is the caller's.
class ShiftColumns {
public:
    static constexpr std::uint64_t Bytes(std::int32_t width) {
        return static_cast<std::uint64_t>(width) * (sizeof(double) + 2 * sizeof(std::int32_t));
    }

    void Fill(void* memory, std::int32_t width, double shift) {
        auto* share = static_cast<double*>(memory);
        auto* left = reinterpret_cast<std::int32_t*>(share + width);
        std::int32_t* right = left + width;
        for (std::int32_t x = 0; x < width; ++x) {
            const double place = x + shift;
            left[x] = static_cast<std::int32_t>(place);
            right[x] = left[x] == width - 1 ? left[x] : left[x] + 1;
            share[x] = place - left[x];
        }
        columns_ = {left, right, share};
    }

    const ShiftedColumns& Get() const { return columns_; }

private:
    ShiftedColumns columns_{};
};

}  // namespace mv
